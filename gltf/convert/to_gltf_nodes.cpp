#include "gltf/convert/to_gltf_nodes.h"

#include "gltf/convert/rotation_keys.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <algorithm>
#include <array>
#include <set>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

bool IsTurned(World world)
{
    return world == World::YUpTurned || world == World::ZUpTurned;
}

Exchange ExchangeOf(World world)
{
    return world == World::ZUp || world == World::ZUpTurned ? Exchange::SwapYZ : kWorldExchange;
}

/// Rounding may leave a component beyond 1, which glTF does not allow in nodes.
float Within1(float value)
{
    return std::clamp(value, -1.0f, 1.0f);
}

void SetUnless(Json& json, const char* member, std::span<const float> values, float otherwise)
{
    if (std::any_of(values.begin(), values.end(), [&](float value) { return value != otherwise; }))
        json[member] = gltf::FloatNumbers(values);
}

} // namespace

TEV2_VECTOR_3 ToGltfTranslation(const TEV2_VECTOR_3& translation, const Frame& frame)
{
    const TEV2_VECTOR_3 turned{-translation.x, translation.y, -translation.z};
    return Exchanged(frame.turned ? turned : translation, frame.parent);
}

TEV2_QUATERNION ToGltfRotation(const TEV2_QUATERNION& rotation, const Frame& frame)
{
    const TEV2_QUATERNION turned{rotation.z, rotation.w, -rotation.x, -rotation.y}; // (0, 1, 0, 0) x rotation
    return ExchangedRotation(frame.turned ? turned : rotation, frame.parent, frame.own);
}

GltfNodes::GltfNodes(ToGltfContext& context, std::vector<World> worlds)
    : context_(context),
      worlds_(std::move(worlds)),
      nodes_(context.Scene().matrixHierarchy.nodes.size()),
      scene_count_(nodes_.size())
{
    LinkParents();
}

/// The nodes of the circle of parents that a way up from `node` leads into, if it is a new one. `visited` has the
/// number of the way that first met each node.
std::vector<std::size_t> GltfNodes::CircleFrom(std::size_t node, std::vector<std::uint32_t>& visited) const
{
    const auto way = static_cast<std::uint32_t>(node + 1);
    std::optional<std::size_t> at = node;
    for (; at && visited[*at] == 0; at = nodes_[*at].parent)
        visited[*at] = way;
    std::vector<std::size_t> circle;
    if (!at || visited[*at] != way)
        return circle;
    const std::size_t begin = *at;
    do
    {
        circle.push_back(*at);
        at = nodes_[*at].parent;
    } while (*at != begin);
    return circle;
}

void GltfNodes::LinkParents()
{
    const auto& from = context_.Scene().matrixHierarchy.nodes;
    for (std::size_t i = 0; i < nodes_.size(); ++i)
    {
        const auto parent = static_cast<std::size_t>(from[i].parentIndex); // a negative one is beyond all
        if (parent >= nodes_.size())
            continue;
        nodes_[i].parent = parent;
        nodes_[parent].is_parent = true;
    }
    std::vector<std::uint32_t> visited(nodes_.size(), 0);
    for (std::size_t i = 0; i < nodes_.size(); ++i)
    {
        const std::vector<std::size_t> circle = CircleFrom(i, visited);
        if (circle.empty())
            continue;
        const std::size_t first = *std::min_element(circle.begin(), circle.end());
        nodes_[first].parent.reset();
        context_.report.Add(Code::ParentDropped, WhereOf("matrixHierarchy.nodes", first, from[first]),
                            "the node is below itself; it is at top level in the result");
    }
}

void GltfNodes::Claim(std::uint32_t node, Exchange exchange)
{
    if (node < scene_count_ && nodes_[node].own == Exchange::SwapYZ)
        nodes_[node].own = exchange;
}

std::size_t GltfNodes::Add(std::optional<std::size_t> parent, Exchange own, const std::string& name)
{
    if (parent)
        nodes_[*parent].is_parent = true;
    Node& node = nodes_.emplace_back();
    node.parent = parent;
    node.own = own;
    node.name = name;
    return nodes_.size() - 1;
}

std::size_t GltfNodes::AddVoid(const std::string& name)
{
    const std::size_t node = Add({}, Exchange::SwapYZ, name);
    MakeVoid(node);
    return node;
}

std::size_t GltfNodes::AddChild(std::size_t parent, const std::string& name)
{
    return Add(parent, nodes_[parent].own, name);
}

std::size_t GltfNodes::AddToWorld(const std::string& name)
{
    return Add({}, Exchange::SwapYZ, name);
}

std::size_t GltfNodes::Place(std::uint32_t value, std::optional<Exchange> exchange, const char* member,
                             const std::string& name, const std::string& where)
{
    const bool in_world = value >= scene_count_;
    if (!in_world && exchange.value_or(nodes_[value].own) == nodes_[value].own &&
        !nodes_[value].members.contains(member))
        return value;
    const std::optional<std::size_t> parent = in_world ? std::optional<std::size_t>() : value;
    const Exchange inherited = in_world ? Exchange::SwapYZ : nodes_[value].own;
    const std::size_t node = Add(parent, exchange.value_or(inherited), name);
    context_.report.Add(Code::NodeAdded, where,
                        in_world ? "it has no node and got one at top level"
                                 : "its node has something else on it; it got a child of that node");
    return node;
}

Frame GltfNodes::FrameOf(std::size_t node, std::size_t source) const
{
    const std::optional<std::size_t> parent = nodes_[node].parent;
    if (parent && parent != common_root_)
        return {nodes_[*parent].own, nodes_[node].own, false};
    return WorldFrame(source, nodes_[node].own);
}

Frame GltfNodes::WorldFrame(std::size_t source, Exchange own) const
{
    return {ExchangeOf(worlds_[source]), own, IsTurned(worlds_[source])};
}

void GltfNodes::MarkBone(std::uint32_t node)
{
    if (node < scene_count_)
        nodes_[node].is_bone = true;
}

bool GltfNodes::IsFreeForSkin(std::uint32_t value) const
{
    if (value >= scene_count_)
        return false;
    const Node& own = nodes_[value];
    if (own.parent || own.is_parent || own.is_bone || !own.members.empty() || own.own != Exchange::SwapYZ)
        return false;
    const TEV2_MATRIX_NODE& node = context_.Scene().matrixHierarchy.nodes[value];
    const TEV2_VECTOR_3 ones{1.0f, 1.0f, 1.0f};
    if (Moves(node.translation) || Moves(node.rotation) || Moves(node.scale) ||
        !(ValueAt(node.translation, 0.0f, {}) == TEV2_VECTOR_3{}) ||
        !(ValueAt(node.scale, 0.0f, ones) == ones))
        return false;
    const TEV2_QUATERNION turn = ToGltfRotation(ValueAt(node.rotation, 0.0f, {}), FrameOf(value));
    constexpr float kTolerance = 1e-6f;
    return std::abs(turn.x) <= kTolerance && std::abs(turn.y) <= kTolerance && std::abs(turn.z) <= kTolerance;
}

void GltfNodes::JoinRoots(const std::vector<std::size_t>& joints)
{
    std::set<std::size_t> roots;
    std::set<std::size_t> asked; // joints of a skin share most of their way
    for (const std::size_t joint : joints)
    {
        std::size_t at = joint;
        while (asked.insert(at).second && nodes_[at].parent)
            at = *nodes_[at].parent;
        if (!nodes_[at].parent)
            roots.insert(at);
    }
    if (roots.size() < 2)
        return;
    if (!common_root_)
    {
        common_root_ = Add({}, Exchange::SwapYZ, "Scene Root");
        MakeVoid(*common_root_);
        context_.report.Add(
            Code::NodeAdded, "Scene Root",
            "joints of a skin are below several nodes at top level, which are below this one now");
    }
    for (const std::size_t root : roots)
        if (root != *common_root_)
            nodes_[root].parent = common_root_;
}

void GltfNodes::SetTransform(std::size_t node, Json& json) const
{
    if (nodes_[node].is_void)
        return;
    TEV2_VECTOR_3 translation;
    TEV2_QUATERNION rotation;
    TEV2_VECTOR_3 scale{1.0f, 1.0f, 1.0f};
    const Frame frame = FrameOf(node);
    if (node < scene_count_)
    {
        const TEV2_MATRIX_NODE& from = context_.Scene().matrixHierarchy.nodes[node];
        const float time = context_.RestTime();
        translation = ValueAt(from.translation, time, translation);
        rotation = UnitRotation(ValueAt(from.rotation, time, rotation));
        scale = ValueAt(from.scale, time, scale);
    }
    translation = ToGltfTranslation(translation, frame);
    rotation = UnitRotation(ToGltfRotation(rotation, frame));
    scale = ExchangedScale(scale, frame.own);
    SetUnless(json, "translation", std::array{translation.x, translation.y, translation.z}, 0.0f);
    if (rotation.x != 0.0f || rotation.y != 0.0f || rotation.z != 0.0f)
        json["rotation"] = gltf::FloatNumbers(
            std::array{Within1(rotation.x), Within1(rotation.y), Within1(rotation.z), Within1(rotation.w)});
    SetUnless(json, "scale", std::array{scale.x, scale.y, scale.z}, 1.0f);
}

void GltfNodes::Write(Json scene_extras)
{
    const auto& from = context_.Scene().matrixHierarchy.nodes;
    std::vector<std::vector<std::size_t>> children(nodes_.size());
    std::vector<std::size_t> tops;
    for (std::size_t i = 0; i < nodes_.size(); ++i)
        (nodes_[i].parent ? children[*nodes_[i].parent] : tops).push_back(i);
    for (std::size_t i = 0; i < nodes_.size(); ++i)
    {
        const std::string where = i < scene_count_ ? WhereOf("matrixHierarchy.nodes", i, from[i]) : "";
        Json json = Named(i < scene_count_ ? NameFor(context_, from[i], where) : nodes_[i].name);
        SetTransform(i, json);
        json.update(nodes_[i].members);
        if (!children[i].empty())
            json["children"] = children[i];
        context_.out.Append("nodes", std::move(json));
    }
    Json scene = Json::object();
    if (!tops.empty())
        scene["nodes"] = tops;
    if (!scene_extras.empty())
        scene["extras"] = std::move(scene_extras);
    context_.out.Root()["scene"] = context_.out.Append("scenes", std::move(scene));
}

} // namespace tev2_gltf
