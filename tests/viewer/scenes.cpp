// Scenes for the viewer's page, and the vertices that the format library works out for a file.
//
//     viewer_scenes make FOLDER          figure.tv2, typed.tv2, names.tv2, wrong.tv2, crowd.tv2
//     viewer_scenes vertices FILE TIME   positions and normals of all meshes, as JSON

#include "tests/support/hostile_names.h"
#include "tests/support/sample_scenes.h"
#include "tests/tools/typed_scene.h"
#include "tev2_loader/file.h"
#include "tev2_loader/skinning.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

float Wave(std::size_t seed, float time)
{
    return std::sin(static_cast<float>(seed) * 1.7f + time * 5.0f);
}

TEV2_QUATERNION Turn(std::size_t seed, float time)
{
    TEV2_QUATERNION q{Wave(seed, time), Wave(seed + 1, time), 0.5f, 2.0f};
    const float length = std::sqrt(Dot(q, q));
    return {q.x / length, q.y / length, q.z / length, q.w / length};
}

/// Keys that are not regular, and end before the scene does.
template <typename Track, typename Value>
std::unique_ptr<Track> Moving(std::size_t seed, std::size_t keys, Value value)
{
    auto track = std::make_unique<Track>();
    for (std::size_t i = 0; i < keys; ++i)
    {
        const float time = (static_cast<float>(i) + 0.4f * Wave(seed, static_cast<float>(i))) * 0.08f;
        track->Append(time, value(seed, time));
    }
    return track;
}

TEV2_VECTOR_3 Offset(std::size_t seed, float time)
{
    return {Wave(seed, time), 1.0f + 0.2f * Wave(seed + 3, time), 0.5f * Wave(seed + 5, time)};
}

TEV2_MATRIX_NODE& AddNode(TEV2& scene, std::u16string_view name, std::int32_t parent)
{
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    node.name = Wide(name);
    node.parentIndex = parent;
    return node;
}

void AddNodes(TEV2& scene, std::size_t count, std::size_t keys)
{
    AddNode(scene, u"Scene", -1);
    for (std::size_t i = 1; i < count; ++i)
    {
        const auto parent = static_cast<std::int32_t>(i % 11 == 1 ? 0 : i - 1);
        TEV2_MATRIX_NODE& node = AddNode(scene, Wide(u"Node").Text(), parent);
        node.translation = Moving<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(i, keys - i % 5, Offset);
        if (i % 4 == 1)
            node.rotation = Moving<TEV2_ANIMATABLE_QUATERNION_LERP>(i, keys, Turn);
        else
            node.rotation = Moving<TEV2_ANIMATABLE_QUATERNION_SLERP>(i, keys - i % 3, Turn);
    }
}

template <typename Mesh>
Mesh& AddGrid(TEV2::Array<Mesh>& meshes, std::u16string_view name, std::uint32_t node)
{
    Mesh& mesh = *meshes.emplace_back(std::make_unique<Mesh>());
    mesh.name = Wide(name);
    mesh.value = node;
    constexpr std::uint32_t kSide = 5;
    mesh.subObjects.resize(1);
    for (std::uint32_t i = 0; i < kSide * kSide; ++i)
    {
        if constexpr (!std::is_same_v<Mesh, TEV2_ANIM_MESH>)
        {
            mesh.vertices->positions.push_back(Offset(i, 0.3f));
            mesh.vertices->normals.push_back({Wave(i, 0.0f), 1.0f, Wave(i, 1.0f)});
        }
        if (i % kSide != 0 && i >= kSide)
            mesh.subObjects[0].triangles.push_back({i - kSide - 1, i, i - 1});
    }
    return mesh;
}

TEV2_MORPH_TARGET Target(std::size_t seed)
{
    TEV2_MORPH_TARGET target;
    target.name = Wide(u"Target");
    target.track = Moving<TEV2_ANIMATABLE_FLOAT32_LINEAR>(seed, 9, Wave);
    for (std::uint32_t i = 0; i < 20; i += 3)
    {
        target.offsets.vertices.push_back(i);
        target.offsets.positions.push_back(Offset(i + seed, 0.0f));
        target.offsets.normals.push_back(Offset(i, 1.0f));
    }
    return target;
}

void FillSkin(TEV2_SKIN& skin, std::size_t vertices, bool with_binds)
{
    skin.influences = 3;
    skin.bones = {2, 5, 4000, 7};
    for (std::size_t i = 0; i < 3 * vertices; ++i)
    {
        skin.boneIndices.push_back(static_cast<std::uint32_t>((i + i / 3) % 4));
        skin.weights.push_back(0.5f + 0.4f * Wave(i, 0.0f)); // the sum is not 1
    }
    for (std::size_t i = 0; with_binds && i < skin.bones.size(); ++i)
        skin.bindMatrices.push_back(RigidMatrix(Turn(i, 0.2f), Offset(i, 0.7f)));
}

void AddMeshes(TEV2& scene)
{
    AddGrid(scene.rigids, u"Box", 3);
    TEV2_ANIM_MESH& flag = AddGrid(scene.animMeshes, u"Flag", 4);
    flag.vertices->tracks.resize(25);
    for (std::size_t i = 0; i < 24; ++i) // the last has no tracks
    {
        flag.vertices->tracks[i].position = Moving<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(i, 6, Offset);
        flag.vertices->tracks[i].normal = Moving<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(i + 2, 7, Offset);
    }
    TEV2_MORPH_MESH& face = AddGrid(scene.morphMeshes, u"Face", 6);
    face.targets.push_back(Target(1));
    face.targets.push_back(Target(2));
    TEV2_WEIGHTED_MESH& body = AddGrid(scene.weightedMeshes, u"Body", kNone);
    FillSkin(*body.skin, 25, true);
    body.targets.push_back(Target(3));
    FillSkin(*AddGrid(scene.weightedMeshes, u"Coat", kNone).skin, 25, false);
    auto again = std::make_unique<TEV2_GEOM_INSTANCE>();
    again->value = 9;
    again->source = 0;
    scene.instanceLists[4].push_back(std::move(again)); // the morph mesh
}

TEV2_CAMERA& AddCamera(TEV2& scene, std::u16string_view name, std::uint32_t node, float inverse_aspect)
{
    TEV2_CAMERA& camera = *scene.cameras.emplace_back(std::make_unique<TEV2_CAMERA>());
    camera.name = Wide(name);
    camera.value = node;
    camera.inverseAspect = inverse_aspect;
    camera.fieldOfView = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 0.7f}, {1.0f, 1.4f}});
    camera.clipRange = MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({{0.0f, {0.001f, 400.0f}}});
    return camera;
}

/// Everything that moves and is drawn.
void FillFigure(TEV2& scene)
{
    scene.environment.timeRange = {0.0f, 1.0f};
    AddNodes(scene, 14, 12);
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes[7].scale = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1, 1, 1}}, {0.7f, {1, 2, 0.5f}}});
    nodes[4].translation.reset();
    nodes[5].rotation.reset();
    for (const std::size_t bone : {2, 5, 6}) // of constant length; all others stretch
        nodes[bone].translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {0.0f, 0.75f, 0.25f}}});
    nodes[8].rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0f, {0, 0, 0, 1}}});
    AddCamera(scene, u"Wide", 12, 0.5625f);
    AddCamera(scene, u"Tall", 13, 1.5f);
    scene.cameraMan.cameraIndex = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>(
        {{0.0f, 1}, {0.25f, 0}, {0.5f, -1}, {0.625f, 7}, {0.75f, 1}, {0.875f, 1}, {1.0f, 0}});
    AddMeshes(scene);
}

void FillNames(TEV2& scene)
{
    FillSoundScene(scene);
    for (const std::u16string& name : HostileNames())
    {
        AddNode(scene, name, 0).userText = Wide(name);
        TEV2_EXTENDED_PROPERTIES& properties = scene.matrixHierarchy.nodes.back().properties;
        properties.stringArrays.emplace_back().name = Wide(name);
        properties.stringArrays[0].strings = {Wide(name)};
        properties.floatValues.emplace_back().name = Wide(name);
        properties.floatValues[0].track = FloatTrack(0.0f, 1.0f);
        AddCamera(scene, name, 1, 0.5f);
    }
    scene.cameraMan.cameraIndex = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 1}, {0.5f, 3}});
}

/// Whatever a file can get wrong and still loads.
void FillWrong(TEV2& scene)
{
    FillTypedScene(scene);
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes[0].parentIndex = 2; // a circle
    nodes[1].parentIndex = 1;
    AddNode(scene, u"Outside", 4000);
    AddNode(scene, u"NaN", 0).translation =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{kNan, {kNan, kNan, kNan}}, {kNan, {1, 1, 1}}});
    AddNode(scene, u"Huge", 0).translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{0.0f, {3e38f, -3e38f, 0}}, {1.0f, {-3e38f, 3e38f, INFINITY}}});
    AddNode(scene, u"Backwards", 0).rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
        {{1.0f, {5, 5, 5, 5}}, {0.5f, {0, 0, 0, 0}}, {0.5f, {-1, 0, 0, 0}}});
    AddNode(scene, u"Uneven", 0).translation = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
    nodes.back().translation->m_times = {0.0f, 0.5f, 1.0f};
    for (const auto node : {kNone, std::uint32_t{4000}})
    {
        TEV2_CAMERA& camera = AddCamera(scene, u"Lost", node, kNan);
        camera.fieldOfView = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, kNan}});
        camera.clipRange = MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({{0.0f, {-1.0f, kNan}}});
    }
    scene.cameraMan.cameraIndex = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 1}, {0.5f, 2}, {0.7f, -9}});
    scene.environment.timeRange = {1.0f, -INFINITY};
    scene.weightedMeshes[0]->skin->bones = {4000, kNone};
    scene.weightedMeshes[0]->subObjects[0].material = 4000;
    scene.rigids[0]->value = 4000;
    scene.rigids[0]->vertices->positions[0] = {kNan, INFINITY, 3e38f};
    scene.animMeshes[0]->vertices->tracks[0].position->m_times.clear();
    for (auto& instance : scene.instanceLists[5])
        instance->value = 4000;
    auto& corners = dynamic_cast<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS&>(*scene.instanceLists[5][1]);
    corners.subObjects[0].triangles = {{0, 1, 4000}};
    scene.instanceLists[5].push_back(std::make_unique<TEV2_GEOM_INSTANCE>());
    scene.instanceLists[5][2]->source = 4000;
}

void Save(const std::string& folder, const char* name, void (*fill)(TEV2&))
{
    TEV2 scene;
    fill(scene);
    if (const Status saved = SaveFile(scene, folder + '/' + name); !saved)
    {
        std::fprintf(stderr, "%s: %s\n", name, saved.Reason().c_str());
        std::exit(1);
    }
}

void Make(const std::string& folder)
{
    Save(folder, "figure.tv2", FillFigure);
    Save(folder, "typed.tv2", FillTypedScene);
    Save(folder, "names.tv2", FillNames);
    Save(folder, "wrong.tv2", FillWrong);
    Save(folder, "crowd.tv2",
         [](TEV2& scene)
         {
             scene.environment.timeRange = {0.0f, 24.0f};
             AddNodes(scene, 1000, 300);
         });
}

nlohmann::json Numbers(const std::vector<TEV2_VECTOR_3>& vectors)
{
    nlohmann::json list = nlohmann::json::array();
    for (const TEV2_VECTOR_3& vector : vectors)
        list.insert(list.end(), {vector.x, vector.y, vector.z});
    return list;
}

/// In the page's order: rigid, anim, morph and weighted meshes.
int PrintVertices(const std::string& path, float time)
{
    TEV2 scene;
    if (!LoadFile(path, scene))
        return 1;
    scene.SetTime(time);
    nlohmann::json meshes = nlohmann::json::array();
    const auto add = [&](const auto& mesh, const auto& evaluate)
    {
        std::vector<TEV2_VECTOR_3> positions = mesh.vertices->positions;
        std::vector<TEV2_VECTOR_3> normals = mesh.vertices->normals;
        evaluate(mesh, VerticesOut{.positions = positions, .normals = normals});
        meshes.push_back({{"positions", Numbers(positions)}, {"normals", Numbers(normals)}});
    };
    const auto keep = [](const auto&, const VerticesOut&) {};
    for (const auto& mesh : scene.rigids)
        add(std::as_const(*mesh), keep);
    for (const auto& mesh : scene.animMeshes)
        add(std::as_const(*mesh), keep);
    for (const auto& mesh : scene.morphMeshes)
        add(std::as_const(*mesh),
            [](const auto& posed, const VerticesOut& out) { MorphVertices(posed, out); });
    for (const auto& mesh : scene.weightedMeshes)
        add(std::as_const(*mesh),
            [](const auto& posed, const VerticesOut& out) { SkinVertices(posed, out); });
    std::printf("%s\n", meshes.dump().c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string what = argc > 2 ? argv[1] : "";
    if (what == "make")
        Make(argv[2]);
    else if (what == "vertices" && argc == 4)
        return PrintVertices(argv[2], std::strtof(argv[3], nullptr));
    else
        return 2;
    return 0;
}
