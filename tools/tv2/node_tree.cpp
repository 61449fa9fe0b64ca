#include "tools/tv2/node_tree.h"

#include <algorithm>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

std::size_t ParentOf(const std::vector<TEV2_MATRIX_NODE>& nodes, std::size_t node)
{
    const std::int32_t parent = nodes[node].parentIndex;
    return parent >= 0 && static_cast<std::size_t>(parent) < nodes.size() ? static_cast<std::size_t>(parent)
                                                                          : NodeTree::kNoNode;
}

/// The first node of each circle of parents.
std::vector<bool> FindCuts(const std::vector<TEV2_MATRIX_NODE>& nodes)
{
    std::vector<bool> cuts(nodes.size());
    std::vector<std::size_t> seen_from(nodes.size(), NodeTree::kNoNode);
    for (std::size_t start = 0; start < nodes.size(); ++start)
    {
        std::size_t at = start;
        while (at != NodeTree::kNoNode && seen_from[at] == NodeTree::kNoNode)
        {
            seen_from[at] = start;
            at = ParentOf(nodes, at);
        }
        if (at == NodeTree::kNoNode || seen_from[at] != start)
            continue;
        std::size_t first = at;
        for (std::size_t on = ParentOf(nodes, at); on != at; on = ParentOf(nodes, on))
            first = std::min(first, on);
        cuts[first] = true;
    }
    return cuts;
}

} // namespace

NodeTree::NodeTree(const TEV2_MATRIX_HIERARCHY& hierarchy)
    : first_children_(hierarchy.nodes.size(), kNoNode),
      next_siblings_(hierarchy.nodes.size(), kNoNode),
      child_counts_(hierarchy.nodes.size()),
      cut_(FindCuts(hierarchy.nodes))
{
    for (std::size_t node = hierarchy.nodes.size(); node-- > 0;)
    {
        const std::size_t parent = cut_[node] ? kNoNode : ParentOf(hierarchy.nodes, node);
        std::size_t& first = parent == kNoNode ? first_top_ : first_children_[parent];
        next_siblings_[node] = first;
        first = node;
        if (parent != kNoNode)
            ++child_counts_[parent];
    }
}

void NodeTree::Visit(const std::function<void(const Place& place)>& visit) const
{
    std::vector<std::size_t> ancestors;
    for (std::size_t node = first_top_; node != kNoNode;)
    {
        visit({node, ancestors.size(), next_siblings_[node] == kNoNode});
        if (first_children_[node] != kNoNode)
        {
            ancestors.push_back(node);
            node = first_children_[node];
            continue;
        }
        while (next_siblings_[node] == kNoNode && !ancestors.empty())
        {
            node = ancestors.back();
            ancestors.pop_back();
        }
        node = next_siblings_[node];
    }
}

} // namespace tv2
