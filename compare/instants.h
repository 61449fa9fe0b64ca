#pragma once

#include "tev2_loader/tev2.h"

#include <cstddef>
#include <vector>

namespace tev2_compare
{

/// The part of time that a scene shows: its time range, or, where that has no length, from its first key to its last.
struct TimeSpan
{
    float start = 0.0f;
    float end = 0.0f;

    bool Contains(float time) const { return start <= time && time <= end; }
};

TimeSpan SpanOf(const TEV2_LOADER::TEV2& scene);

/// What two spans have in common; nothing: false.
bool Overlap(const TimeSpan& left, const TimeSpan& right, TimeSpan& common);

/// When two scenes, or two tracks, are compared.
struct Instants
{
    std::vector<float> times; ///< ascending
    std::size_t all = 0;      ///< how many there would be without a limit
};

/// Collects key times.
class InstantCollector
{
public:
    explicit InstantCollector(const TimeSpan& span) : span_(span) {}

    void Add(const TEV2_LOADER::TEV2_ANIMATABLE* track);

    /// The key times within the span, both ends of it, and the middle of every two neighbours. Times less than a tenth
    /// of a millisecond apart are one, the last of them: exports at different rates round them differently. Of more
    /// than `most` every n-th is taken, and the last.
    Instants Take(std::size_t most);

private:
    void Shrink();

    TimeSpan span_;
    std::vector<float> times_;
    std::size_t limit_ = std::size_t{1} << 20U; ///< of a list that still has duplicates
};

} // namespace tev2_compare
