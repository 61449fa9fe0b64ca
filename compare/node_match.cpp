#include "compare/node_match.h"

#include "compare/name_space.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <string_view>
#include <utility>

namespace tev2_compare
{

namespace
{

using Nodes = std::vector<std::uint32_t>;

/// A number for every name: equal names have equal numbers.
struct NameNumbers
{
    Nodes left;
    Nodes right;
    std::size_t count = 0;

    template <typename NameOf>
    NameNumbers(const NodeTree& left_tree, const NodeTree& right_tree, const NameOf& name_of)
        : left(left_tree.Count()), right(right_tree.Count())
    {
        struct Named
        {
            std::string_view name;
            std::uint32_t* number;
        };
        std::vector<Named> all;
        all.reserve(left.size() + right.size());
        for (std::uint32_t node = 0; node < left.size(); ++node)
            all.push_back({name_of(left_tree.Name(node)), &left[node]});
        for (std::uint32_t node = 0; node < right.size(); ++node)
            all.push_back({name_of(right_tree.Name(node)), &right[node]});
        std::ranges::sort(all, {}, &Named::name);
        for (std::size_t at = 0; at < all.size(); ++at)
        {
            count += at == 0 || all[at].name != all[at - 1].name ? 1 : 0;
            *all[at].number = static_cast<std::uint32_t>(count - 1);
        }
    }
};

class Matcher
{
public:
    Matcher(const NodeTree& left, const NodeTree& right)
        : left_(left),
          right_(right),
          names_(left, right, [](std::string_view name) { return name; }),
          base_names_(left, right, BaseName)
    {
        match_.right_of.assign(left.Count(), kNoNode);
        match_.left_of.assign(right.Count(), kNoNode);
    }

    NodeMatch Run(bool same_roots)
    {
        if (same_roots && left_.Count() > 0 && right_.Count() > 0)
            Join(0, 0);
        pairs_.emplace_back(kNoNode, kNoNode);
        MatchPaths();
        MatchMoved();
        for (next_renamed_ = 0; next_renamed_ < pairs_.size(); ++next_renamed_)
            MatchRenamed(pairs_[next_renamed_].first, pairs_[next_renamed_].second);
        return std::move(match_);
    }

private:
    using Pair = std::pair<std::uint32_t, std::uint32_t>;

    void Join(std::uint32_t left, std::uint32_t right)
    {
        match_.right_of[left] = right;
        match_.left_of[right] = left;
        pairs_.emplace_back(left, right);
    }

    /// Matches what is below every pair that was found since the last call.
    void MatchPaths()
    {
        for (; next_path_ < pairs_.size(); ++next_path_)
            MatchChildren(pairs_[next_path_], names_);
    }

    void MatchChildren(const Pair& parents, const NameNumbers& names)
    {
        const auto by_name = [](const Nodes& numbers)
        {
            return [&numbers](std::uint32_t a, std::uint32_t b)
            { return numbers[a] != numbers[b] ? numbers[a] < numbers[b] : a < b; };
        };
        Nodes left = Unmatched(left_.Children(parents.first), match_.right_of);
        Nodes right = Unmatched(right_.Children(parents.second), match_.left_of);
        std::ranges::sort(left, by_name(names.left));
        std::ranges::sort(right, by_name(names.right));
        for (std::size_t i = 0, j = 0; i < left.size() && j < right.size();)
        {
            const std::uint32_t left_name = names.left[left[i]];
            const std::uint32_t right_name = names.right[right[j]];
            if (left_name == right_name)
                Join(left[i++], right[j++]);
            else if (left_name < right_name)
                ++i;
            else
                ++j;
        }
    }

    static Nodes Unmatched(std::span<const std::uint32_t> nodes, const Nodes& matches)
    {
        Nodes unmatched;
        std::ranges::copy_if(nodes, std::back_inserter(unmatched),
                             [&matches](std::uint32_t node) { return matches[node] == kNoNode; });
        return unmatched;
    }

    void MatchMoved()
    {
        std::vector<Nodes> candidates(names_.count); // of each name, the last first
        const auto order = right_.PreOrder();
        for (auto node = order.rbegin(); node != order.rend(); ++node)
            if (match_.left_of[*node] == kNoNode)
                candidates[names_.right[*node]].push_back(*node);
        for (const std::uint32_t node : left_.PreOrder())
        {
            Nodes& same_name = candidates[names_.left[node]];
            while (!same_name.empty() && match_.left_of[same_name.back()] != kNoNode)
                same_name.pop_back();
            if (match_.right_of[node] != kNoNode || same_name.empty())
                continue;
            Join(node, same_name.back());
            MatchPaths();
        }
    }

    void MatchRenamed(std::uint32_t left_parent, std::uint32_t right_parent)
    {
        MatchChildren({left_parent, right_parent}, base_names_);
        for (const std::uint32_t left : Unmatched(left_.Children(left_parent), match_.right_of))
        {
            const std::uint32_t right = WithSameChild(left, right_parent);
            if (right != kNoNode)
                Join(left, right);
        }
        MatchPlaces(left_parent, right_parent);
        MatchPaths();
    }

    /// The node below `right_parent` with a child that matches one of `left`.
    std::uint32_t WithSameChild(std::uint32_t left, std::uint32_t right_parent) const
    {
        for (const std::uint32_t child : left_.Children(left))
        {
            const std::uint32_t right_child = match_.right_of[child];
            const std::uint32_t right = right_child == kNoNode ? kNoNode : right_.Parent(right_child);
            if (right != kNoNode && match_.left_of[right] == kNoNode && right_.Parent(right) == right_parent)
                return right;
        }
        return kNoNode;
    }

    void MatchPlaces(std::uint32_t left_parent, std::uint32_t right_parent)
    {
        struct Placed
        {
            std::array<std::uint32_t, 3> place; ///< bits
            std::uint32_t node;

            bool AtParent() const
            {
                return std::ranges::all_of(place, [](std::uint32_t bits) { return bits << 1U == 0; });
            }
        };
        const auto placed = [](const NodeTree& tree, const Nodes& nodes)
        {
            std::vector<Placed> all;
            for (const std::uint32_t node : nodes)
                all.push_back({std::bit_cast<std::array<std::uint32_t, 3>>(tree.FirstPlace(node)), node});
            std::ranges::stable_sort(all, {}, &Placed::place);
            return all;
        };
        const auto left = placed(left_, Unmatched(left_.Children(left_parent), match_.right_of));
        const auto right = placed(right_, Unmatched(right_.Children(right_parent), match_.left_of));
        const bool only_one = left.size() == 1 && right.size() == 1;
        for (std::size_t i = 0, j = 0; i < left.size() && j < right.size();)
        {
            if (right[j].place < left[i].place)
                ++j;
            else if (left[i].place < right[j].place || (left[i].AtParent() && !only_one))
                ++i;
            else
                Join(left[i++].node, right[j++].node);
        }
    }

    const NodeTree& left_;
    const NodeTree& right_;
    NameNumbers names_;
    NameNumbers base_names_;
    NodeMatch match_;
    std::vector<Pair> pairs_; ///< in the order in which they were found; first the top levels
    std::size_t next_path_ = 0;
    std::size_t next_renamed_ = 0;
};

} // namespace

bool NodeMatch::SameParent(const NodeTree& left, std::uint32_t left_node, const NodeTree& right,
                           std::uint32_t right_node) const
{
    const std::uint32_t left_parent = left.Parent(left_node);
    const std::uint32_t right_parent = right.Parent(right_node);
    return left_parent == kNoNode ? right_parent == kNoNode
                                  : right_of[left_parent] == right_parent && right_parent != kNoNode;
}

NodeMatch MatchNodes(const NodeTree& left, const NodeTree& right, bool same_roots)
{
    return Matcher(left, right).Run(same_roots);
}

} // namespace tev2_compare
