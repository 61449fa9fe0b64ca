#include "compare/node_tree.h"

#include "tev2_loader/names.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <algorithm>
#include <numeric>
#include <type_traits>

namespace tev2_compare
{

namespace
{

TEV2_LOADER::TEV2_VECTOR_3 FirstValue(const TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3* track)
{
    TEV2_LOADER::TEV2_VECTOR_3 first;
    if (track != nullptr)
        TEV2_LOADER::VisitKeys(*track,
                               [&first](auto /*times*/, auto values)
                               {
                                   if constexpr (std::is_same_v<typename decltype(values)::value_type,
                                                                TEV2_LOADER::TEV2_VECTOR_3>)
                                       if (!values.empty())
                                           first = values.front();
                               });
    return first;
}

} // namespace

NodeTree::NodeTree(const TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy)
{
    const std::size_t count = hierarchy.nodes.size();
    names_.reserve(count);
    parents_.reserve(count);
    for (const TEV2_LOADER::TEV2_MATRIX_NODE& node : hierarchy.nodes)
    {
        names_.push_back(TEV2_LOADER::Name(node));
        first_places_.push_back(FirstValue(node.translation.get()));
        const auto parent = static_cast<std::uint32_t>(node.parentIndex);
        parents_.push_back(node.parentIndex >= 0 && parent < count ? parent : kNoNode);
    }
    FindUniqueNames();
    BreakCircles();
    SortChildren();
    Walk();
}

std::span<const std::uint32_t> NodeTree::Children(std::uint32_t node) const
{
    const std::size_t place = node == kNoNode ? Count() : node;
    return std::span(children_).subspan(first_child_[place], first_child_[place + 1] - first_child_[place]);
}

std::string NodeTree::Path(std::uint32_t node) const
{
    constexpr std::size_t kMostNames = 16;
    std::vector<std::uint32_t> way;
    for (; node != kNoNode && way.size() < kMostNames; node = parents_[node])
        way.push_back(node);
    std::string path = node == kNoNode ? "" : ".../";
    for (auto step = way.rbegin(); step != way.rend(); ++step)
        path += (step == way.rbegin() ? "" : "/") + names_[*step];
    return path;
}

void NodeTree::FindUniqueNames()
{
    std::vector<std::uint32_t> order(names_.size());
    std::iota(order.begin(), order.end(), 0U);
    const auto name_of = [this](std::uint32_t node) -> const std::string& { return names_[node]; };
    std::ranges::sort(order, {}, name_of);
    unique_.assign(names_.size(), true);
    for (std::size_t at = 1; at < order.size(); ++at)
        if (name_of(order[at - 1]) == name_of(order[at]))
            unique_[order[at - 1]] = unique_[order[at]] = false;
}

void NodeTree::BreakCircles()
{
    constexpr std::uint32_t kNever = 0;
    std::vector<std::uint32_t> seen_on(parents_.size(), kNever); // the walk that came by first, from 1
    cut_.resize(parents_.size());
    for (std::uint32_t start = 0; start < parents_.size(); ++start)
    {
        const std::uint32_t walk = start + 1;
        std::uint32_t node = start;
        for (; node != kNoNode && seen_on[node] == kNever; node = parents_[node])
            seen_on[node] = walk;
        if (node == kNoNode || seen_on[node] != walk)
            continue;
        std::uint32_t first = node;
        for (std::uint32_t on = parents_[node]; on != node; on = parents_[on])
            first = std::min(first, on);
        parents_[first] = kNoNode;
        cut_[first] = true;
    }
}

void NodeTree::SortChildren()
{
    const auto place_of = [this](std::uint32_t parent) { return parent == kNoNode ? Count() : parent; };
    first_child_.assign(Count() + 2, 0);
    for (const std::uint32_t parent : parents_)
        ++first_child_[place_of(parent) + 1];
    for (std::size_t place = 1; place < first_child_.size(); ++place)
        first_child_[place] += first_child_[place - 1];
    std::vector<std::uint32_t> next(first_child_.begin(), first_child_.end() - 1);
    children_.resize(Count());
    for (std::uint32_t node = 0; node < Count(); ++node)
        children_[next[place_of(parents_[node])]++] = node;
}

void NodeTree::Walk()
{
    const auto push_children = [this](std::vector<std::uint32_t>& ahead, std::uint32_t node)
    {
        const auto children = Children(node);
        ahead.insert(ahead.end(), children.rbegin(), children.rend());
    };
    std::vector<std::uint32_t> ahead;
    push_children(ahead, kNoNode);
    pre_order_.reserve(Count());
    while (!ahead.empty())
    {
        const std::uint32_t node = ahead.back();
        ahead.pop_back();
        pre_order_.push_back(node);
        push_children(ahead, node);
    }
}

} // namespace tev2_compare
