#pragma once

#include "compare/difference.h"
#include "compare/scene_match.h"

#include <cstddef>
#include <vector>

// Whether two scenes have the same rig, and whether a clip fits a rig.
//
//     tev2_compare::SceneMatch match(clip, rig);
//     const std::vector<tev2_compare::Difference> differences = tev2_compare::CompareStructure(clip, rig, match);
//     if (tev2_compare::Obstacles(differences).empty())
//         std::puts("fits");

namespace tev2_compare
{

/// What is different between two rigs: nodes by name, parent and order, user properties by name and type, objects of
/// all lists by name, their nodes and their types, bones of skins, and the up axis. Poses and all values are left out.
///
/// One thing that happened is one difference: what is below a node that is missing or has moved is counted with it,
/// nodes that are missing or have moved from one parent are one difference, and so are names that differ in one
/// namespace, one user property of several nodes, and objects of one list.
std::vector<Difference> CompareStructure(const TEV2_LOADER::TEV2& left, const TEV2_LOADER::TEV2& right,
                                         const SceneMatch& match);

/// The differences that keep a clip, the left scene, from fitting a rig, the right scene; indices in `differences`.
///
/// A clip fits when every node that it animates is in the rig, below the same parents up to the top level, and both
/// have the same up axis, where known. A node is animated when a track of its own, or of one of its user properties,
/// has two keys with different values. What the rig has besides does not matter, nor does the order of nodes, nor do
/// nodes that stay as they are, except where something below them is animated.
std::vector<std::size_t> Obstacles(const std::vector<Difference>& differences);

/// By node, whether it is animated. In a scene where nothing moves every node is: it is a pose.
std::vector<bool> AnimatedNodes(const TEV2_LOADER::TEV2& scene);

} // namespace tev2_compare
