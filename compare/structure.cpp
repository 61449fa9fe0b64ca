#include "compare/structure.h"

#include "compare/name_space.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/visit_keys.h"
#include "tev2_loader/up_axis.h"

#include <algorithm>
#include <concepts>
#include <functional>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace tev2_compare
{

using namespace TEV2_LOADER;

namespace
{

constexpr const char* kUpAxis = "up axis";

bool Moves(const TEV2_ANIMATABLE* track)
{
    bool moves = false;
    if (track != nullptr)
        VisitKeys(*track,
                  [&moves](auto /*times*/, auto values)
                  {
                      moves = std::ranges::any_of(values, [&values](const auto& value)
                                                  { return !(value == values.front()); });
                  });
    return moves;
}

bool Moves(const TEV2_EXTENDED_PROPERTIES& properties)
{
    const auto any = [](const auto& values)
    { return std::ranges::any_of(values, [](const auto& value) { return Moves(value.track.get()); }); };
    return any(properties.intValues) || any(properties.floatValues) || any(properties.vector3Values) ||
           any(properties.vector4Values);
}

/// Sums by node of what is at it and below it.
std::vector<std::size_t> Sums(const NodeTree& tree, const std::function<std::size_t(std::uint32_t)>& at_node)
{
    std::vector<std::size_t> sums(tree.Count());
    const auto order = tree.PreOrder();
    for (auto node = order.rbegin(); node != order.rend(); ++node)
    {
        sums[*node] += at_node(*node);
        if (tree.Parent(*node) != kNoNode)
            sums[tree.Parent(*node)] += sums[*node];
    }
    return sums;
}

/// What a node is called; `none` for no node.
std::string NodeText(const NodeTree& tree, std::uint32_t node, const char* none)
{
    if (node == kNoNode)
        return none;
    return node < tree.Count() ? tree.Label(node) : "node " + std::to_string(node);
}

/// What two different nodes are called, one of each tree: where that is the same, their paths.
std::pair<std::string, std::string> ToldApart(const NodeTree& left_tree, std::uint32_t left,
                                              const NodeTree& right_tree, std::uint32_t right,
                                              const char* none)
{
    std::pair labels(NodeText(left_tree, left, none), NodeText(right_tree, right, none));
    if (labels.first == labels.second && left < left_tree.Count() && right < right_tree.Count())
        labels = {left_tree.Path(left), right_tree.Path(right)};
    return labels;
}

/// The indices in `values` of one of the longest ascending runs through it.
std::vector<bool> LongestAscent(const std::vector<std::uint32_t>& values)
{
    constexpr std::size_t kNone_ = ~std::size_t{0};
    std::vector<std::size_t> ends; // of the ascents of each length, the index with the smallest value
    std::vector<std::size_t> before(values.size(), kNone_);
    for (std::size_t index = 0; index < values.size(); ++index)
    {
        const auto at = std::ranges::lower_bound(ends, values[index], {},
                                                 [&values](std::size_t end) { return values[end]; });
        if (at != ends.begin())
            before[index] = *(at - 1);
        if (at == ends.end())
            ends.push_back(index);
        else
            *at = index;
    }
    std::vector<bool> in_it(values.size());
    for (std::size_t index = ends.empty() ? kNone_ : ends.back(); index != kNone_; index = before[index])
        in_it[index] = true;
    return in_it;
}

/// Differences between nodes.
class NodeComparison
{
public:
    NodeComparison(const TEV2& left, const SceneMatch& match, std::vector<Difference>& found)
        : left_(match.left_tree),
          right_(match.right_tree),
          match_(match.nodes),
          exported_roots_(match.exported_roots),
          found_(found)
    {
        const std::vector<bool> moves = AnimatedNodes(left);
        const auto missing = [this](std::uint32_t node) { return match_.right_of[node] == kNoNode; };
        animated_ = Sums(left_, [&](std::uint32_t node) { return moves[node] ? 1U : 0U; });
        animated_missing_ =
            Sums(left_, [&](std::uint32_t node) { return moves[node] && missing(node) ? 1U : 0U; });
        missing_ = Sums(left_, [&](std::uint32_t node) { return missing(node) ? 1U : 0U; });
        added_ =
            Sums(right_, [this](std::uint32_t node) { return match_.left_of[node] == kNoNode ? 1U : 0U; });
        left_size_ = Sums(left_, [](std::uint32_t) { return 1U; });
    }

    void Run()
    {
        CompareLeft();
        CompareRight();
        CompareOrder();
    }

private:
    /// The difference that `key` stands for, made when it is asked for the first time.
    template <typename Key>
    Difference& One(std::map<Key, std::size_t>& known, const Key& key, Change change, const std::string& name)
    {
        const auto [at, added] = known.try_emplace(key, found_.size());
        if (added)
            found_.push_back({.change = change, .object = "node", .name = name});
        return found_[at->second];
    }

    static std::string LabelOfParent(const NodeTree& tree, std::uint32_t node)
    {
        const std::uint32_t parent = tree.Parent(node);
        return parent == kNoNode ? std::string() : tree.Label(parent);
    }

    void CompareLeft()
    {
        std::map<std::uint32_t, std::size_t> missing;
        std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> moved;
        std::map<std::pair<std::string, std::string>, std::size_t> namespaces;
        for (const std::uint32_t node : left_.PreOrder())
        {
            const std::uint32_t other = match_.right_of[node];
            const std::uint32_t parent = left_.Parent(node);
            if (other == kNoNode)
            {
                if (parent != kNoNode && match_.right_of[parent] == kNoNode)
                    continue;
                Difference& difference = One(missing, parent, Change::Missing, left_.Name(node));
                difference.left_nodes.push_back(node);
                difference.left = LabelOfParent(left_, node);
                difference.below += missing_[node] - 1;
                difference.animated += animated_missing_[node];
                continue;
            }
            if (!match_.SameParent(left_, node, right_, other))
            {
                Difference& difference =
                    One(moved, {parent, right_.Parent(other)}, Change::Moved, left_.Name(node));
                AddPair(difference, node, other);
                std::tie(difference.left, difference.right) =
                    ToldApart(left_, parent, right_, right_.Parent(other), "");
            }
            const bool root = exported_roots_ && node == 0;
            if (left_.Name(node) != right_.Name(other) && !root)
                AddRenamed(node, other, namespaces);
        }
    }

    void AddPair(Difference& difference, std::uint32_t left, std::uint32_t right)
    {
        difference.left_nodes.push_back(left);
        difference.right_nodes.push_back(right);
        difference.below += left_size_[left] - 1;
        difference.animated += animated_[left];
    }

    void AddRenamed(std::uint32_t node, std::uint32_t other,
                    std::map<std::pair<std::string, std::string>, std::size_t>& namespaces)
    {
        const std::string& name = left_.Name(node);
        const std::string& other_name = right_.Name(other);
        if (BaseName(name) != BaseName(other_name))
        {
            found_.push_back({.change = Change::Renamed,
                              .object = "node",
                              .name = name,
                              .left = name,
                              .right = other_name});
            AddPair(found_.back(), node, other);
            return;
        }
        // below a node with another namespace there are others: only the topmost count what is below them
        Difference& difference =
            One(namespaces, {std::string(NameSpace(name)), std::string(NameSpace(other_name))},
                Change::Renamed, name);
        difference.aspect = Aspect::Namespace;
        difference.left = NameSpace(name);
        difference.right = NameSpace(other_name);
        difference.left_nodes.push_back(node);
        difference.right_nodes.push_back(other);
        difference.animated = std::max(difference.animated, animated_[node]);
    }

    void CompareRight()
    {
        std::map<std::uint32_t, std::size_t> added;
        const auto size =
            Sums(right_, [this](std::uint32_t node) { return match_.left_of[node] == kNoNode ? 1U : 0U; });
        for (const std::uint32_t node : right_.PreOrder())
        {
            const std::uint32_t parent = right_.Parent(node);
            if (match_.left_of[node] != kNoNode || (parent != kNoNode && match_.left_of[parent] == kNoNode))
                continue;
            Difference& difference = One(added, parent, Change::Added, right_.Name(node));
            difference.right_nodes.push_back(node);
            difference.right = LabelOfParent(right_, node);
            difference.below += added_[node] - 1;
        }
    }

    /// Nodes that are elsewhere in the file although neither they nor nodes above them have moved to another parent.
    void CompareOrder()
    {
        std::vector<bool> moved(left_.Count());
        for (const std::uint32_t node : left_.PreOrder())
        {
            const std::uint32_t parent = left_.Parent(node);
            const std::uint32_t other = match_.right_of[node];
            moved[node] = (parent != kNoNode && moved[parent]) || other == kNoNode ||
                          !match_.SameParent(left_, node, right_, other);
        }
        std::vector<std::uint32_t> nodes;
        std::vector<std::uint32_t> others;
        for (std::uint32_t node = 0; node < left_.Count(); ++node)
        {
            if (moved[node])
                continue;
            nodes.push_back(node);
            others.push_back(match_.right_of[node]);
        }
        const std::vector<bool> in_order = LongestAscent(others);
        Difference difference{.change = Change::Reordered, .object = "node", .name = {}};
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            if (in_order[i])
                continue;
            difference.left_nodes.push_back(nodes[i]);
            difference.right_nodes.push_back(others[i]);
        }
        if (difference.left_nodes.empty())
            return;
        difference.name = left_.Name(difference.left_nodes.front());
        found_.push_back(std::move(difference));
    }

    const NodeTree& left_;
    const NodeTree& right_;
    const NodeMatch& match_;
    bool exported_roots_;
    std::vector<Difference>& found_;
    // by node, at it and below it
    std::vector<std::size_t> left_size_;
    std::vector<std::size_t> animated_;
    std::vector<std::size_t> animated_missing_;
    std::vector<std::size_t> missing_;
    std::vector<std::size_t> added_; ///< of the right tree
};

/// The same user property of several nodes is one difference.
class PropertyDifferences
{
public:
    explicit PropertyDifferences(std::vector<Difference>& found) : found_(found) {}

    Difference& Add(const Difference& owner, Change change, const PropertyName& property,
                    std::string_view left, std::string_view right)
    {
        const Key key{owner.object, change, property.name, left, right};
        const auto known = by_property_.find(key);
        const bool grouped = known != by_property_.end() && owner.object == "node";
        Difference& difference = grouped ? found_[known->second] : found_.emplace_back(owner);
        if (grouped)
        {
            difference.left_nodes.push_back(owner.left_nodes.front());
            difference.right_nodes.push_back(owner.right_nodes.front());
            return difference;
        }
        by_property_[key] = found_.size() - 1;
        difference.change = change;
        difference.aspect = Aspect::Property;
        difference.part = property.name;
        difference.left = left;
        difference.right = right;
        return difference;
    }

private:
    using Key = std::tuple<std::string, Change, std::string, std::string_view, std::string_view>;

    std::vector<Difference>& found_;
    std::map<Key, std::size_t> by_property_;
};

/// User properties by name and type.
void CompareProperties(const TEV2_EXTENDED_PROPERTIES& left, const TEV2_EXTENDED_PROPERTIES& right,
                       const Difference& owner, PropertyDifferences& found)
{
    const auto left_names = PropertiesOf(left);
    const auto right_names = PropertiesOf(right);
    const SceneMatch::List match = MatchProperties(left_names, right_names);
    std::multimap<std::string, std::size_t> only_right;
    for (std::size_t index = 0; index < right_names.size(); ++index)
        if (match.left_of[index] == kNone)
            only_right.emplace(right_names[index].name, index);
    for (std::size_t index = 0; index < left_names.size(); ++index)
    {
        if (match.right_of[index] != kNone)
            continue;
        const auto same_name = only_right.find(left_names[index].name);
        if (same_name == only_right.end())
        {
            found.Add(owner, Change::Missing, left_names[index], NameOf(left_names[index].type), {});
            continue;
        }
        found.Add(owner, Change::Retyped, left_names[index], NameOf(left_names[index].type),
                  NameOf(right_names[same_name->second].type));
        only_right.erase(same_name);
    }
    for (const auto& [name, index] : only_right)
        found.Add(owner, Change::Added, right_names[index], {}, NameOf(right_names[index].type));
}

/// Objects of lists: which there are, at which nodes, of which types.
class ObjectComparison
{
public:
    ObjectComparison(const SceneMatch& match, std::vector<Difference>& found)
        : match_(match), found_(found), properties_(found)
    {
    }

    template <typename Object>
    void CompareList(const std::string& title, const SceneMatch::List& list, const TEV2::Array<Object>& left,
                     const TEV2::Array<Object>& right)
    {
        std::optional<Difference> missing;
        std::optional<Difference> added;
        for (std::size_t index = 0; index < left.size(); ++index)
        {
            if (!left[index])
                continue;
            const std::uint32_t other = list.right_of[index];
            if (other == kNone || !right[other])
                AddName(missing, Change::Missing, title, *left[index]);
            else
                Compare(title, *left[index], *right[other]);
        }
        for (std::size_t index = 0; index < right.size(); ++index)
            if (right[index] && (list.left_of[index] == kNone || !left[list.left_of[index]]))
                AddName(added, Change::Added, title, *right[index]);
        for (auto& difference : {&missing, &added})
            if (difference->has_value())
                found_.push_back(std::move(**difference));
    }

private:
    template <typename Object>
    static void AddName(std::optional<Difference>& difference, Change change, const std::string& title,
                        const Object& object)
    {
        if (difference)
            difference->more_names.push_back(NameOfObject(object));
        else
            difference = {.change = change, .object = Singular(title), .name = NameOfObject(object)};
    }

    template <typename Object>
    Difference& Add(Change change, const std::string& title, const Object& object)
    {
        return found_.emplace_back(
            Difference{.change = change, .object = Singular(title), .name = NameOfObject(object)});
    }

    template <typename Object>
    static std::uint32_t NodeOf(const Object& object)
    {
        if constexpr (requires { object.properties; })
            return object.value;
        else if constexpr (requires { object.node; })
            return object.node;
        else
            return kNone;
    }

    template <typename Object>
    void Compare(const std::string& title, const Object& left, const Object& right)
    {
        const std::uint32_t left_node = NodeOf(left);
        const std::uint32_t right_node = NodeOf(right);
        const bool has_node = left_node < match_.left_tree.Count();
        const std::uint32_t expected = has_node ? match_.nodes.right_of[left_node] : left_node;
        if (expected != right_node && !(has_node && expected == kNoNode && right_node == kNone))
        {
            Difference& difference = Add(Change::Moved, title, left);
            std::tie(difference.left, difference.right) =
                ToldApart(match_.left_tree, left_node, match_.right_tree, right_node, "the world");
        }
        if constexpr (requires { left.GetType(); })
            CompareTypes(title, left, left.GetType(), right.GetType());
        if constexpr (std::derived_from<Object, TEV2_INSTANCE>)
            CompareTypes(title, left, left.GetChunkId(), right.GetChunkId());
        if constexpr (requires { left.properties; })
        {
            const Difference owner{.object = Singular(title), .name = Name(left)};
            CompareProperties(left.properties, right.properties, owner, properties_);
        }
        if constexpr (requires { left.skin; })
            CompareBones(title, left, right);
    }

    template <typename Object>
    void CompareTypes(const std::string& title, const Object& left, std::uint32_t left_type,
                      std::uint32_t right_type)
    {
        if (left_type == right_type)
            return;
        Difference& difference = Add(Change::Retyped, title, left);
        difference.left = "type " + std::to_string(left_type);
        difference.right = "type " + std::to_string(right_type);
    }

    void CompareBones(const std::string& title, const TEV2_WEIGHTED_MESH& left,
                      const TEV2_WEIGHTED_MESH& right)
    {
        if (!left.IsTyped() || !right.IsTyped())
            return;
        const auto names = [](const NodeTree& tree, const std::vector<std::uint32_t>& bones)
        {
            std::vector<std::string> all;
            all.reserve(bones.size());
            for (const std::uint32_t bone : bones)
                all.push_back(NodeText(tree, bone, "the world"));
            return all;
        };
        const auto left_names = names(match_.left_tree, left.skin->bones);
        const auto right_names = names(match_.right_tree, right.skin->bones);
        const SceneMatch::List bones = MatchNames(left_names, right_names);
        for (std::size_t bone = 0; bone < left_names.size(); ++bone)
            if (bones.right_of[bone] == kNone)
                AddBone(Change::Missing, title, left, left_names[bone]);
        for (std::size_t bone = 0; bone < right_names.size(); ++bone)
            if (bones.left_of[bone] == kNone)
                AddBone(Change::Added, title, left, right_names[bone]);
    }

    void AddBone(Change change, const std::string& title, const TEV2_WEIGHTED_MESH& mesh,
                 const std::string& bone)
    {
        Difference& difference = Add(change, title, mesh);
        difference.aspect = Aspect::Bone;
        difference.part = bone;
    }

    const SceneMatch& match_;
    std::vector<Difference>& found_;
    PropertyDifferences properties_;
};

void CompareUpAxes(const TEV2& left, const TEV2& right, std::vector<Difference>& found)
{
    const TEV2_UP_AXIS left_axis = UpAxis(left);
    const TEV2_UP_AXIS right_axis = UpAxis(right);
    if (left_axis == right_axis)
        return;
    found.push_back({.object = "scene",
                     .name = {},
                     .aspect = Aspect::Field,
                     .part = kUpAxis,
                     .left = UpAxisName(left_axis),
                     .right = UpAxisName(right_axis)});
}

} // namespace

std::vector<bool> AnimatedNodes(const TEV2& scene)
{
    std::vector<bool> animated;
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        animated.push_back(Moves(node.translation.get()) || Moves(node.rotation.get()) ||
                           Moves(node.scale.get()) || Moves(node.properties));
    if (std::ranges::find(animated, true) == animated.end())
        animated.assign(animated.size(), true);
    return animated;
}

std::vector<Difference> CompareStructure(const TEV2& left, const TEV2& right, const SceneMatch& match)
{
    std::vector<Difference> found;
    CompareUpAxes(left, right, found);
    NodeComparison(left, match, found).Run();
    PropertyDifferences properties(found);
    const auto& left_nodes = left.matrixHierarchy.nodes;
    for (std::uint32_t node = 0; node < left_nodes.size(); ++node)
    {
        const std::uint32_t other = match.nodes.right_of[node];
        if (other == kNoNode)
            continue;
        const Difference owner{.object = "node",
                               .name = match.left_tree.Name(node),
                               .left_nodes = {node},
                               .right_nodes = {other}};
        CompareProperties(left_nodes[node].properties, right.matrixHierarchy.nodes[other].properties, owner,
                          properties);
    }
    ObjectComparison objects(match, found);
    VisitLists(left,
               [&]<typename Member>(const auto& list, const Member& member)
               {
                   if constexpr (requires { member.begin(); })
                       objects.CompareList(list.kind.title, ListOf(match, LabelOf(list)), member,
                                           list.In(right));
               });
    return found;
}

std::vector<std::size_t> Obstacles(const std::vector<Difference>& differences)
{
    std::vector<std::size_t> obstacles;
    for (std::size_t index = 0; index < differences.size(); ++index)
    {
        const Difference& difference = differences[index];
        const bool node = difference.animated > 0 &&
                          (difference.change == Change::Missing || difference.change == Change::Renamed ||
                           difference.change == Change::Moved);
        const bool axes = difference.object == "scene" && difference.part == kUpAxis &&
                          difference.left != "unknown" && difference.right != "unknown";
        if (node || axes)
            obstacles.push_back(index);
    }
    return obstacles;
}

} // namespace tev2_compare
