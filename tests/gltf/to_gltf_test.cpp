#include "gltf/convert/to_gltf.h"

#include "tests/gltf/converted.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/document_poses.h"
#include "tests/support/sample_records.h"
#include "tests/support/sample_scenes.h"
#include "tev2_loader/names.h"
#include "tev2_loader/skinning.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <limits>
#include <numbers>

namespace
{

using namespace TEV2_LOADER;
using namespace tev2_gltf;
using namespace tv2_tests;
using gltf::Json;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using Places = TEV2_ANIMATABLE_VECTOR_3_LINEAR;
using Turns = TEV2_ANIMATABLE_QUATERNION_SLERP;
using Floats = TEV2_ANIMATABLE_FLOAT32_LINEAR;

TEV2_QUATERNION About(float x, float y, float z, double degrees)
{
    const double half = degrees * std::numbers::pi / 360.0;
    const auto sine = static_cast<float>(std::sin(half));
    return {x * sine, y * sine, z * sine, static_cast<float>(std::cos(half))};
}

TEV2_MATRIX_NODE& AddNode(TEV2& scene, const char* name, std::int32_t parent)
{
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    EXPECT_TRUE(SetName(node, name));
    node.parentIndex = parent;
    scene.matrixHierarchy.LinkParents();
    return node;
}

TEV2_CAMERA& AddCamera(TEV2& scene, const char* name, std::uint32_t node)
{
    TEV2_CAMERA& camera = *scene.cameras.emplace_back(std::make_unique<TEV2_CAMERA>());
    EXPECT_TRUE(SetName(camera, name));
    camera.value = node;
    camera.inverseAspect = 0.5f;
    camera.fieldOfView = ConstantTrack<Floats>(1.0f);
    camera.clipRange = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({0.1f, 100.0f});
    return camera;
}

/// One triangle with normals and one set of texture coordinates.
template <typename Mesh>
Mesh& AddMesh(std::vector<std::unique_ptr<Mesh>>& list, const char* name, std::uint32_t node)
{
    Mesh& mesh = *list.emplace_back(std::make_unique<Mesh>());
    EXPECT_TRUE(SetName(mesh, name));
    mesh.value = node;
    mesh.vertices->positions = {{0, 1, 2}, {3, 4, 5}, {6, 8, 7}};
    mesh.vertices->normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    mesh.vertices->uvs = {{{0.0f, 0.25f}, {1.0f, 0.25f}, {0.0f, 1.0f}}};
    mesh.subObjects.resize(1);
    mesh.subObjects[0].triangles = {{0, 1, 2}};
    return mesh;
}

TEV2_WEIGHTED_MESH& AddSkin(TEV2& scene, const char* name, std::uint32_t node,
                            std::vector<std::uint32_t> bones)
{
    TEV2_WEIGHTED_MESH& mesh = AddMesh(scene.weightedMeshes, name, node);
    mesh.skin->influences = 2;
    mesh.skin->boneIndices = {0, 0, 0, 0, 0, 0};
    mesh.skin->weights = {1, 0, 1, 0, 1, 0};
    mesh.skin->bindMatrices.resize(bones.size());
    mesh.skin->bones = std::move(bones);
    return mesh;
}

TEV2_MORPH_TARGET& AddTarget(std::vector<TEV2_MORPH_TARGET>& targets, const char* name)
{
    TEV2_MORPH_TARGET& target = targets.emplace_back();
    EXPECT_TRUE(SetName(target, name));
    target.offsets.vertices = {2};
    target.offsets.positions = {{1, 2, 3}};
    return target;
}

/// What a conversion gave.
struct Made
{
    Status status;
    ConversionReport report;
    Json json;
    std::string glb;

    std::vector<std::string> Codes() const
    {
        std::vector<std::string> codes;
        for (const ReportEntry& entry : report.Entries())
            codes.emplace_back(NameOf(entry.code));
        codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
        return codes;
    }
};

Made Convert(const std::vector<GltfSource>& sources, const ToGltfOptions& options = {.world = World::YUp},
             std::size_t most_bytes = gltf::DocumentBuilder::kMostBytes)
{
    Made made;
    gltf::DocumentBuilder builder(most_bytes);
    made.status = ToGltf(sources, options, builder, made.report);
    if (!made.status)
        return made;
    made.glb = builder.Glb();
    made.json = builder.Root();
    return made;
}

Made Convert(const TEV2& scene, const ToGltfOptions& options = {.world = World::YUp})
{
    return Convert(std::vector<GltfSource>{{scene, "walk"}}, options);
}

/// A chain with a moving root, an arm that turns the long way round and has a scale, a camera, a light and a prop.
void FillChain(TEV2& scene, float start)
{
    scene.environment.timeRange = {start, start + 2.0f};
    TEV2_MATRIX_NODE& root = AddNode(scene, "Root", -1);
    root.translation = MakeTrack<Places>({{start, {1, 2, 3}}, {start + 2.0f, {4, 6, 9}}});
    root.rotation = MakeTrack<Turns>({{start, About(0, 1, 0, 10)}, {start + 1.0f, About(0, 1, 0, 80)}});
    TEV2_MATRIX_NODE& arm = AddNode(scene, "Arm", 0);
    arm.translation = ConstantTrack<Places>({0.5f, 0, 0.25f});
    arm.rotation = MakeTrack<Turns>({{start, About(1, 0, 0, 0)}, {start + 2.0f, About(1, 0, 0, 300)}});
    arm.scale = MakeTrack<Places>({{start, {1, 2, 3}}, {start + 1.5f, {2, 2, 0.5f}}});
    AddNode(scene, "Eye", 1).rotation = ConstantTrack<Turns>(About(0.6f, 0, 0.8f, 40));
    AddNode(scene, "Lamp", 1).rotation = ConstantTrack<Turns>(About(0, 0.6f, 0.8f, 70));
    TEV2_MATRIX_NODE& prop = AddNode(scene, "Prop", 2);
    prop.translation = MakeTrack<Places>({{start + 0.125f, {1, 0, 0}}, {start + 0.875f, {0, 1, 0}}});
    AddNode(scene, "Below Lamp", 3).translation = ConstantTrack<Places>({1, 2, 3});
    AddNode(scene, "Top Camera", -1).translation = ConstantTrack<Places>({7, 8, 9});
    AddCamera(scene, "Eye", 2);
    AddCamera(scene, "Top", 6);
    scene.lights.push_back(std::make_unique<TEV2_POINT_LIGHT>());
    scene.lights[0]->value = 3;
}

TEST(ToGltf, PosesAtEveryKeyAreThoseOfSetTime)
{
    const struct
    {
        World world;
        PoseMatrix matrix; // from the world of the file
    } worlds[] = {
        {World::YUp, kNegatedZ},
        {World::YUpTurned, kNegatedZ * kHalfTurnAboutY},
        {World::ZUp, kSwappedYZ},
        {World::ZUpTurned, kSwappedYZ * kHalfTurnAboutY},
    };
    for (const auto& c : worlds)
    {
        for (const float start : {0.0f, 1.5f, -1.25f})
        {
            TEV2 scene;
            FillChain(scene, start);
            const Made made = Convert(scene, {.world = c.world});
            ASSERT_TRUE(made.status);
            const double shift = start < 0.0f ? 1.25 : 0.0; // glTF has no times below 0
            const PoseDifference worst = DifferenceAtKeys(DocumentPoses(made.glb), scene, c.matrix, shift);
            EXPECT_GE(worst.poses, 7u * 6u);
            EXPECT_LT(worst.metres, 1e-5) << NameOf(c.world);
            EXPECT_LT(worst.axes, 1e-5) << NameOf(c.world);
        }
    }
}

TEST(ToGltf, PlaysBetweenKeysAlongTheLongArcs)
{
    TEV2 scene;
    FillChain(scene, 0.0f);
    const Made made = Convert(scene);
    const DocumentPoses poses(made.glb);
    for (float time = 0.0f; time <= 2.0f; time += 0.0625f)
    {
        scene.SetTime(time);
        const TEV2_QUATERNION turn = scene.matrixHierarchy.nodes[1].rotation->GetValue();
        const double angle = 300.0 * static_cast<double>(time) / 2.0;
        EXPECT_NEAR(std::abs(static_cast<double>(turn.w)),
                    std::abs(std::cos(angle * std::numbers::pi / 360.0)), 1e-5);
    }
    // Both keys of the arm are less than half a turn apart the other way round.
    EXPECT_EQ(DifferenceAtKeys(poses, scene, kNegatedZ).metres < 1e-5, true);
    std::size_t keys = 0;
    for (const Json& channel : made.json["animations"][0]["channels"])
        if (channel["target"]["node"] == 1 && channel["target"]["path"] == "rotation")
            keys = made.json["accessors"][made.json["animations"][0]["samplers"]
                                                   [channel["sampler"].get<std::size_t>()]["input"]
                                                       .get<std::size_t>()]["count"];
    EXPECT_EQ(keys, 5u);
}

TEST(ToGltf, AnimationLastsAsLongAsTheScene)
{
    TEV2 scene;
    AddNode(scene, "Root", -1).translation = MakeTrack<Places>({{0.5f, {0, 0, 0}}, {1.0f, {1, 0, 0}}});
    scene.environment.timeRange = {0.25f, 4.0f};
    const Made made = Convert(scene);
    const Json& input =
        made.json["accessors"][made.json["animations"][0]["samplers"][0]["input"].get<std::size_t>()];
    EXPECT_EQ(input["min"], Json({0.25}));
    EXPECT_EQ(input["max"], Json({4.0}));
    EXPECT_EQ(made.json["animations"][0]["name"], "walk");

    scene.matrixHierarchy.nodes[0].translation = ConstantTrack<Places>({1, 2, 3}); // also where nothing moves
    const auto back = FromDocument(Convert(scene).glb);
    EXPECT_EQ(back.scenes[0]->environment.timeRange.maximum, 4.0f);
    EXPECT_EQ(back.scenes[0]->matrixHierarchy.nodes[0].translation->GetValue(), (TEV2_VECTOR_3{1, 2, 3}));
    scene.environment.timeRange = {0.0f, 0.0f};
    EXPECT_FALSE(Convert(scene).json.contains("animations"));
}

TEST(ToGltf, SkinnedMeshesComeBackToTheirNodes)
{
    constexpr std::uint32_t kWorld = 0xFFFFFFFF;
    TEV2 scene;
    FillChain(scene, 0.0f);
    const std::uint32_t nodes[] = {4, 2, kWorld};
    for (const std::uint32_t node : nodes)
    {
        TEV2_WEIGHTED_MESH& mesh = AddSkin(scene, "Body", node, {0, 1});
        AddTarget(mesh.targets, "Smile").track = MakeTrack<Floats>({{0.0f, 0.0f}, {1.0f, 0.5f}});
    }
    auto& instance = *scene.instanceLists[6].emplace_back(std::make_unique<TEV2_GEOM_INSTANCE>());
    instance.source = 0;
    instance.value = 5;
    AddTarget(AddMesh(scene.morphMeshes, "Resting", 1).targets, "Smile").track = ConstantTrack<Floats>(0.0f);
    AddTarget(AddMesh(scene.morphMeshes, "Plain", 5).targets, "Smile");
    const Made made = Convert(scene);
    const std::size_t count = scene.matrixHierarchy.nodes.size();
    ASSERT_EQ(made.json["nodes"].size(), count + 4);
    const FromDocument back(made.glb);
    const TEV2& result = *back.scenes[0];
    EXPECT_EQ(result.matrixHierarchy.nodes.size(), count);
    ASSERT_EQ(result.weightedMeshes.size() + result.instanceLists[6].size(), 4u);
    for (std::size_t i = 0; i < result.weightedMeshes.size(); ++i)
        EXPECT_EQ(result.weightedMeshes[i]->targets[0].track->m_times.size(), 2u);
    std::multiset<std::uint32_t> owners;
    for (const auto& mesh : result.weightedMeshes)
        owners.insert(mesh->value);
    for (const auto& each : result.instanceLists[6])
        owners.insert(each->value);
    EXPECT_EQ(owners, (std::multiset<std::uint32_t>{2, 4, 5, kWorld}));
    EXPECT_EQ(CodesOf(back.report), std::set<std::string>{});
    // Weights that rest at 0 have a track where they had one.
    EXPECT_EQ(result.morphMeshes[0]->targets[0].track->m_times.size(), 1u);
    EXPECT_EQ(result.morphMeshes[1]->targets[0].track, nullptr);

    // A node that its mark does not fit any more, or that something else uses, stays.
    const std::function<void(tv2_tests::Json&)> changes[] = {
        [&](tv2_tests::Json& json) { json["nodes"][4]["name"] = "Other"; },
        [&](tv2_tests::Json& json) { json["nodes"][count]["extras"]["more"] = 1; },
        [&](tv2_tests::Json& json) { json["nodes"][count]["camera"] = 0; },
        [&](tv2_tests::Json& json) { json["nodes"][count]["extras"]["skinnedMeshOf"]["node"] = 1e9; },
        [&](tv2_tests::Json& json) { json["skins"][0]["joints"][0] = count; },
    };
    for (const auto& change : changes)
    {
        RawGltf spoiled(made.glb);
        change(spoiled.root);
        EXPECT_EQ(FromDocument(spoiled.Glb()).scenes[0]->matrixHierarchy.nodes.size(), count + 1);
    }
}

TEST(ToGltf, PoseAtATimeHasNoAnimation)
{
    TEV2 scene;
    FillChain(scene, 0.0f);
    const Made made = Convert(scene, {.world = World::YUp, .at = 1.0f});
    EXPECT_FALSE(made.json.contains("animations"));
    scene.SetTime(1.0f);
    EXPECT_EQ(made.json["nodes"][0]["translation"], Json({2.5, 4.0, -6.0})); // half way, z negated

    auto& speed = scene.matrixHierarchy.nodes[0].properties.floatValues.emplace_back();
    ASSERT_TRUE(SetName(speed, "speed"));
    speed.track = MakeTrack<Floats>({{0.0f, 2.0f}, {2.0f, 8.0f}});
    const Made later = Convert(scene, {.world = World::YUp, .at = 1.0f});
    EXPECT_EQ(later.json["nodes"][0]["extras"]["speed"], 5.0);
    EXPECT_EQ(later.Codes(), std::vector<std::string>{});
    EXPECT_EQ(Convert(scene).json["nodes"][0]["extras"]["speed"], 2.0);
}

TEST(ToGltf, SeveralScenesAreAnAnimationEachAndMustFit)
{
    TEV2 walk, run, other;
    FillChain(walk, 0.0f);
    FillChain(run, 0.0f);
    FillChain(other, 0.0f);
    run.matrixHierarchy.nodes[4].translation = ConstantTrack<Places>({5, 5, 5});
    const Made made = Convert({{walk, "walk"}, {run, "run"}});
    ASSERT_TRUE(made.status);
    ASSERT_EQ(made.json["animations"].size(), 2u);
    EXPECT_LT(DifferenceAtKeys(DocumentPoses(made.glb, 1), run, kNegatedZ).metres, 1e-5);
    ASSERT_TRUE(SetName(other.matrixHierarchy.nodes[4], "Hat"));
    EXPECT_EQ(Convert({{walk, "walk"}, {other, "other"}}).status.Reason(),
              "the hierarchies differ: node \"Prop\" in walk is \"Hat\" in other");
    other.matrixHierarchy.nodes.resize(4);
    EXPECT_EQ(Convert({{walk, "walk"}, {other, "other"}}).status.Reason(),
              "the hierarchies differ: node \"Prop\" is not in other");
}

TEST(ToGltf, CamerasHaveTheVerticalAngleAndTheSwitcherComesAlong)
{
    TEV2 scene;
    FillChain(scene, 0.0f);
    scene.cameraMan.cameraIndex =
        MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 0}, {0.5f, 0}, {1.0f, 1}, {1.5f, -1}});
    const Made made = Convert(scene);
    const Json& lens = made.json["cameras"][0]["perspective"];
    EXPECT_NEAR(lens["yfov"].get<double>(), 2.0 * std::atan(0.5 * std::tan(0.5)), 1e-6);
    EXPECT_EQ(lens["aspectRatio"], 2.0);
    EXPECT_EQ(lens["zfar"], 100.0);
    const Json& cuts = made.json["scenes"][0]["extras"]["cameraSwitcher"][0];
    EXPECT_EQ(cuts["animation"], "walk");
    EXPECT_EQ(cuts["times"], Json({0.0, 1.0, 1.5}));
    EXPECT_EQ(cuts["cameras"], Json({"Eye", "Top", ""}));
    const std::size_t follower = made.json["nodes"].size() - 1;
    EXPECT_EQ(made.json["nodes"][follower]["name"], "Camera Switcher");
    EXPECT_EQ(made.json["cameras"][made.json["nodes"][follower]["camera"].get<std::size_t>()]["perspective"],
              lens);
    const DocumentPoses poses(made.glb);
    const auto expect_at = [&](double time, std::size_t camera)
    {
        const PoseMatrix found = poses.WorldAt(follower, time);
        const PoseMatrix expected = poses.WorldAt(camera, time);
        for (std::size_t row = 0; row < 3; ++row)
        {
            EXPECT_NEAR(found[row][3], expected[row][3], 1e-3) << time;
            EXPECT_NEAR(found[row][2],
                        expected[row][2] / std::hypot(expected[0][2], expected[1][2], expected[2][2]),
                        1e-3)
                << time; // the direction of view, without the scale of the arm
        }
    };
    for (const double time : {0.0, 0.3, 0.5, 0.875, 0.999999})
        expect_at(time, 2);
    for (const double time : {1.0, 1.25, 2.0})
        expect_at(time, 6);
}

/// The most bytes at one time for converting as many cameras as nodes, each camera below all nodes.
std::size_t PeakForCamerasBelowAChain(std::int32_t size)
{
    TEV2 scene;
    auto cuts = std::make_unique<TEV2_ANIMATABLE_INT32_RLE>();
    scene.matrixHierarchy.nodes.resize(static_cast<std::size_t>(size));
    for (std::int32_t i = 0; i < size; ++i)
    {
        TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes[static_cast<std::size_t>(i)];
        node.parentIndex = i - 1;
        node.translation = ConstantTrack<Places>({1.0f, 0.0f, 0.0f});
        scene.cameras.push_back(std::make_unique<TEV2_CAMERA>());
        scene.cameras.back()->value = static_cast<std::uint32_t>(size - 1);
        cuts->Append(static_cast<float>(i), i);
    }
    scene.cameraMan.cameraIndex = std::move(cuts);
    const tv2_tests::AllocationPeak peak;
    EXPECT_TRUE(Convert(scene).status);
    return peak.Bytes();
}

TEST(ToGltf, MemoryGrowsWithCamerasPlusNodesAndNotWithTheirProduct)
{
    EXPECT_LE(PeakForCamerasBelowAChain(300), PeakForCamerasBelowAChain(150) * 23 / 10);
}

/// Ticks of the processor for converting a node with this many properties.
std::clock_t TimeForProperties(int count)
{
    TEV2 scene;
    auto& values = scene.matrixHierarchy.nodes.emplace_back().properties.intValues;
    for (int i = 0; i < count; ++i)
    {
        auto& value = values.emplace_back();
        value.name = TEV2_WIDE_STRING::FromBytes("p" + std::to_string(i));
        value.track = ConstantTrack<TEV2_ANIMATABLE_INT32_RLE>(i);
    }
    const std::clock_t begin = std::clock();
    EXPECT_TRUE(Convert(scene).status);
    return std::clock() - begin;
}

TEST(ToGltf, TimeGrowsWithPropertiesAndNotWithTheirSquare)
{
    EXPECT_LT(TimeForProperties(40'000), 24 * TimeForProperties(5'000)); // the square: 64 times
}

TEST(ToGltf, MeshesKeepTheirVerticesAndFronts)
{
    TEV2 scene;
    AddNode(scene, "Root", -1);
    TEV2_RIGID& box = AddMesh(scene.rigids, "Box", 0);
    box.vertices->frames.assign(3, {{0, -1, 0}, {1, 0, 0}});
    const Made made = Convert(scene);
    ASSERT_EQ(made.Codes(), std::vector<std::string>{});
    const Json& primitive = made.json["meshes"][0]["primitives"][0];
    DocumentPoses document(made.glb);
    const auto read = [&](const Json& accessor) { return *document.Read(accessor.get<std::size_t>()); };
    EXPECT_EQ(read(primitive["attributes"]["POSITION"]), (std::vector<double>{0, 2, 1, 3, 5, 4, 6, 7, 8}));
    EXPECT_EQ(read(primitive["attributes"]["NORMAL"]), (std::vector<double>{0, 1, 0, 0, 1, 0, 0, 1, 0}));
    EXPECT_EQ(read(primitive["indices"]), (std::vector<double>{0, 2, 1}));
    // The tangent is X; cross(Y, X) is -Z, which is where the binormal points in the axes of glTF.
    EXPECT_EQ(read(primitive["attributes"]["TANGENT"])[3], 1.0);
    EXPECT_EQ(made.json["accessors"][primitive["attributes"]["POSITION"].get<std::size_t>()]["max"],
              Json({6.0, 7.0, 8.0}));
}

TEST(ToGltf, SkinsAreAtTopLevelAndFollowTheirBones)
{
    TEV2 scene;
    FillChain(scene, 0.0f);
    TEV2_WEIGHTED_MESH& body = AddSkin(scene, "Body", 4, {0, 1, 0, 99});
    body.skin->boneIndices = {0, 1, 1, 2, 3, 0};
    body.skin->weights = {0.5f, 0.5f, 1.0f, 0.0f, 1.0f, 0.0f};
    body.skin->bindMatrices[1].m[0][3] = 2.0f;
    AddTarget(body.targets, "Smile").track = MakeTrack<Floats>({{0.0f, 0.0f}, {1.0f, 0.5f}});
    const Made made = Convert(scene);
    ASSERT_TRUE(made.status);
    std::size_t node = 0;
    while (!made.json["nodes"][node].contains("skin"))
        ++node;
    for (const char* member : {"translation", "rotation", "scale"})
        EXPECT_FALSE(made.json["nodes"][node].contains(member));
    DocumentPoses document(made.glb);
    const Json& skin = made.json["skins"][0];
    const Json& attributes = made.json["meshes"][0]["primitives"][0]["attributes"];
    const auto read = [&](const Json& accessor) { return *document.Read(accessor.get<std::size_t>()); };
    const auto joints = read(attributes["JOINTS_0"]), weights = read(attributes["WEIGHTS_0"]),
               positions = read(attributes["POSITION"]), binds = read(skin["inverseBindMatrices"]);
    scene.SetTime(1.0f);
    body.targets.clear();
    std::vector<TEV2_VECTOR_3> expected(3);
    SkinVertices(body, {.positions = expected});
    for (std::size_t vertex = 0; vertex < 3; ++vertex)
    {
        std::array<double, 3> sum{};
        for (std::size_t i = vertex * 4; i < vertex * 4 + 4; ++i)
        {
            const auto joint = static_cast<std::size_t>(joints[i]);
            PoseMatrix bind{};
            for (std::size_t row = 0; row < 3; ++row)
                for (std::size_t column = 0; column < 4; ++column)
                    bind[row][column] = binds[joint * 16 + column * 4 + row];
            const PoseMatrix matrix = document.WorldAt(skin["joints"][joint].get<std::size_t>(), 1.0) * bind;
            for (std::size_t row = 0; row < 3; ++row)
                sum[row] += weights[i] * (matrix[row][0] * positions[vertex * 3] +
                                          matrix[row][1] * positions[vertex * 3 + 1] +
                                          matrix[row][2] * positions[vertex * 3 + 2] + matrix[row][3]);
        }
        EXPECT_NEAR(sum[0], static_cast<double>(expected[vertex].x), 1e-4) << vertex;
        EXPECT_NEAR(sum[1], static_cast<double>(expected[vertex].y), 1e-4) << vertex;
        EXPECT_NEAR(sum[2], static_cast<double>(-expected[vertex].z), 1e-4) << vertex;
    }
    EXPECT_EQ(made.json["meshes"][0]["extras"]["targetNames"], Json({"Smile"}));
    const Json& target = made.json["meshes"][0]["primitives"][0]["targets"][0]["POSITION"];
    EXPECT_EQ(read(target), (std::vector<double>{0, 0, 0, 0, 0, 0, 1, 3, 2}));
    EXPECT_EQ(made.Codes(), (std::vector<std::string>{"skin-moved", "node-added"}));
}

TEST(ToGltf, MetallicRoughnessMaterialsComeOneToOne)
{
    TEV2 scene;
    AddNode(scene, "Root", -1);
    AddMesh(scene.rigids, "Box", 0).subObjects[0].material = 0;
    auto& material = static_cast<TEV2_SHADER_MATERIAL&>(
        *scene.materials.emplace_back(std::make_unique<TEV2_SHADER_MATERIAL>()));
    material.shader = TEV2_WIDE_STRING(u"metallic-roughness");
    material.twoSided = true;
    const auto number = [](const char* name, float value)
    {
        TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32> made;
        EXPECT_TRUE(SetName(made, name));
        made.track = ConstantTrack<Floats>(value);
        return made;
    };
    material.floats.push_back(number("metallicFactor", 0.25f));
    material.floats.push_back(number("KHR_materials_clearcoat.clearcoatFactor", 0.5f));
    auto& map = static_cast<TEV2_BITMAP_MATERIAL_MAP&>(
        *material.maps.emplace_back(std::make_unique<TEV2_BITMAP_MATERIAL_MAP>()));
    ASSERT_TRUE(SetName(map, "baseColorTexture"));
    map.params.fileName = TEV2_WIDE_STRING(u"maps/skin 1.png");
    map.coordinates.wrap.u = TEV2_UV_WRAP::Clamp;
    map.coordinates.tiling = ConstantTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>({2.0f, 3.0f});
    const Made made = Convert(scene, {.world = World::YUp, .image_folder = "../scenes/"});
    EXPECT_EQ(made.Codes(), std::vector<std::string>{});
    const Json expected = Json::parse(R"({"pbrMetallicRoughness": {"metallicFactor": 0.25, "baseColorTexture":
        {"index": 0, "extensions": {"KHR_texture_transform": {"scale": [2.0, 3.0]}}}},
        "extensions": {"KHR_materials_clearcoat": {"clearcoatFactor": 0.5}}, "doubleSided": true})");
    EXPECT_EQ(nlohmann::json(made.json["materials"][0]), nlohmann::json(expected));
    EXPECT_EQ(made.json["images"][0]["uri"], "../scenes/maps/skin%201.png");
    EXPECT_EQ(made.json["samplers"][0]["wrapS"], 33071);
    EXPECT_EQ(made.json["extensionsUsed"], Json({"KHR_texture_transform", "KHR_materials_clearcoat"}));
}

/// A sound scene to spoil: a camera, a light, a mesh, a skinned mesh with a target.
void FillToSpoil(TEV2& scene)
{
    FillChain(scene, 0.0f);
    AddMesh(scene.rigids, "Box", 4);
    AddTarget(AddMesh(scene.morphMeshes, "Face", 5).targets, "Smile");
    AddNode(scene, "Body", -1).rotation =
        ConstantTrack<Turns>(About(1, 0, 0, -90)); // none, in the axes of glTF
    AddSkin(scene, "Body", 7, {0, 1});
    scene.materials.push_back(std::make_unique<TEV2_STANDARD_MATERIAL>());
}

struct Spoiled
{
    const char* code;
    std::function<void(TEV2&)> spoil;
};

void ExpectCodes(std::initializer_list<Spoiled> cases)
{
    for (const auto& c : cases)
    {
        TEV2 scene;
        FillToSpoil(scene);
        c.spoil(scene);
        scene.matrixHierarchy.LinkParents();
        const Made made = Convert(scene);
        ASSERT_TRUE(made.status) << c.code;
        const std::vector<std::string> codes = made.Codes();
        EXPECT_NE(std::find(codes.begin(), codes.end(), c.code), codes.end()) << c.code;
        EXPECT_LE(codes.size(), 4u) << c.code; // and hardly anything else
        DocumentPoses(made.glb);               // it can be read
    }
}

TEST(ToGltf, ReportsLossesAndChangesOfNodes)
{
    ExpectCodes({
        {"material-approximated", [](TEV2&) {}},
        {"parent-dropped", [](TEV2& s) { s.matrixHierarchy.nodes[0].parentIndex = 1; }},
        {"value-dropped",
         [](TEV2& s) {
             s.matrixHierarchy.nodes[0].translation = MakeTrack<Places>({{0, {kNaN, 0, 0}}, {1, {1, 1, 1}}});
         }},
        {"key-dropped",
         [](TEV2& s) {
             s.matrixHierarchy.nodes[0].translation = MakeTrack<Places>({{1, {}}, {1, {1, 1, 1}}});
         }},
        {"key-dropped",
         [](TEV2& s) {
             s.matrixHierarchy.nodes[0].translation = MakeTrack<Places>({{0, {}}, {2e6f, {1, 1, 1}}});
         }},
        {"rotation-normalised",
         [](TEV2& s) {
             s.matrixHierarchy.nodes[0].rotation = ConstantTrack<Turns>({0, 0, 0, 2});
         }},
        {"interpolation-changed",
         [](TEV2& s)
         {
             s.matrixHierarchy.nodes[0].rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_LERP>(
                 {{0, About(1, 0, 0, 0)}, {1, About(1, 0, 0, 90)}});
         }},
        // where a camera is
        {"extras-lost", [](TEV2& s) { s.matrixHierarchy.nodes[0].properties.floatValues.resize(1); }},
        {"property-animation-lost",
         [](TEV2& s)
         {
             auto& p = s.matrixHierarchy.nodes[0].properties.floatValues.emplace_back();
             p.track = MakeTrack<Floats>({{0, 1}, {1, 2}});
         }},
        {"name-changed", [](TEV2& s) { s.matrixHierarchy.nodes[0].name = TEV2_WIDE_STRING(u"\xD800"); }},
        {"time-shifted",
         [](TEV2& s) {
             s.matrixHierarchy.nodes[0].translation = MakeTrack<Places>({{-1, {}}, {1, {1, 1, 1}}});
         }},
    });
    TEV2 unknown;
    AddNode(unknown, "Root", -1);
    EXPECT_EQ(Convert(unknown, {}).Codes(), std::vector<std::string>{"world-assumed"});
}

TEST(ToGltf, ReportsLossesAndChangesOfCamerasAndLights)
{
    ExpectCodes({
        {"lens-changed", [](TEV2& s) { s.cameras[0]->inverseAspect = 0.0f; }},
        {"lens-changed", [](TEV2& s) { s.cameras[0]->fieldOfView = ConstantTrack<Floats>(4.0f); }},
        {"lens-changed",
         [](TEV2& s) {
             s.cameras[0]->clipRange = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({1, 1});
         }},
        {"lens-changed",
         [](TEV2& s) {
             s.cameras[0]->clipRange = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({0, 9});
         }},
        {"lens-animation-lost",
         [](TEV2& s) {
             s.cameras[0]->fieldOfView = MakeTrack<Floats>({{0, 1}, {1, 0.5f}});
         }},
        {"camera-reduced", [](TEV2& s) { s.cameras[0]->distance = ConstantTrack<Floats>(1.0f); }},
        {"light-reduced",
         [](TEV2& s) { s.lights[0]->shadow = std::make_unique<TEV2_LIGHT_SHADOW_PARAMS>(); }},
        {"light-approximated", [](TEV2& s) { s.lights[0]->max = std::make_unique<TEV2_MAX_LIGHT_PARAMS>(); }},
        {"animation-lost",
         [](TEV2& s) {
             s.lights[0]->intensity = MakeTrack<Floats>({{0, 1}, {1, 2}});
         }},
        {"value-clamped", [](TEV2& s) { s.lights[0]->intensity = ConstantTrack<Floats>(-1.0f); }},
        {"record-lost", [](TEV2& s) { s.helpers.push_back(std::make_unique<TEV2_HELPER>()); }},
        {"body-lost",
         [](TEV2& s)
         {
             s.helpers.push_back(std::make_unique<TEV2_HELPER>());
             s.helpers[0]->Keep({1, 2, 3});
         }},
        {"node-added", [](TEV2& s) { s.lights[0]->value = 2; }},
        {"shader-lost", [](TEV2& s) { s.materials.push_back(std::make_unique<TEV2_SHADER_MATERIAL>()); }},
    });
}

TEST(ToGltf, ReportsLossesAndChangesOfMeshes)
{
    ExpectCodes({
        {"visibility-lost", [](TEV2& s) { s.rigids[0]->visibility = ConstantTrack<Floats>(0.5f); }},
        {"directions-changed",
         [](TEV2& s) {
             s.rigids[0]->vertices->normals[0] = {0, 0, 2};
         }},
        {"value-dropped", [](TEV2& s) { s.rigids[0]->vertices->positions[0].x = kNaN; }},
        {"value-dropped",
         [](TEV2& s) {
             s.rigids[0]->subObjects[0].triangles.push_back({0, 1, 3});
         }},
        {"value-clamped",
         [](TEV2& s) {
             s.rigids[0]->vertices->colours = {{{2, 0, 0, 1}, {}, {}}};
         }},
        {"attribute-lost",
         [](TEV2& s)
         {
             s.rigids[0]->vertices->normals.clear();
             s.rigids[0]->vertices->frames.resize(3);
         }},
        {"record-lost", [](TEV2& s) { s.rigids[0]->subObjects.clear(); }},
        {"weights-normalised", [](TEV2& s) { s.weightedMeshes[0]->skin->weights[0] = 0.5f; }},
        {"skin-moved", [](TEV2& s) { s.weightedMeshes[0]->value = 4; }},
        {"node-added", [](TEV2& s) { s.rigids[0]->value = 99; }},
        {"vertex-animation-lost",
         [](TEV2& s)
         {
             TEV2_ANIM_MESH& flag = *s.animMeshes.emplace_back(std::make_unique<TEV2_ANIM_MESH>());
             flag.vertices->tracks.resize(3);
             flag.vertices->tracks[0].position = MakeTrack<Places>({{0, {}}, {1, {1, 1, 1}}});
             flag.subObjects.resize(1);
             flag.subObjects[0].triangles = {{0, 1, 2}};
         }},
    });
}

TEST(ToGltf, AsksTheSameFunctionForTheUpAxis)
{
    const struct
    {
        const char16_t* root;
        double turn;
        World world;
    } cases[] = {
        {u"Scene", 0, World::ZUp},
        {u"Scene", 180, World::ZUpTurned},
        {u"Exporter Inserted Root", 0, World::YUp},
        {u"Exporter Inserted Root", 180, World::YUpTurned},
    };
    for (const auto& c : cases)
    {
        TEV2 scene;
        scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
        TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes.emplace_back();
        root.name = TEV2_WIDE_STRING(c.root);
        root.translation = ConstantTrack<Places>({});
        root.rotation = ConstantTrack<Turns>(c.turn == 0 ? TEV2_QUATERNION{} : TEV2_QUATERNION{0, 1, 0, 0});
        EXPECT_EQ(WorldOf(scene), c.world);
    }
    EXPECT_EQ(WorldOf(TEV2()), std::nullopt);
    for (const std::string_view name : {"y-up", "y-up-turned", "z-up", "z-up-turned"})
        EXPECT_EQ(NameOf(FindWorld(name).value()), name);
}

TEST(ToGltf, ConvertsScenesOfEverythingAndOfNothing)
{
    TEV2 empty, everything;
    FillWithEverything(everything, true);
    EXPECT_TRUE(Convert(empty).status);
    const Made made = Convert(everything);
    ASSERT_TRUE(made.status);
    DocumentPoses document(made.glb);
    for (std::size_t i = 0; i < made.json["accessors"].size(); ++i)
        EXPECT_FALSE(document.Read(i)->empty());
    EXPECT_FALSE(Convert({{everything, "a"}}, {}, 1000).status.Reason().empty()); // too large for that
}

} // namespace
