#include "gltf/convert/from_meshes.h"

#include "gltf/convert/from_objects.h"
#include "gltf/json_text.h"
#include "gltf/skin.h"
#include "tev2_loader/tracks/linear_tracks.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace tev2_gltf
{

using gltf::Place;
using namespace TEV2_LOADER;

namespace
{

// The array of a scene that an instance list repeats.
constexpr std::uint32_t kMorphMeshList = 4;
constexpr std::uint32_t kRigidList = 5;
constexpr std::uint32_t kWeightedMeshList = 6;

void AppendAttributes(const gltf::Attributes& attributes, std::string& text)
{
    std::vector<std::string> parts;
    for (const gltf::Attribute& attribute : attributes)
        parts.push_back(std::string(attribute.name) + "=" + std::to_string(attribute.accessor));
    std::ranges::sort(parts);
    for (const std::string& part : parts)
        text.append(part).append(",");
    text += ';';
}

/// The same text for meshes whose objects have the same vertices and targets.
std::string VerticesText(const MeshLayout& layout)
{
    const gltf::Mesh& mesh = layout.Mesh();
    if (layout.HasFlatBlocks())
        return "mesh " + std::to_string(mesh.index);
    std::string text;
    for (const MeshLayout::Block& block : layout.Blocks())
    {
        AppendAttributes(block.primitive->attributes, text);
        for (const gltf::Attributes& target : block.primitive->targets)
            AppendAttributes(target, text);
        text += '|';
    }
    if (mesh.TargetCount() > 0)
        text += gltf::JsonText(mesh.json["weights"]) + gltf::JsonText(mesh.json["extras"]["targetNames"]);
    return text;
}

bool HaveSameTriangles(const MeshLayout& a, const MeshLayout& b)
{
    return std::ranges::equal(a.Parts(), b.Parts(),
                              [](const MeshLayout::Part& x, const MeshLayout::Part& y)
                              {
                                  return x.block == y.block && x.primitive->indices == y.primitive->indices &&
                                         x.primitive->mode == y.primitive->mode;
                              });
}

bool HaveSameMaterials(const MeshLayout& a, const MeshLayout& b)
{
    return std::ranges::equal(a.Parts(), b.Parts(),
                              [](const MeshLayout::Part& x, const MeshLayout::Part& y)
                              { return x.primitive->material == y.primitive->material; });
}

/// Of a matrix of 16 numbers, column by column. Adds 1 to `changed` where its last row is not 0, 0, 0, 1.
TEV2_MATRIX_3X4 MatrixOf(std::span<const double> numbers, std::size_t& changed)
{
    TEV2_MATRIX_3X4 matrix;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 4; ++column)
            matrix.m[row][column] = static_cast<float>(numbers[4 * column + row]);
    }
    if (numbers[3] != 0.0 || numbers[7] != 0.0 || numbers[11] != 0.0 || numbers[15] != 1.0)
        ++changed;
    return matrix;
}

} // namespace

FromMeshes::FromMeshes(FromContext& context, const NodePlan& plan, std::set<std::size_t> moved_weights)
    : context_(context), plan_(plan), moved_weights_(std::move(moved_weights))
{
}

void FromMeshes::AddTo(TEV2& scene, const gltf::Animation* animation,
                       const std::map<std::size_t, NodeMotion>& motions)
{
    scene_ = &scene;
    animation_ = animation;
    motions_ = &motions;
    sources_.clear();
    for (const NodePlan::Entry& entry : plan_.entries)
    {
        const gltf::Node node = context_.document.NodeAt(entry.node);
        if (node.mesh && !entry.is_light_child)
            AddNode(entry, node);
    }
    for (const auto& [node, record] : plan_.skin_nodes)
        AddNode({node, -1, Exchange::SwapYZ, kWorldExchange}, context_.document.NodeAt(node));
}

const MeshLayout& FromMeshes::LayoutOf(std::size_t mesh, bool is_skinned)
{
    Known& known = known_[mesh];
    if (known.mesh.primitives.empty())
    {
        known.mesh = gltf::MeshAt(context_.document, mesh);
        const Place place = gltf::PlaceOf(known.mesh);
        context_.ReportRest(known.mesh.json, place, {}, false);
        for (const gltf::Primitive& primitive : known.mesh.primitives)
            context_.ReportRest(primitive.json, place, {}, true);
    }
    std::unique_ptr<MeshLayout>& layout = is_skinned ? known.skinned_layout : known.layout;
    if (!layout)
    {
        layout = std::make_unique<MeshLayout>(context_, known.mesh, is_skinned);
        known.vertices =
            vertices_known_.try_emplace(VerticesText(*layout), vertices_known_.size()).first->second;
    }
    return *layout;
}

void FromMeshes::AddNode(const NodePlan::Entry& entry, const gltf::Node& node)
{
    const Place place = context_.document.PlaceOf("nodes", entry.node);
    if (*node.mesh >= context_.document.Count("meshes"))
        place.Fail("mesh", "is none of the file");
    if (node.skin && *node.skin >= context_.document.Count("skins"))
        place.Fail("skin", "is none of the file");
    const MeshLayout& layout = LayoutOf(*node.mesh, node.skin.has_value());
    const bool has_targets = layout.Mesh().TargetCount() > 0;
    if (const auto motion = motions_->find(entry.node);
        motion != motions_->end() && motion->second.weights && !has_targets)
        context_.ReportMotion(Code::AnimationLost, place, "weights of a mesh without morph targets");
    if (layout.Parts().empty())
        return;
    const bool has_own_weights = has_targets && (node.json["weights"] || moved_weights_.contains(entry.node));
    const Key key{known_.at(*node.mesh).vertices, node.skin ? Exchange::SwapYZ : entry.own,
                  node.skin.value_or(kNoIndex), has_own_weights ? entry.node : kNoIndex};
    const auto found = sources_.find(key);
    if (found == sources_.end())
        sources_.emplace(key, AddObject(entry, layout, node.skin));
    else
        AddInstance(entry, layout, found->second, node.skin.has_value());
}

FromMeshes::Source FromMeshes::AddObject(const NodePlan::Entry& entry, const MeshLayout& layout,
                                         std::optional<std::size_t> skin)
{
    const gltf::Mesh& mesh = layout.Mesh();
    const Place place = gltf::PlaceOf(mesh);
    const Exchange exchange = skin ? Exchange::SwapYZ : entry.own;
    context_.budget.Take(sizeof(TEV2_WEIGHTED_MESH) + sizeof(TEV2_RIGID_VERTICES) + sizeof(TEV2_SKIN), place);
    const auto fill = [&](auto& object)
    {
        object.name = ObjectName(context_, mesh.name, entry.node);
        object.value = plan_.RecordOfMeshAt(entry.node);
        context_.ReadExtras(mesh.json, place, object.properties, "targetNames");
        *object.vertices = MakeVertices(context_, layout, exchange);
        object.subObjects = MakeSubObjects(context_, layout);
        if constexpr (requires { object.targets; })
        {
            object.targets = MakeTargets(context_, layout, exchange);
            SetWeights(entry.node, mesh, object.targets);
        }
    };
    const auto add = [&]<typename Object>(TEV2::Array<Object>& array, std::uint32_t list)
    {
        fill(*array.emplace_back(std::make_unique<Object>()));
        return Source{list, static_cast<std::uint32_t>(array.size() - 1), mesh.index};
    };
    if (!skin)
        return mesh.TargetCount() > 0 ? add(scene_->morphMeshes, kMorphMeshList)
                                      : add(scene_->rigids, kRigidList);
    const Source source = add(scene_->weightedMeshes, kWeightedMeshList);
    const gltf::Skin bones = gltf::SkinAt(context_.document, *skin);
    TEV2_SKIN& result = *scene_->weightedMeshes.back()->skin;
    result = MakeWeights(context_, layout, bones.joints.size());
    SetBones(bones, result);
    return source;
}

void FromMeshes::AddInstance(const NodePlan::Entry& entry, const MeshLayout& layout, const Source& source,
                             bool is_skinned)
{
    const gltf::Mesh& mesh = layout.Mesh();
    const Place place = gltf::PlaceOf(mesh);
    const MeshLayout& other = LayoutOf(source.mesh, is_skinned);
    context_.budget.Take(sizeof(TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS), place);
    std::unique_ptr<TEV2_INSTANCE> instance;
    const bool is_same = mesh.index == source.mesh;
    if (!is_same)
        context_.budget.Take(layout.Parts().size(), sizeof(std::uint32_t), place);
    if (!is_same && !HaveSameTriangles(layout, other))
    {
        auto differing = std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>();
        differing->subObjects = MakeSubObjects(context_, layout);
        instance = std::move(differing);
    }
    else if (!is_same && !HaveSameMaterials(layout, other))
    {
        auto differing = std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>();
        for (const MeshLayout::Part& part : layout.Parts())
            differing->materials.push_back(
                part.primitive->material ? static_cast<std::uint32_t>(*part.primitive->material) : kNone);
        instance = std::move(differing);
    }
    else
        instance = std::make_unique<TEV2_GEOM_INSTANCE>();
    instance->name = ObjectName(context_, mesh.name, entry.node);
    instance->value = plan_.RecordOfMeshAt(entry.node);
    instance->source = source.index;
    if (!is_same)
        context_.ReadExtras(mesh.json, place, instance->properties, "targetNames");
    scene_->instanceLists[source.list].push_back(std::move(instance));
}

void FromMeshes::SetWeights(std::size_t node, const gltf::Mesh& mesh, std::vector<TEV2_MORPH_TARGET>& targets)
{
    if (targets.empty())
        return;
    const Place place = context_.document.PlaceOf("nodes", node);
    std::vector<double> weights = gltf::NodeWeights(context_.document, node, mesh);
    if (weights.empty())
        weights = mesh.weights;
    context_.budget.Take(weights.size(), TEV2_ANIMATABLE::kMostBytes, place);
    for (std::size_t i = 0; i < weights.size(); ++i)
        targets[i].track = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(Single(weights[i], place));
    const auto motion = motions_->find(node);
    if (motion == motions_->end() || !motion->second.weights)
        return;
    const StraightKeys keys = ReadKeys(context_, *animation_, *motion->second.weights, targets.size(),
                                       scene_->environment.timeRange);
    if (keys.times.empty())
        return;
    context_.budget.Take(targets.size(), TEV2_ANIMATABLE::kMostBytes + 2 * sizeof(float) * keys.times.size(),
                         place);
    for (std::size_t i = 0; i < targets.size(); ++i)
        targets[i].track = WeightTrack(keys, i, place);
}

void FromMeshes::SetBones(const gltf::Skin& source, TEV2_SKIN& result)
{
    const Place place = context_.document.PlaceOf("skins", source.index);
    if (reported_skins_.insert(source.index).second)
    {
        context_.ReportRest(source.json, place, {}, true);
        if (!source.name.empty() || source.skeleton)
            context_.Report(Code::SkinNameLost, place,
                            source.skeleton ? "its name or skeleton root" : "its name");
    }
    context_.budget.Take(source.joints.size(), sizeof(std::uint32_t) + 2 * sizeof(TEV2_MATRIX_3X4), place);
    const gltf::Numbers matrices =
        source.inverse_bind_matrices ? context_.accessors.Read(*source.inverse_bind_matrices) : nullptr;
    std::size_t changed = 0;
    for (std::size_t i = 0; i < source.joints.size(); ++i)
    {
        const std::uint32_t bone = plan_.RecordOf(source.joints[i]);
        if (bone == kNone)
            place.Fail("joints", "are not all nodes of the scene");
        result.bones.push_back(bone);
        const TEV2_MATRIX_3X4 matrix =
            matrices ? MatrixOf(std::span<const double>(*matrices).subspan(16 * i, 16), changed)
                     : TEV2_MATRIX_3X4{};
        result.bindMatrices.push_back(
            Exchanged(matrix, plan_.ExchangeOf(source.joints[i]), Exchange::SwapYZ));
    }
    if (changed > 0)
        context_.Report(Code::BindMatrixChanged, place, "the last row of inverse bind matrices", changed);
}

} // namespace tev2_gltf
