#pragma once

#include "tev2_loader/up_axis.h"
#include "tev2_playback/axes.h"
#include "tev2_playback/detail/extras_data.h"
#include "tev2_playback/detail/name_table.h"
#include "tev2_playback/detail/skeleton_data.h"

#include <cstdint>
#include <span>

// A clip as it lies in memory, all in one block.

namespace TEV2_PLAYBACK
{

/// The key times that some tracks share.
struct Clock
{
    std::uint32_t first = 0; ///< in the times of all clocks
    std::uint32_t count = 0;
    bool ascending = true; ///< otherwise every search begins from the start
};

struct ClipData
{
    std::span<float> times;  ///< of all clocks, one after another
    std::span<Clock> clocks; ///< those of the nodes first; the first of all is that of the skeleton's rows
    std::uint32_t nodeClocks = 0;

    SkeletonData skeleton;
    NameTable nodeNames;
    ExtrasData extras;

    TEV2_LOADER::TEV2_UP_AXIS upAxis = TEV2_LOADER::TEV2_UP_AXIS::Unknown;
    Frame frame = Frame::AsStored;

    float begin = 0.0f; ///< of the time range, seconds
    float end = 0.0f;

    std::span<const float> TimesOf(const Clock& clock) const
    {
        return times.subspan(clock.first, clock.count);
    }
};

} // namespace TEV2_PLAYBACK
