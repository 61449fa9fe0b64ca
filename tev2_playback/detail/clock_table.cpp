#include "tev2_playback/detail/clock_table.h"

#include "tev2_playback/detail/hash.h"

#include <cstring>
#include <utility>

namespace TEV2_PLAYBACK
{

namespace
{

/// Slots tried for an entry. Files can be made whose hashes all agree; times that find no slot are not shared with
/// later ones, which costs memory and nothing else.
constexpr std::size_t kMostProbes = 16;

bool SameBytes(const KeyView<float>& left, const KeyView<float>& right)
{
    return left.size() == right.size() &&
           std::memcmp(left.data(), right.data(), left.size() * sizeof(float)) == 0;
}

bool IsAscending(const KeyView<float>& times)
{
    float before = times[0];
    bool ascending = before == before;
    for (std::size_t key = 1; key < times.size(); ++key)
    {
        const float time = times[key];
        ascending &= before <= time;
        before = time;
    }
    return ascending;
}

} // namespace

std::uint32_t ClockTable::Add(const KeyView<float>& times)
{
    if (!entries_.empty() && SameBytes(entries_[latest_].times, times))
    {
        ++entries_[latest_].tracks;
        return latest_;
    }
    if (2 * (entries_.size() + 1) > slots_.size())
        FillSlots(slots_.empty() ? 16 : 2 * slots_.size());
    const std::uint64_t hash = HashOf(times.data(), times.size() * sizeof(float));
    latest_ = static_cast<std::uint32_t>(entries_.size());
    for (std::size_t probe = 0; probe < kMostProbes; ++probe)
    {
        std::uint32_t& slot = slots_[(hash + probe) % slots_.size()];
        if (slot == 0)
        {
            slot = latest_ + 1;
            break;
        }
        Entry& entry = entries_[slot - 1];
        if (entry.hash == hash && SameBytes(entry.times, times))
        {
            ++entry.tracks;
            return latest_ = slot - 1;
        }
    }
    entries_.push_back({times, hash, 1, IsAscending(times)});
    return latest_;
}

void ClockTable::PutFirst(std::uint32_t entry)
{
    std::swap(entries_[0], entries_[entry]);
    FillSlots(slots_.size());
}

void ClockTable::FillSlots(std::size_t count)
{
    slots_.assign(count, 0);
    for (std::uint32_t entry = 0; entry < entries_.size(); ++entry)
    {
        for (std::size_t probe = 0; probe < kMostProbes; ++probe)
        {
            std::uint32_t& slot = slots_[(entries_[entry].hash + probe) % slots_.size()];
            if (slot == 0)
            {
                slot = entry + 1;
                break;
            }
        }
    }
}

} // namespace TEV2_PLAYBACK
