#pragma once

#include "compare/difference.h"
#include "compare/instants.h"
#include "compare/scene_match.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tev2_compare
{

/// The poses of the nodes that two scenes have in common, over time.
struct MotionComparison
{
    /// Nodes that move differently themselves, worst first.
    std::vector<Difference> differences;

    std::size_t compared = 0; ///< nodes
    Instants instants;

    /// Nodes that are elsewhere in the world only because something above them is: how many, and the farthest.
    std::size_t followers = 0;
    std::string farthest_follower; ///< its name, or its path where others have that name
    Deviation farthest;
};

/// Compares at the key times of both scenes within `span`, and between them.
///
/// A node is off by itself when its own transform, seen from the place where the left scene has its parent, is off:
/// millimetres and degrees are those of the world. A node that has moved to another parent is compared in the world,
/// and so is one that is off because small deviations above it add up: Aspect::WorldPose.
///
/// In the world, 1e-6 of the coordinate is added to the tolerance, which is what single precision keeps of it.
MotionComparison CompareMotion(TEV2_LOADER::TEV2& left, TEV2_LOADER::TEV2& right, const SceneMatch& match,
                               const TimeSpan& span, const Tolerance& tolerance,
                               std::size_t most_evaluations);

/// How much worse than the tolerance; differences are sorted by it.
double Weight(const Difference& difference, const Tolerance& tolerance);

} // namespace tev2_compare
