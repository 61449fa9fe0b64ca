#pragma once

#include "compare/node_tree.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tev2_compare
{

/// Which nodes of two trees are the same. kNoNode: the other tree does not have it.
struct NodeMatch
{
    std::vector<std::uint32_t> right_of; ///< by node of the left tree
    std::vector<std::uint32_t> left_of;  ///< by node of the right tree

    /// Whether the parents of two nodes are each other's match, or both nodes are at top level.
    bool SameParent(const NodeTree& left, std::uint32_t left_node, const NodeTree& right,
                    std::uint32_t right_node) const;
};

/// Matches nodes, each with one at most, in n log n comparisons of names:
///
/// 1. by path; of several with one name below one parent the first with the first, the second with the second
/// 2. by name alone, with what is below them: these have moved
/// 3. below nodes that match, those that are left and are called the same after the namespace ("ann:Hips",
///    "bob:Hips"), have children who match, or are at the same place below their parent, as bones are: these were
///    renamed. At no distance from the parent nodes match only where nothing else is left on either side.
///
/// `same_roots`: the first node of both files is the same, whatever its name.
NodeMatch MatchNodes(const NodeTree& left, const NodeTree& right, bool same_roots);

} // namespace tev2_compare
