#include "gltf/convert/to_gltf_meshes.h"

#include "gltf/convert/tangents.h"
#include "gltf/convert/to_gltf_extras.h"
#include "gltf/convert/to_gltf_tracks.h"
#include "tev2_loader/math/matrix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <set>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

// Lists of instances, by what they repeat.
constexpr int kAnimMeshes = 0;
constexpr int kMorphMeshes = 4;
constexpr int kRigids = 5;
constexpr int kWeightedMeshes = 6;

constexpr std::size_t kMostJoints = 65536; // two bytes each

template <typename Mesh>
const Mesh* TypedAt(const std::vector<std::unique_ptr<Mesh>>& list, std::size_t index)
{
    return index < list.size() && list[index] && list[index]->IsTyped() ? list[index].get() : nullptr;
}

bool IsFiniteMatrix(const TEV2_MATRIX_3X4& matrix)
{
    for (const auto& row : matrix.m)
        for (const float value : row)
            if (!std::isfinite(value))
                return false;
    return true;
}

/// Columns of four, as glTF has matrices.
void AppendColumns(std::vector<float>& numbers, const TEV2_MATRIX_3X4& matrix)
{
    for (int column = 0; column < 4; ++column)
    {
        for (const auto& row : matrix.m)
            numbers.push_back(row[column]);
        numbers.push_back(column == 3 ? 1.0f : 0.0f);
    }
}

/// Of the list of a kind that has targets; null beyond it.
const std::vector<TEV2_MORPH_TARGET>* TargetsIn(const TEV2& scene, int kind, std::size_t index)
{
    if (kind == kMorphMeshes)
    {
        const TEV2_MORPH_MESH* const mesh = TypedAt(scene.morphMeshes, index);
        return mesh != nullptr ? &mesh->targets : nullptr;
    }
    const TEV2_WEIGHTED_MESH* const mesh = TypedAt(scene.weightedMeshes, index);
    return mesh != nullptr ? &mesh->targets : nullptr;
}

} // namespace

std::optional<SourceMesh> GltfMeshes::Source(int kind, std::size_t index)
{
    const TEV2& scene = context_.Scene();
    SourceMesh mesh;
    const auto set = [&](const char* list, const auto& object)
    {
        mesh.object = &object;
        mesh.vertices = &*std::as_const(object.vertices);
        mesh.where = WhereOf(list, index, object);
        mesh.name = NameFor(context_, object, mesh.where);
    };
    if (const auto* const rigid = kind == kRigids ? TypedAt(scene.rigids, index) : nullptr)
        set("rigids", *rigid);
    if (const auto* const morph = kind == kMorphMeshes ? TypedAt(scene.morphMeshes, index) : nullptr)
    {
        set("morphMeshes", *morph);
        mesh.targets = &morph->targets;
    }
    if (const auto* const weighted = kind == kWeightedMeshes ? TypedAt(scene.weightedMeshes, index) : nullptr)
    {
        set("weightedMeshes", *weighted);
        mesh.targets = &weighted->targets;
        mesh.skin = &*std::as_const(weighted->skin);
    }
    if (kind == kAnimMeshes)
        return AnimMesh(index);
    return mesh.object != nullptr ? std::optional(mesh) : std::nullopt;
}

/// Its vertices at the start.
std::optional<SourceMesh> GltfMeshes::AnimMesh(std::size_t index)
{
    const TEV2_ANIM_MESH* const object = TypedAt(context_.Scene().animMeshes, index);
    if (object == nullptr)
        return std::nullopt;
    SourceMesh mesh{object, nullptr, nullptr, nullptr, WhereOf("animMeshes", index, *object), {}};
    mesh.name = NameFor(context_, *object, mesh.where);
    const auto [found, is_new] = posed_.try_emplace(index);
    mesh.vertices = &found->second;
    if (!is_new)
        return mesh;
    TEV2_RIGID_VERTICES& posed = found->second;
    const TEV2_ANIM_VERTICES& from = *object->vertices;
    const bool has_normals = std::any_of(from.tracks.begin(), from.tracks.end(),
                                         [](const auto& tracks) { return tracks.normal != nullptr; });
    static_cast<TEV2_VERT_COLUMNS&>(posed) = from;
    const float time = context_.RestTime();
    bool moves = false;
    bool has_frames = false;
    for (const TEV2_VERTEX_TRACKS& tracks : from.tracks)
    {
        moves |= Moves(tracks.position) || Moves(tracks.normal);
        has_frames |= tracks.frame != nullptr;
        posed.positions.push_back(ValueAt(tracks.position, time, {}));
        if (has_normals)
            posed.normals.push_back(ValueAt(tracks.normal, time, {}));
    }
    if (has_frames)
        context_.report.Add(Code::AttributeLost, mesh.where + ", frames",
                            "those of moving vertices are left out");
    if (moves)
        context_.report.Add(Code::VertexAnimationLost, mesh.where,
                            "its vertices stay where they are at the start");
    return mesh;
}

void GltfMeshes::Write()
{
    for (const auto& mesh : context_.Scene().weightedMeshes)
        if (mesh && mesh->IsTyped())
            for (const std::uint32_t bone : std::as_const(mesh->skin)->bones)
                nodes_.MarkBone(bone);
    for (const int kind : {kRigids, kMorphMeshes, kAnimMeshes, kWeightedMeshes})
    {
        WriteList(kind);
        WriteInstances(kind);
    }
}

void GltfMeshes::WriteList(int kind)
{
    const TEV2& scene = context_.Scene();
    const std::size_t count = kind == kRigids        ? scene.rigids.size()
                              : kind == kMorphMeshes ? scene.morphMeshes.size()
                              : kind == kAnimMeshes  ? scene.animMeshes.size()
                                                     : scene.weightedMeshes.size();
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::optional<SourceMesh> mesh = Source(kind, i);
        if (!mesh)
            continue; // kept bodies are reported together
        ReportSwitches(*mesh->object, mesh->where);
        Place(*mesh, kind, i, *mesh->object, mesh->where, {});
    }
}

void GltfMeshes::ReportSwitches(const TEV2_GEOM_OBJECT& object, const std::string& where)
{
    if (Moves(object.visibility) || ValueAt(object.visibility, context_.RestTime(), 1.0f) != 1.0f ||
        !object.castsShadow || !object.receivesShadow)
        context_.report.Add(Code::VisibilityLost, where,
                            "it is drawn, and casts and receives shadows, all the time");
    if (!object.lights.empty())
        context_.report.Add(Code::LightReduced, where, "all lights shine on it, not only those of its list");
}

void GltfMeshes::WriteInstances(int kind)
{
    const auto& instances = context_.Scene().instanceLists[static_cast<std::size_t>(kind)];
    const std::string list = "instanceLists[" + std::to_string(kind) + "]";
    for (std::size_t i = 0; i < instances.size(); ++i)
    {
        if (!instances[i] || !instances[i]->IsTyped())
            continue;
        const TEV2_INSTANCE& instance = *instances[i];
        const std::string where = WhereOf(list.c_str(), i, instance);
        const std::optional<SourceMesh> mesh = Source(kind, instance.source);
        if (!mesh)
        {
            context_.report.Add(Code::RecordLost, where, "its source is no mesh that can be read");
            continue;
        }
        Difference difference;
        if (instance.GetChunkId() == kInstanceMaterialsChunk)
            difference = {&instance, nullptr,
                          &static_cast<const TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS&>(instance).materials};
        if (instance.GetChunkId() == kInstanceSubObjectsChunk)
            difference = {&instance,
                          &static_cast<const TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS&>(instance).subObjects,
                          nullptr};
        if (difference.materials != nullptr &&
            difference.materials->size() != mesh->object->subObjects.size())
        {
            context_.report.Add(Code::RecordLost, where + ".materials",
                                "they are not one for each part of its source");
            difference = {};
        }
        if (!ExtrasOf(context_, instance.properties, where).empty())
            context_.report.Add(Code::ExtrasLost, where, "properties of instances have no place in glTF");
        Place(*mesh, kind, instance.source, instance, where, difference);
    }
}

void GltfMeshes::Place(const SourceMesh& mesh, int kind, std::size_t index,
                       const TEV2_POSITIONAL_OBJECT& object, const std::string& where,
                       const Difference& difference)
{
    if (mesh.skin != nullptr)
        return PlaceSkinned(mesh, kind, index, object, where, difference);
    const std::size_t node =
        nodes_.Place(object.value, std::nullopt, "mesh", NameFor(context_, object, where), where);
    const std::optional<std::size_t> made = MeshOf(mesh, nodes_.FrameOf(node).own, difference);
    if (!made)
        return;
    nodes_.Members(node)["mesh"] = *made;
    if (mesh.targets != nullptr && !mesh.targets->empty())
        placed_.push_back({node, kind, index});
}

void GltfMeshes::PlaceSkinned(const SourceMesh& mesh, int kind, std::size_t index,
                              const TEV2_POSITIONAL_OBJECT& object, const std::string& where,
                              const Difference& difference)
{
    const std::optional<std::size_t> skin = SkinOf(mesh);
    const std::optional<std::size_t> made = MeshOf(mesh, Exchange::SwapYZ, difference);
    if (!made)
        return;
    const std::size_t node = SkinNode(object.value, NameFor(context_, object, where), where);
    nodes_.Members(node)["mesh"] = *made;
    if (skin)
        nodes_.Members(node)["skin"] = *skin;
    if (skin && node != object.value)
        MarkSkinNode(node, object.value);
    if (!mesh.targets->empty())
        placed_.push_back({node, kind, index});
}

/// The object's own node where that does nothing else; otherwise a new one.
std::size_t GltfMeshes::SkinNode(std::uint32_t value, const std::string& name, const std::string& where)
{
    if (nodes_.IsFreeForSkin(value))
    {
        nodes_.MakeVoid(value);
        return value;
    }
    context_.report.Add(Code::SkinMoved, where,
                        "it is on a node of its own at top level, since bones alone move it");
    return nodes_.AddVoid(name);
}

/// With the node that the mesh comes back to.
void GltfMeshes::MarkSkinNode(std::size_t node, std::uint32_t value)
{
    Json& mark = nodes_.Members(node)["extras"][std::string(kSkinExtra)] = Json::object();
    if (value < nodes_.SceneCount())
        mark = {{"node", value},
                {"name", ReadableText(context_.Scene().matrixHierarchy.nodes[value].name.Text())}};
}

std::optional<std::size_t> GltfMeshes::MeshOf(const SourceMesh& mesh, Exchange own,
                                              const Difference& difference)
{
    const auto [found, is_new] = meshes_.try_emplace({mesh.object, own, difference.instance});
    if (!is_new)
        return found->second;
    if (mesh.vertices->Count() == 0)
    {
        context_.report.Add(Code::RecordLost, mesh.where, "it has no vertices");
        return std::nullopt;
    }
    Json primitives = PrimitivesOf(mesh, own, difference);
    if (primitives.empty())
    {
        context_.report.Add(Code::RecordLost, mesh.where, "it has no triangles");
        return std::nullopt;
    }
    Json json = Named(mesh.name);
    json["primitives"] = std::move(primitives);
    SetExtras(context_, json, mesh.object->properties, mesh.where);
    SetTargets(json, mesh);
    found->second = context_.out.Append("meshes", std::move(json));
    return found->second;
}

const GltfGeometry& GltfMeshes::GeometryOf(const SourceMesh& mesh, Exchange own)
{
    const auto [found, is_new] = geometries_.try_emplace({mesh.object, own});
    if (is_new)
    {
        const std::span<const TEV2_MORPH_TARGET> targets =
            mesh.targets != nullptr ? std::span<const TEV2_MORPH_TARGET>(*mesh.targets)
                                    : std::span<const TEV2_MORPH_TARGET>();
        found->second = WriteGeometry(context_, *mesh.vertices, targets, own, mesh.where);
        if (mesh.skin != nullptr && SkinOf(mesh))
            WriteWeights(context_, *mesh.skin, found->second, mesh.where);
    }
    return found->second;
}

Json GltfMeshes::PrimitivesOf(const SourceMesh& mesh, Exchange own, const Difference& difference)
{
    const GltfGeometry& geometry = GeometryOf(mesh, own);
    Json primitives = Json::array();
    const SubObjects& parts =
        difference.sub_objects != nullptr ? *difference.sub_objects : mesh.object->subObjects;
    for (std::size_t i = 0; i < parts.size(); ++i)
    {
        const std::optional<std::size_t> indices = IndicesOf(parts[i], geometry.count, mesh.where);
        if (!indices)
            continue;
        Json primitive = {{"attributes", geometry.attributes}, {"indices", *indices}};
        SetMaterial(primitive, mesh, own,
                    difference.materials != nullptr ? (*difference.materials)[i] : parts[i].material);
        if (!geometry.targets.empty())
            primitive["targets"] = geometry.targets;
        primitives.push_back(std::move(primitive));
    }
    return primitives;
}

/// The material, and the tangents that its normal map needs: viewers that make their own differ.
void GltfMeshes::SetMaterial(Json& primitive, const SourceMesh& mesh, Exchange own, std::uint32_t material)
{
    const GltfGeometry& geometry = GeometryOf(mesh, own);
    const bool has_tangents = geometry.attributes.contains("TANGENT");
    const bool can_have = geometry.attributes.contains("NORMAL") && geometry.uv_sets > 0;
    const auto written = materials_.For(material, {geometry.uv_sets, has_tangents || can_have});
    if (!written)
        return;
    primitive["material"] = *written;
    const std::optional<std::size_t> set = materials_.TangentSetOf(*written);
    if (!set || has_tangents)
        return;
    const auto [found, is_new] = tangents_.try_emplace({mesh.object, own, *set}, 0);
    if (is_new)
    {
        context_.out.CheckRoom(geometry.count * 4 * sizeof(float));
        std::vector<float> tangents = MakeTangents(*mesh.vertices, mesh.object->subObjects, own, *set);
        while (tangents.size() < geometry.count * 4) // its columns are of different lengths
            tangents.insert(tangents.end(), {1.0f, 0.0f, 0.0f, 1.0f});
        found->second = context_.out.AddFloats(tangents, 4, gltf::AccessorUse::Vertex);
        context_.report.Add(Code::AttributeFilled, mesh.where, "it got tangents, which the normal map needs");
    }
    primitive["attributes"]["TANGENT"] = found->second;
}

/// The exchange of axes mirrors, so the corners change places to be seen from the same side.
std::optional<std::size_t> GltfMeshes::IndicesOf(const TEV2_TRI_SUB_OBJECT& part, std::size_t vertices,
                                                 const std::string& where)
{
    const auto [found, is_new] = indices_.try_emplace(&part);
    if (!is_new)
        return found->second;
    std::vector<std::uint32_t> corners;
    std::size_t outside = 0;
    context_.out.CheckRoom(part.triangles.size() * sizeof(TEV2_TRIANGLE));
    corners.reserve(part.triangles.size() * 3);
    for (const auto& [a, b, c] : part.triangles)
    {
        if (std::max({a, b, c}) >= vertices)
            ++outside;
        else
            corners.insert(corners.end(), {a, c, b});
    }
    if (outside > 0)
        context_.report.Add(Code::ValueDropped, where, "a triangle has a corner beyond the vertices",
                            outside);
    if (!corners.empty())
        found->second = context_.out.AddIndices(corners);
    return found->second;
}

void GltfMeshes::SetTargets(Json& json, const SourceMesh& mesh)
{
    if (mesh.targets == nullptr || mesh.targets->empty())
        return;
    Json names = Json::array();
    Json weights = Json::array();
    bool has_tracks = false; // a mesh without any has no weights
    for (const TEV2_MORPH_TARGET& target : *mesh.targets)
    {
        const float weight = ValueAt(target.track, context_.RestTime(), 0.0f);
        has_tracks |= target.track != nullptr;
        weights.push_back(gltf::FloatNumber(weight));
        names.push_back(NameFor(context_, target, mesh.where));
    }
    if (has_tracks)
        json["weights"] = std::move(weights);
    json["extras"]["targetNames"] = std::move(names);
}

TEV2_MATRIX_3X4 GltfMeshes::BindMatrixOf(const TEV2_SKIN& skin, std::size_t bone)
{
    if (skin.bindMatrices.size() == skin.bones.size())
        return skin.bindMatrices[bone];
    const auto& table = context_.Scene().inverseBindMatrices;
    return skin.bones[bone] < table.size() ? table[skin.bones[bone]] : TEV2_MATRIX_3X4{};
}

/// The node of a bone; no skin has a node twice.
std::size_t GltfMeshes::JointOf(std::uint32_t bone, std::vector<bool>& used, const std::string& where)
{
    if (bone >= nodes_.SceneCount())
    {
        context_.report.Add(Code::NodeAdded, where,
                            "a bone is no node; a node at top level is where it would be");
        return nodes_.AddToWorld("");
    }
    if (!used[bone])
    {
        used[bone] = true;
        return bone;
    }
    context_.report.Add(Code::NodeAdded, where,
                        "a bone appears twice; a child of its node is the second one");
    return nodes_.AddChild(bone, "");
}

std::optional<std::size_t> GltfMeshes::SkinOf(const SourceMesh& mesh)
{
    const auto [known, is_new] = of_.try_emplace(mesh.object);
    if (!is_new)
        return known->second;
    const TEV2_SKIN& skin = *mesh.skin;
    if (skin.bones.empty() || skin.bones.size() > kMostJoints)
    {
        context_.report.Add(Code::RecordLost, mesh.where + ".skin", "it has no bones, or more than 65536");
        return std::nullopt;
    }
    std::vector<float> matrices;
    std::size_t not_finite = 0;
    for (std::size_t i = 0; i < skin.bones.size(); ++i)
    {
        const bool is_node = skin.bones[i] < nodes_.SceneCount();
        TEV2_MATRIX_3X4 bind = is_node ? BindMatrixOf(skin, i) : TEV2_MATRIX_3X4{};
        if (!IsFiniteMatrix(bind))
        {
            bind = {};
            ++not_finite;
        }
        AppendColumns(matrices,
                      is_node ? Exchanged(bind, nodes_.FrameOf(skin.bones[i]).own, Exchange::SwapYZ) : bind);
    }
    if (not_finite > 0)
        context_.report.Add(Code::ValueDropped, mesh.where,
                            "a bind matrix that is not finite is the identity", not_finite);
    std::string key(skin.bones.size() * sizeof(std::uint32_t) + matrices.size() * sizeof(float), '\0');
    std::memcpy(key.data(), skin.bones.data(), skin.bones.size() * sizeof(std::uint32_t));
    std::memcpy(key.data() + skin.bones.size() * sizeof(std::uint32_t), matrices.data(),
                matrices.size() * sizeof(float));
    const auto [found, is_new_skin] = skins_.try_emplace(std::move(key), 0);
    if (is_new_skin)
    {
        std::vector<bool> used(nodes_.SceneCount());
        std::vector<std::size_t> joints;
        for (const std::uint32_t bone : skin.bones)
            joints.push_back(JointOf(bone, used, mesh.where));
        nodes_.JoinRoots(joints);
        Json json = {
            {"inverseBindMatrices", context_.out.AddFloats(matrices, 16, gltf::AccessorUse::BindMatrices)},
            {"joints", joints}};
        found->second = context_.out.Append("skins", std::move(json));
    }
    known->second = found->second;
    return known->second;
}

void GltfMeshes::Animate(GltfAnimation& animation)
{
    const TEV2& scene = context_.sources[animation.Source()].scene;
    for (const Placed& placed : placed_)
    {
        const auto* const first = TargetsIn(context_.Scene(), placed.kind, placed.index);
        const auto* const targets = TargetsIn(scene, placed.kind, placed.index);
        const std::string where = (placed.kind == kMorphMeshes ? "morphMeshes[" : "weightedMeshes[") +
                                  std::to_string(placed.index) + "].targets";
        if (targets == nullptr || targets->size() != first->size())
        {
            context_.report.Add(Code::AnimationLost, where,
                                "in " + context_.sources[animation.Source()].animation_name +
                                    " there are others");
            continue;
        }
        std::vector<Keys<float>> keys;
        for (const TEV2_MORPH_TARGET& target : *targets)
            keys.push_back(CleanKeys(target.track, 0.0f, animation.Shift(), where, context_.report));
        std::vector<float> rest;
        for (const TEV2_MORPH_TARGET& target : *first)
            rest.push_back(ValueAt(target.track, context_.RestTime(), 0.0f));
        animation.AddWeights(placed.node, keys, rest);
    }
}

} // namespace tev2_gltf
