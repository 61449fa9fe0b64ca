#pragma once

#include "tev2_loader/tracks/animatable.h"

#include <algorithm>
#include <cstdint>

// How tracks are moved in time. For the library's own use: programs call SetTime and Update of what they hold.

// What every node goes through twice a frame, compiled into the loop over the nodes.
#if defined(__GNUC__)
#define TEV2_HOT __attribute__((always_inline)) inline
#else
#define TEV2_HOT __forceinline
#endif

namespace TEV2_LOADER
{

/// Moves tracks, one after another: most tracks of a scene are sampled alike, so the segment where one came to lie
/// is tried first for the next. A track moves as it would alone, to the last bit, when its times ascend.
class TrackMover
{
public:
    explicit TrackMover(std::uint32_t near_key = 0) : near_key_(near_key) {}

    TEV2_HOT void SetTime(TEV2_ANIMATABLE& track, float time)
    {
        if (track.m_times.size() >= 2 && !MoveNear(track, time))
            Search(track, time);
    }

    TEV2_HOT void Update(TEV2_ANIMATABLE& track, float delta_time)
    {
        if (track.m_times.size() < 2)
            return;
        const float time = Present(track).time + delta_time;
        if (!MoveNear(track, time))
            Search(track, track.m_times.back() >= time ? time : Wrapped(track, time));
    }

private:
    struct Place
    {
        std::size_t key;
        float time;
    };

    /// Where the cursor is. A cursor beyond the keys is at the last one.
    static Place Present(const TEV2_ANIMATABLE& track)
    {
        const std::size_t last_segment = track.m_times.size() - 2;
        const bool beyond = track.m_current_key > last_segment;
        const std::size_t key = beyond ? last_segment : track.m_current_key;
        const float opening = track.m_times[key];
        return {key, opening + (track.m_times[key + 1] - opening) * (beyond ? 1.0f : track.m_fraction)};
    }

    static void Enter(TEV2_ANIMATABLE& track, std::size_t key, float time)
    {
        const float opening = track.m_times[key];
        const float span = track.m_times[key + 1] - opening;
        track.m_current_key = static_cast<std::uint32_t>(key);
        track.m_fraction = span > 0.0f ? (time - opening) / span : 0.0f;
    }

    /// Whether the time lies between the two keys of a segment, and on neither. In ascending times no other
    /// segment holds it then, so that every way to find the segment finds the same.
    static bool HoldsInside(const TEV2_ANIMATABLE& track, std::size_t key, float time)
    {
        return track.m_times[key] < time && time < track.m_times[key + 1];
    }

    /// Enters the segment of the track before when it holds the time inside. The ends come first: where times do not
    /// ascend, another segment may hold a time that is at or after the last key, or at or before the first.
    TEV2_HOT bool MoveNear(TEV2_ANIMATABLE& track, float time) const
    {
        if (near_key_ > track.m_times.size() - 2)
            return false;
        const float opening = track.m_times[near_key_];
        const float closing = track.m_times[near_key_ + 1];
        if (!(opening < time && time < closing && track.m_times.front() < time &&
              time < track.m_times.back()))
            return false;
        track.m_current_key = near_key_;
        track.m_fraction = (time - opening) / (closing - opening);
        return true;
    }

    static bool MoveToEnd(TEV2_ANIMATABLE& track, float time);
    static bool MoveNearby(TEV2_ANIMATABLE& track, const Place& present, float time);
    void Search(TEV2_ANIMATABLE& track, float time);
    static void Find(TEV2_ANIMATABLE& track, const Place& present, float time);
    static float Wrapped(const TEV2_ANIMATABLE& track, float time);

    std::uint32_t near_key_;
};

} // namespace TEV2_LOADER
