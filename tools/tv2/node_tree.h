#pragma once

#include "tev2_loader/records/matrix_hierarchy.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace tv2
{

/// A hierarchy as a tree, whatever its parents are: parents that come after their children, that are no nodes (their
/// children are at top level, as in evaluation), or that form circles. Each circle is cut above its first node.
class NodeTree
{
public:
    static constexpr std::size_t kNoNode = ~std::size_t{0};

    /// A node on the way through the tree.
    struct Place
    {
        std::size_t node = 0;
        std::size_t depth = 0; ///< 0 at top level
        bool last = false;     ///< of its siblings
    };

    explicit NodeTree(const TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

    std::size_t ChildCount(std::size_t node) const { return child_counts_[node]; }

    /// Whether the parents of this node lead back to it, and the tree was cut above it.
    bool IsCut(std::size_t node) const { return cut_[node]; }

    /// Calls visit(place) for every node once: parents first, siblings in file order.
    void Visit(const std::function<void(const Place& place)>& visit) const;

private:
    std::size_t first_top_ = kNoNode;
    std::vector<std::size_t> first_children_;
    std::vector<std::size_t> next_siblings_;
    std::vector<std::size_t> child_counts_;
    std::vector<bool> cut_;
};

} // namespace tv2
