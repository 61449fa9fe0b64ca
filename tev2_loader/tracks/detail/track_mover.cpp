#include "tev2_loader/tracks/detail/track_mover.h"

#include <algorithm>
#include <cmath>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kNoSegment = ~std::size_t{0};

/// Neighbouring segments tried one by one before bisecting: playback mostly moves by one.
constexpr std::size_t kNearSegments = 4;

/// Whether the segment that key opens holds the time, both ends included.
bool Holds(const std::vector<float>& times, std::size_t key, float time)
{
    return times[key] <= time && times[key + 1] >= time;
}

std::size_t SegmentIfHolds(const std::vector<float>& times, std::size_t key, float time)
{
    return Holds(times, key, time) ? key : kNoSegment;
}

/// The first segment from key on that holds the time.
std::size_t SearchForward(const std::vector<float>& times, std::size_t key, float time)
{
    const std::size_t segments = times.size() - 1;
    for (const std::size_t nearby = std::min(segments, key + kNearSegments); key < nearby; ++key)
        if (Holds(times, key, time))
            return key;
    if (key == segments)
        return kNoSegment;
    std::size_t close = key + 1;
    for (std::size_t end = segments; close < end;)
    {
        const std::size_t middle = close + (end - close) / 2;
        if (times[middle] < time)
            close = middle + 1;
        else
            end = middle;
    }
    return SegmentIfHolds(times, close - 1, time);
}

/// The first segment from key downwards that holds the time.
std::size_t SearchBackward(const std::vector<float>& times, std::size_t key, float time)
{
    for (std::size_t steps = 0; steps < kNearSegments; ++steps, --key)
    {
        if (Holds(times, key, time))
            return key;
        if (key == 0)
            return kNoSegment;
    }
    std::size_t behind_open = 0;
    for (std::size_t end = key + 1; behind_open < end;)
    {
        const std::size_t middle = behind_open + (end - behind_open) / 2;
        if (times[middle] <= time)
            behind_open = middle + 1;
        else
            end = middle;
    }
    if (behind_open == 0)
        return kNoSegment;
    return SegmentIfHolds(times, behind_open - 1, time);
}

} // namespace

/// Moves to the last key for a time at or after it, to the first for a time at or before it.
bool TrackMover::MoveToEnd(TEV2_ANIMATABLE& track, float time)
{
    const std::vector<float>& times = track.m_times;
    const bool at_last = time >= times.back();
    if (!at_last && !(times.front() >= time))
        return false;
    track.m_current_key = at_last ? static_cast<std::uint32_t>(times.size() - 2) : 0;
    track.m_fraction = at_last ? 1.0f : 0.0f;
    return true;
}

/// Tries the current segment and its neighbour, then the one where the time would be if keys were equally spaced, which
/// is usually right since tracks are sampled at a fixed rate.
bool TrackMover::MoveNearby(TEV2_ANIMATABLE& track, const Place& present, float time)
{
    const std::vector<float>& times = track.m_times;
    const std::size_t last_segment = times.size() - 2;
    const std::size_t key = present.key;
    std::size_t nearby = key;
    if (!HoldsInside(track, key, time))
    {
        const bool forward = time - present.time >= 0.0f;
        if (forward ? key == last_segment : key == 0)
            return false;
        nearby = forward ? key + 1 : key - 1;
        if (!HoldsInside(track, nearby, time))
        {
            const float guess = static_cast<float>(key) + (time - times[key]) / (times[key + 1] - times[key]);
            if (!(guess >= 0.0f && guess <= static_cast<float>(last_segment)))
                return false;
            nearby = std::min(static_cast<std::size_t>(guess), last_segment); // floats round up from 2^24 on
            if (nearby < last_segment && time > times[nearby + 1])
                ++nearby;
            else if (nearby > 0 && time < times[nearby])
                --nearby;
            if ((nearby > key) != forward || !HoldsInside(track, nearby, time))
                return false;
        }
    }
    Enter(track, nearby, time);
    return true;
}

void TrackMover::Search(TEV2_ANIMATABLE& track, float time)
{
    if (!MoveToEnd(track, time))
    {
        const Place present = Present(track);
        if (!MoveNearby(track, present, time))
            Find(track, present, time);
    }
    near_key_ = track.m_current_key;
}

/// Searches from the current segment towards the time, then the other way: rounding can put the current time past the
/// end of its segment, and a stored fraction can be anything.
void TrackMover::Find(TEV2_ANIMATABLE& track, const Place& present, float time)
{
    const std::vector<float>& times = track.m_times;
    const bool forward = time - present.time >= 0.0f;
    std::size_t segment =
        forward ? SearchForward(times, present.key, time) : SearchBackward(times, present.key, time);
    if (segment == kNoSegment)
        segment =
            forward ? SearchBackward(times, present.key, time) : SearchForward(times, present.key, time);
    if (segment != kNoSegment)
        Enter(track, segment, time);
}

/// The time that a time past the last key wraps to.
float TrackMover::Wrapped(const TEV2_ANIMATABLE& track, float time)
{
    const float first = track.m_times.front();
    const float last = track.m_times.back();
    const float span = last - first;
    const float lengths = (time - last) / span;
    const float wrapped = lengths - std::trunc(lengths + 0.5f);
    return wrapped * span + first;
}

} // namespace TEV2_LOADER
