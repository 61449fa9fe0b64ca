#pragma once

#include "tev2_playback/detail/clip_source.h"

#include <memory>

namespace TEV2_PLAYBACK
{

/// Brings a source into Frame::RightHandedYUp. Returns the changed keys, which it then refers to.
std::unique_ptr<float[]> MakeRightHandedYUp(ClipSource& source);

} // namespace TEV2_PLAYBACK
