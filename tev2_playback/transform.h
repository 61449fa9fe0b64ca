#pragma once

#include "tev2_loader/math/quaternion.h"

namespace TEV2_PLAYBACK
{

/// Where a node is, relative to its parent: scaled, then turned, then moved. Lengths in metres. The rotation is used as
/// it is, unit or not.
struct Transform
{
    TEV2_LOADER::TEV2_VECTOR_3 translation;
    TEV2_LOADER::TEV2_VECTOR_3 scale = {1.0f, 1.0f, 1.0f};
    TEV2_LOADER::TEV2_QUATERNION rotation;
};

} // namespace TEV2_PLAYBACK
