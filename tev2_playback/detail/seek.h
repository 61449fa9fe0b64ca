#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace TEV2_PLAYBACK
{

/// A place between two neighbouring keys.
struct Place
{
    std::uint32_t key = 0; ///< the first of the two
    float fraction = 0.0f; ///< 0 at the first, 1 at the second
};

/// Where a rewound track goes when it is sent to a time: at a key's own time to the end of the segment before it,
/// before the first and behind the last key to that key, for a NaN to the first. There must be two times or more. The
/// hint is a segment that may be right; with ascending times it does not change the answer.
inline Place Seek(std::span<const float> times, float time, std::uint32_t hint)
{
    const auto last = static_cast<std::uint32_t>(times.size() - 2);
    if (time >= times.back())
        return {last, 1.0f};
    if (!(times.front() < time))
        return {0, 0.0f};
    const auto holds = [times, time](std::uint32_t key)
    { return times[key] < time && time <= times[key + 1]; };
    std::uint32_t key = std::min(hint, last);
    if (!holds(key))
    {
        const std::uint32_t next = std::min(key + 1, last);
        const float guess =
            static_cast<float>(last + 1) * ((time - times.front()) / (times.back() - times.front()));
        const std::uint32_t near = guess > 0.0f && guess < static_cast<float>(last + 1)
                                       ? std::min(static_cast<std::uint32_t>(guess), last)
                                       : last;
        if (holds(next))
            key = next;
        else if (holds(near))
            key = near;
        else if (near > 0 && holds(near - 1))
            key = near - 1;
        else
        {
            const auto close = std::lower_bound(times.begin() + 1, times.end() - 1, time);
            key = static_cast<std::uint32_t>(close - times.begin()) - 1;
        }
    }
    const float open = times[key];
    const float span = times[key + 1] - open;
    return {key, span > 0.0f ? (time - open) / span : 0.0f};
}

/// The same for ascending times, quicker near the hint: it does not look at the ends of the times, which may be far
/// away in memory.
inline Place SeekNear(std::span<const float> times, float time, std::uint32_t hint)
{
    const std::size_t segments = times.size() - 1;
    for (const std::size_t key : {std::size_t{hint}, hint + std::size_t{1}, hint - std::size_t{1}})
    {
        // Not at a closing key: there may be equal times after it.
        if (key < segments && times[key] < time && time < times[key + 1])
            return {static_cast<std::uint32_t>(key), (time - times[key]) / (times[key + 1] - times[key])};
    }
    return Seek(times, time, hint);
}

} // namespace TEV2_PLAYBACK
