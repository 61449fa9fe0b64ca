#include "gltf/convert/from_nodes.h"

#include "gltf/convert/from_switcher.h"
#include "gltf/convert/to_gltf.h"
#include "gltf/light.h"
#include "gltf/trs.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

#include <algorithm>
#include <set>
#include <string>

namespace tev2_gltf
{

using gltf::Place;
using gltf::ShownNode;
using gltf::Target;
using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kDeepestNode = 2000;

Exchange ExchangeOfNode(const FromContext& context, std::size_t index)
{
    const gltf::Node node = context.document.NodeAt(index);
    if (node.camera && !context.document.CameraAt(*node.camera).orthographic)
        return Exchange::NegateZ;
    return gltf::LightOfNode(context.document, index) ? Exchange::NegateX : Exchange::SwapYZ;
}

/// In the order of the document, if that has parents first.
std::vector<ShownNode> InOrder(std::vector<ShownNode> shown)
{
    if (std::ranges::any_of(shown, [&](const ShownNode& node)
                            { return node.parent && shown[*node.parent].index > node.index; }))
        return shown;
    std::vector<ShownNode> ordered = shown;
    std::ranges::sort(ordered, {}, &ShownNode::index);
    for (ShownNode& node : ordered)
    {
        if (node.parent)
            node.parent = static_cast<std::uint32_t>(
                std::ranges::lower_bound(ordered, shown[*node.parent].index, {}, &ShownNode::index) -
                ordered.begin());
    }
    return ordered;
}

gltf::Trs RestOf(const FromContext& context, const gltf::Node& node, const Place& place)
{
    if (const auto* const trs = std::get_if<gltf::Trs>(&node.local))
        return *trs;
    const auto& matrix = std::get<gltf::ColumnMatrix>(node.local);
    if (gltf::IsSheared(matrix))
        context.Report(Code::ShearDropped, place, "the matrix of the node");
    return gltf::Decomposed(matrix);
}

/// Fills a node's record.
class NodeMaker
{
public:
    NodeMaker(FromContext& context, const gltf::Animation* animation,
              const std::map<std::size_t, NodeMotion>& motions, TEV2& scene)
        : context_(context), animation_(animation), motions_(motions), scene_(scene)
    {
    }

    void Fill(const NodePlan::Entry& entry, TEV2_MATRIX_NODE& record)
    {
        record.parentIndex = entry.parent;
        if (entry.is_light_child)
        {
            FillLightChild(entry, record);
            return;
        }
        const gltf::Node node = context_.document.NodeAt(entry.node);
        const Place place = context_.document.PlaceOf("nodes", entry.node);
        record.name = context_.WideText(node.name, place);
        context_.ReportRest(node.json, place, {"KHR_lights_punctual"}, false);
        context_.ReadExtras(node.json, place, record.properties);
        FillTracks(entry, RestOf(context_, node, place), place, record);
    }

private:
    void FillLightChild(const NodePlan::Entry& entry, TEV2_MATRIX_NODE& record) const
    {
        record.name = context_.WideText(
            gltf::PlaceOfLight(context_.document, *gltf::LightOfNode(context_.document, entry.node)).name,
            context_.document.PlaceOf("nodes", entry.node));
        record.translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
        record.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
            ExchangedRotation({}, entry.parent_exchange, entry.own));
        context_.Report(Code::NodeAdded, context_.document.PlaceOf("nodes", entry.node),
                        "for its light, whose axes differ from those of its camera");
    }

    void FillTracks(const NodePlan::Entry& entry, const gltf::Trs& rest, const Place& place,
                    TEV2_MATRIX_NODE& record)
    {
        const auto found = motions_.find(entry.node);
        const NodeMotion motion = found == motions_.end() ? NodeMotion{} : found->second;
        if (const auto keys = KeysOf(motion.translation, 3))
            record.translation = TranslationTrack(*keys, entry.parent_exchange, place);
        else
            record.translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
                Exchanged(Vector(rest.translation, place), entry.parent_exchange));
        if (const auto keys = KeysOf(motion.rotation, 4))
            record.rotation = RotationTrack(context_, *keys, entry.parent_exchange, entry.own,
                                            {place, "keys of its rotation"});
        else
            record.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
                ExchangedRotation(RestRotation(rest, place), entry.parent_exchange, entry.own));
        if (const auto keys = KeysOf(motion.scale, 3))
            record.scale = ScaleTrack(*keys, entry.own, place);
        else if (const TEV2_VECTOR_3 scale = Vector(rest.scale, place);
                 scale != TEV2_VECTOR_3{1.0f, 1.0f, 1.0f})
            record.scale = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(ExchangedScale(scale, entry.own));
    }

    std::optional<StraightKeys> KeysOf(const std::optional<gltf::Channel>& channel, std::size_t width)
    {
        if (!channel)
            return std::nullopt;
        StraightKeys keys = ReadKeys(context_, *animation_, *channel, width, scene_.environment.timeRange);
        return keys.times.empty() ? std::nullopt : std::optional(std::move(keys));
    }

    TEV2_QUATERNION RestRotation(const gltf::Trs& rest, const Place& place) const
    {
        std::size_t changed = 0;
        const TEV2_QUATERNION rotation = UnitRotation(rest.rotation, changed);
        if (changed > 0)
            context_.Report(Code::RotationNormalised, place, "the rotation of the node");
        return rotation;
    }

    static TEV2_VECTOR_3 Vector(const std::array<double, 3>& numbers, const Place& place)
    {
        return {Single(numbers[0], place), Single(numbers[1], place), Single(numbers[2], place)};
    }

    FromContext& context_;
    const gltf::Animation* animation_;
    const std::map<std::size_t, NodeMotion>& motions_;
    TEV2& scene_;
};

const char* WordOf(Target target)
{
    switch (target)
    {
    case Target::Translation:
        return "translation";
    case Target::Rotation:
        return "rotation";
    case Target::Scale:
        return "scale";
    case Target::Weights:
        return "weights";
    case Target::Other:
        break;
    }
    return "what it moves";
}

/// Whether a node is there for a skinned mesh alone, as the conversion to glTF adds them.
bool IsForSkin(const gltf::Document& document, std::size_t index)
{
    const gltf::JsonValue node = document.Root()["nodes"][index];
    return node["extras"].Size() == 1 && node["extras"].Find(kSkinExtra).Kind() == gltf::JsonKind::Object &&
           node["mesh"] && node["skin"] && node["children"].Size() == 0 && !node["camera"] &&
           !node["extensions"];
}

/// The node that such a node names, kNone where it names none; nothing for one that is not among `owners`.
std::optional<std::uint32_t> OwnerOf(const gltf::Document& document, std::uint32_t skin_node,
                                     const std::set<std::int64_t>& owners)
{
    const gltf::JsonValue nodes = document.Root()["nodes"];
    const gltf::JsonValue mark = nodes[skin_node]["extras"].Find(kSkinExtra);
    if (mark.Size() == 0)
        return kNone;
    const std::int64_t owner = mark["node"].Whole().value_or(-1);
    if (!owners.contains(owner) ||
        nodes[static_cast<std::size_t>(owner)]["name"].Text() != mark["name"].Text())
        return std::nullopt;
    return static_cast<std::uint32_t>(owner);
}

/// By node that is there for a skinned mesh alone the node that it names, which is shown, too; kNone where it names
/// none. Joints of skins are no such nodes.
std::map<std::uint32_t, std::uint32_t> SkinNodes(const gltf::Document& document,
                                                 const std::vector<ShownNode>& shown)
{
    std::map<std::uint32_t, std::uint32_t> found;
    std::set<std::int64_t> owners;
    for (const ShownNode& node : shown)
    {
        if (IsForSkin(document, node.index))
            found[node.index] = kNone;
        else if (!IsSwitcherNode(document, node.index))
            owners.insert(node.index);
    }
    const gltf::JsonValue skins = document.Root()["skins"];
    for (std::size_t i = 0; i < skins.Size() && !found.empty(); ++i)
    {
        const gltf::JsonValue joints = skins[i]["joints"];
        for (std::size_t k = 0; k < joints.Size(); ++k)
            found.erase(static_cast<std::uint32_t>(joints[k].Whole().value_or(kNone)));
    }
    for (auto entry = found.begin(); entry != found.end();)
    {
        const std::optional<std::uint32_t> owner = OwnerOf(document, entry->first, owners);
        if (owner)
            (entry++)->second = *owner;
        else
            entry = found.erase(entry);
    }
    return found;
}

} // namespace

std::uint32_t NodePlan::RecordOfMeshAt(std::uint32_t node) const
{
    const auto found = skin_nodes.find(node);
    return found == skin_nodes.end() ? RecordOf(node) : found->second;
}

NodePlan MakeNodePlan(FromContext& context)
{
    const std::size_t count = context.document.Count("nodes");
    NodePlan plan;
    plan.record_of_node.assign(count, kNone);
    plan.light_record_of_node.assign(count, kNone);
    const std::vector<ShownNode> shown = InOrder(context.document.ShownNodes(kDeepestNode));
    const std::map<std::uint32_t, std::uint32_t> skin_nodes = SkinNodes(context.document, shown);
    std::vector<std::int32_t> entry_of_shown(shown.size(), -1);
    for (std::size_t i = 0; i < shown.size(); ++i)
    {
        const std::uint32_t node = shown[i].index;
        if (IsSwitcherNode(context.document, node))
        {
            plan.switcher_node = node;
            continue;
        }
        if (skin_nodes.contains(node))
            continue;
        const std::int32_t parent = shown[i].parent ? entry_of_shown[*shown[i].parent] : -1;
        const Exchange parent_exchange =
            parent < 0 ? kWorldExchange : plan.entries[static_cast<std::size_t>(parent)].own;
        const Exchange own = ExchangeOfNode(context, node);
        entry_of_shown[i] = static_cast<std::int32_t>(plan.entries.size());
        plan.record_of_node[node] = static_cast<std::uint32_t>(plan.entries.size());
        plan.entries.push_back({node, parent, own, parent_exchange});
        if (!gltf::LightOfNode(context.document, node))
            continue;
        if (own != Exchange::NegateX)
            plan.entries.push_back({node, entry_of_shown[i], Exchange::NegateX, own, true});
        plan.light_record_of_node[node] = static_cast<std::uint32_t>(plan.entries.size() - 1);
    }
    for (const auto& [node, owner] : skin_nodes)
        plan.skin_nodes[node] = owner == kNone ? kNone : plan.RecordOf(owner);
    if (shown.size() < count)
        context.report->Add(Code::SceneLost, "nodes", "nodes that the scene does not show",
                            count - shown.size());
    return plan;
}

std::map<std::size_t, NodeMotion> ReadMotions(const FromContext& context, const NodePlan& plan,
                                              const gltf::Animation& animation)
{
    const Place place = context.document.PlaceOf(animation);
    std::map<std::size_t, NodeMotion> motions;
    std::size_t elsewhere = 0;
    for (std::size_t i = 0; i < animation.channels.Size(); ++i)
    {
        const gltf::Channel channel = context.document.ChannelAt(animation, i);
        if (channel.node && plan.switcher_node == channel.node)
            continue;
        const bool is_known =
            channel.node && (plan.RecordOf(*channel.node) != kNone ||
                             (channel.target == Target::Weights &&
                              plan.skin_nodes.contains(static_cast<std::uint32_t>(*channel.node))));
        if (channel.target == Target::Other || !is_known)
        {
            ++elsewhere;
            continue;
        }
        NodeMotion& motion = motions[*channel.node];
        std::optional<gltf::Channel>& slot = channel.target == Target::Translation ? motion.translation
                                             : channel.target == Target::Rotation  ? motion.rotation
                                             : channel.target == Target::Scale     ? motion.scale
                                                                                   : motion.weights;
        if (slot)
            context.ReportMotion(Code::AnimationLost, context.document.PlaceOf("nodes", *channel.node),
                                 std::string("its ") + WordOf(channel.target) +
                                     " has several channels; the last one counts");
        slot = channel;
    }
    if (elsewhere > 0)
        context.ReportMotion(Code::AnimationLost, place,
                             "channels of something else than a node of the scene", elsewhere);
    return motions;
}

StraightKeys ReadKeys(FromContext& context, const gltf::Animation& animation, const gltf::Channel& channel,
                      std::size_t width, TEV2_FLOAT32_RANGE& time_range)
{
    const KeySource source{context.document.PlaceOf(animation),
                           std::string(WordOf(channel.target)) + " of " +
                               context.document.PlaceOf("nodes", *channel.node).Text()};
    const gltf::KeyTrack track = context.keys.Read(animation, channel, width);
    StraightKeys keys = MakeStraight(context, track, channel.target == Target::Rotation, source);
    if (!keys.times.empty())
    {
        time_range.minimum = std::min(time_range.minimum, keys.times.front());
        time_range.maximum = std::max(time_range.maximum, keys.times.back());
        context.budget.Take(keys.times.size(), sizeof(float) * (1 + width), source.place);
    }
    return keys;
}

void AddNodes(FromContext& context, const NodePlan& plan, const gltf::Animation* animation,
              const std::map<std::size_t, NodeMotion>& motions, TEV2& scene)
{
    constexpr std::size_t kNodeBytes = sizeof(TEV2_MATRIX_NODE) + 3 * TEV2_ANIMATABLE::kMostBytes;
    context.budget.Take(plan.entries.size(), kNodeBytes, {"nodes", 0});
    scene.matrixHierarchy.nodes.resize(plan.entries.size());
    NodeMaker maker(context, animation, motions, scene);
    for (std::size_t i = 0; i < plan.entries.size(); ++i)
        maker.Fill(plan.entries[i], scene.matrixHierarchy.nodes[i]);
    scene.matrixHierarchy.LinkParents();
}

} // namespace tev2_gltf
