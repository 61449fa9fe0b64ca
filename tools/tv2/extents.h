#pragma once

#include "tev2_loader/tev2.h"

#include <array>
#include <cstddef>
#include <limits>

namespace tv2
{

/// The bounding box of all nodes' origins over time.
struct Extents
{
    std::array<float, 3> minimum{};
    std::array<float, 3> maximum{};
    std::size_t key_times = 0; ///< distinct key times of the hierarchy
    std::size_t evaluated = 0; ///< how many of them were looked at; all, but in very large files
    bool found = false;        ///< false when no node ever has a finite origin
};

/// Evaluates the hierarchy at its key times (once, at the start, when there is none) and leaves it there. In
/// a file of more than `most_evaluations` nodes times key times every n-th key time is taken, and the last.
Extents MeasureExtents(TEV2_LOADER::TEV2& scene, std::size_t most_evaluations = 20'000'000);

} // namespace tv2
