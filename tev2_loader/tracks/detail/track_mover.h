#pragma once

#include "tev2_loader/tracks/animatable.h"

#include <algorithm>
#include <cstdint>

// Moves track cursors. Internal: programs call SetTime and Update of scenes, records or tracks.

// Called for every track of every node: inlined into the loop over the nodes.
#if defined(__GNUC__)
#define TEV2_HOT __attribute__((always_inline)) inline
#else
#define TEV2_HOT __forceinline
#endif

namespace TEV2_LOADER
{

/// Moves tracks one after another. Most tracks of a scene are sampled alike, so the segment of one is tried first for
/// the next. With ascending times the result is, to the last bit, that of moving the track alone.
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

    /// Where the cursor is, clamped to the keys.
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

    /// Whether the time is strictly between the two keys of a segment. With ascending times no other segment contains
    /// it then, so every search finds the same.
    static bool HoldsInside(const TEV2_ANIMATABLE& track, std::size_t key, float time)
    {
        return track.m_times[key] < time && time < track.m_times[key + 1];
    }

    /// Enters the previous track's segment if it contains the time. The ends are tested first: with unsorted times
    /// another segment may contain a time at or outside the ends.
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
