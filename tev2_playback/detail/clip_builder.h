#pragma once

#include "tev2_playback/block.h"
#include "tev2_playback/clip.h"
#include "tev2_playback/detail/clip_data.h"
#include "tev2_playback/detail/clip_source.h"

namespace TEV2_PLAYBACK
{

/// Lays a clip out for playing, in one block. The source is not needed afterwards. The data begins at the start of the
/// block. Throws what the resource throws where there is no memory.
Block BuildClip(ClipSource source, const ClipOptions& options);

} // namespace TEV2_PLAYBACK
