#pragma once

#include "tev2_playback/detail/clip_source.h"

#include <cstdint>
#include <vector>

namespace TEV2_PLAYBACK
{

/// The distinct key times of a clip.
class ClockTable
{
public:
    struct Entry
    {
        KeyView<float> times;
        std::uint64_t hash = 0;
        std::uint32_t tracks = 0; ///< that use them
        bool ascending = true;    ///< and all of them numbers
    };

    /// The entry of these times; a new one for times that were not there, or were not found again. Two or more.
    std::uint32_t Add(const KeyView<float>& times);

    const std::vector<Entry>& Entries() const { return entries_; }

    /// Makes an entry the first; the first takes its place.
    void PutFirst(std::uint32_t entry);

private:
    void FillSlots(std::size_t count);

    std::vector<Entry> entries_;
    std::vector<std::uint32_t> slots_; ///< entry + 1, by hash, as far as there is room; 0: free
    std::uint32_t latest_ = 0;
};

} // namespace TEV2_PLAYBACK
