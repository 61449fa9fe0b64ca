#pragma once

#include "tev2_loader/tev2.h"
#include "tev2_playback/detail/clip_source.h"

namespace TEV2_PLAYBACK
{

/// What a clip of a scene is made of. Refers to the scene.
ClipSource SourceOf(const TEV2_LOADER::TEV2& scene);

} // namespace TEV2_PLAYBACK
