#pragma once

#include "tev2_loader/tev2.h"
#include "tev2_playback/detail/clip_source.h"

#include <memory_resource>
#include <utility>

namespace TEV2_PLAYBACK
{

/// What a clip is made of, from the image of a file.
class ImageSource
{
public:
    /// Reads a whole file, which must begin at the cursor's image; once. On failure: false, the reason in the cursor's
    /// report, and the source is of no use.
    bool Load(TEV2_LOADER::TEV2_MEMORY_CURSOR& cursor);

    /// What was read. Refers to the image and to this object.
    ClipSource Take() { return std::move(source_); }

private:
    std::pmr::monotonic_buffer_resource texts_; ///< of images at odd addresses
    TEV2_LOADER::TEV2 rest_;                    ///< all but the hierarchy, of which it has node 0
    ClipSource source_;
};

} // namespace TEV2_PLAYBACK
