#include "exporter/sampling/key_reduction.h"
#include "exporter/sampling/sampled_track.h"
#include "tests/exporter/export_fixture.h"

#include <cmath>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;
using mobu_host::LocalTransform;

using Skeleton = ExportTest;

FBModel* Placed(const char* name, FBModel* parent, FBVector3d translation,
                FBVector3d rotation = FBVector3d(0, 0, 0))
{
    FBModel* model = mobu_host::AddModel(name, parent);
    model->Translation = translation;
    model->Rotation = rotation;
    return model;
}

TEST_F(Skeleton, KeepsTheSceneRootStill)
{
    OneTake(1.0);
    Placed("Box", nullptr, FBVector3d(100, 0, 50));
    const auto scene = Export();
    ASSERT_EQ(scene->matrixHierarchy.nodes.size(), 2u);
    const TEV2_MATRIX_NODE& root = scene->matrixHierarchy.nodes[0];
    EXPECT_EQ(Text(root.name), "Scene");
    EXPECT_EQ(root.parentIndex, -1);
    ASSERT_EQ(Translation(root).m_values.size(), 1u);
    ExpectVector(Translation(root).m_values[0], 0, 0, 0, 0.0f);
    ExpectQuaternion(Rotation(root).m_values[0], 0, 0, 0, 1);
    // Relative to the converted scene root, whose second and third axis stand exchanged.
    ExpectVector(Translation(scene->matrixHierarchy.nodes[1]).m_values[0], 1.0f, 0.5f, 0.0f);
    EXPECT_EQ(scene->matrixHierarchy.nodes[1].scale, nullptr);
}

TEST_F(Skeleton, HangsSelectedModelsBelowAnInsertedRoot)
{
    OneTake(1.0);
    FBModel* parent = Placed("Away", nullptr, FBVector3d(0, 10, 0));
    FBModel* model = Placed("Model", parent, FBVector3d(100, 0, 50));
    Placed("First", model, FBVector3d(0, 20, 0));
    Placed("Second", model, FBVector3d(0, 0, 30));
    model->Selected = true;
    const auto scene = Export();
    const auto& nodes = scene->matrixHierarchy.nodes;
    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(Text(nodes[0].name), "Exporter Inserted Root");
    EXPECT_EQ(Translation(nodes[0]).m_times, (std::vector<float>{0.0f}));
    ExpectVector(Translation(nodes[0]).m_values[0], 0, 0, 0, 0.0f);
    ExpectQuaternion(Rotation(nodes[0]).m_values[0], 0, 0, 0, 1);
    EXPECT_EQ(nodes[1].parentIndex, 0);
    ExpectVector(Translation(nodes[1]).m_values[0], 1.0f, 0.1f, -0.5f); // global, in metres, Z mirrored
    EXPECT_EQ(nodes[2].parentIndex, 1);
    EXPECT_EQ(nodes[3].parentIndex, 1);
    // The parent's converted axes are X, Z, Y of the model.
    ExpectVector(Translation(nodes[2]).m_values[0], 0, 0, 0.2f);
    ExpectVector(Translation(nodes[3]).m_values[0], 0, 0.3f, 0);
    ExpectQuaternion(Rotation(nodes[2]).m_values[0], 0, 0, 0, 1);
}

TEST_F(Skeleton, TurnsNodeZeroForPositiveZ)
{
    OneTake(1.0);
    Placed("Model", nullptr, FBVector3d(100, 0, 50))->Selected = true;
    options_.KeepPositiveZ = 1;
    const auto scene = Export();
    const TEV2_MATRIX_NODE& root = scene->matrixHierarchy.nodes[0];
    ASSERT_EQ(Rotation(root).m_values.size(), 1u);
    ExpectQuaternion(Rotation(root).m_values[0], 0, 1, 0, 0);
    const TEV2_VECTOR_3 zero = Translation(root).m_values[0];
    EXPECT_TRUE(zero.x == 0.0f && std::signbit(zero.x) && zero.z == 0.0f && std::signbit(zero.z));
    // The other nodes keep their keys; the world turns with node 0.
    ExpectVector(Translation(scene->matrixHierarchy.nodes[1]).m_values[0], 1.0f, 0, -0.5f);
    scene->matrixHierarchy.SetTime(0.0f);
    const TEV2_MATRIX_3X4& world = scene->matrixHierarchy.nodes[1].worldMatrix;
    ExpectVector({world.m[0][3], world.m[1][3], world.m[2][3]}, -1.0f, 0, 0.5f);
}

TEST_F(Skeleton, RemovesNamespacesFromNodesOnly)
{
    OneTake(1.0);
    for (const char* name : {"ns1:ns2:Hips", "Hips", "ns:"})
        mobu_host::AddModel(name);
    mobu_host::AddCamera("ns:Cam");
    for (const bool remove : {true, false})
    {
        options_.RemoveNamespaceFromNames = remove;
        const auto scene = Export();
        const auto& nodes = scene->matrixHierarchy.nodes;
        EXPECT_EQ(Text(nodes[1].name), remove ? "Hips" : "ns1:ns2:Hips");
        EXPECT_EQ(Text(nodes[2].name), "Hips");
        EXPECT_EQ(Text(nodes[3].name), "ns:");
        EXPECT_EQ(Text(nodes[4].name), remove ? "Cam" : "ns:Cam");
        EXPECT_EQ(Text(scene->cameras[0]->name), "Cam"); // its short name, in either case
    }
}

TEST_F(Skeleton, KeepsOneKeyOfWhatDoesNotMove)
{
    FBTake& take = OneTake(1.0);
    FBModel* still = Placed("Still", nullptr, FBVector3d(1, 2, 3), FBVector3d(10, 20, 30));
    FBModel* turning = Placed("Turning", still, FBVector3d(0, 0, 0));
    mobu_host::AnimateTransform(
        *turning, take,
        [](double seconds) {
            return LocalTransform{FBVector3d(0, 5, 0), FBVector3d(0, 0, 400.0 * seconds)};
        });
    const auto scene = Export();
    const auto& nodes = scene->matrixHierarchy.nodes;
    EXPECT_EQ(Translation(nodes[1]).m_times.size(), 1u);
    EXPECT_EQ(Rotation(nodes[1]).m_times.size(), 1u);
    EXPECT_EQ(Translation(nodes[2]).m_times.size(), 1u);
    const auto& keys = Rotation(nodes[2]).m_values;
    ASSERT_EQ(keys.size(), 5u);
    // More than a turn and a half: every key lies on the hemisphere of the one before.
    for (std::size_t i = 1; i < keys.size(); ++i)
        EXPECT_GT(keys[i].x * keys[i - 1].x + keys[i].y * keys[i - 1].y + keys[i].z * keys[i - 1].z +
                      keys[i].w * keys[i - 1].w,
                  0.0f);
}

TEST_F(Skeleton, DiscardsScaleAndPassesDegenerateAxesOn)
{
    OneTake(1.0);
    FBModel* scaled = Placed("Scaled", nullptr, FBVector3d(0, 0, 0));
    scaled->Scaling = FBVector3d(2, 3, 4);
    Placed("Child", scaled, FBVector3d(10, 10, 10));
    FBModel* flat = Placed("Flat", nullptr, FBVector3d(0, 0, 0));
    flat->Scaling = FBVector3d(1, 0, 1);
    const auto scene = Export();
    const auto& nodes = scene->matrixHierarchy.nodes;
    ExpectQuaternion(Rotation(nodes[1]).m_values[0], 0, 0, 0, 1);
    ExpectVector(Translation(nodes[2]).m_values[0], 0.2f, 0.4f, 0.3f); // where the scaled parent puts it
    EXPECT_TRUE(std::isnan(Rotation(nodes[3]).m_values[0].x));
}

TEST(KeyReduction, ThinsRunsOfConstantValueAlone)
{
    const float nan = std::nanf("");
    const struct
    {
        const char* what;
        std::vector<float> values; // of x, at times 0, 1, 2 ...
        std::vector<float> kept;   // times
    } cases[] = {
        {"one key stays", {5}, {0}},
        {"two equal keys become one", {5, 5}, {0}},
        {"two unequal keys stay", {5, 6}, {0, 1}},
        {"a constant becomes its first key", {5, 5, 5, 5}, {0}},
        {"a straight line keeps every key", {0, 1, 2, 3}, {0, 1, 2, 3}},
        {"a hold keeps its two ends", {0, 0, 0, 1, 1, 1}, {0, 2, 3}},
        {"a run at the end is carried by its first key", {0, 1, 1, 1}, {0, 1}},
        {"within the tolerance", {0, 0.00005f, 0.0f, 0.00005f}, {0}},
        {"slow drift: kept once it left the last", {0, 0.00006f, 0.00012f, 0.00018f, 0.00024f}, {0, 2}},
        {"the last key is compared with the one before it", {0, 0.00006f, 0.00012f}, {0}},
        {"a NaN stays, at the end it goes", {nan, nan, nan}, {0, 1}},
    };
    for (const auto& c : cases)
    {
        TEV2_MATRIX_HIERARCHY hierarchy;
        TEV2_MATRIX_NODE& node = hierarchy.nodes.emplace_back();
        auto& translation = MakeTrack(node.translation, {});
        auto& rotation = MakeTrack(node.rotation, {});
        auto& entry = node.properties.floatValues.emplace_back();
        auto& user = MakeTrack(entry.track, {});
        for (std::size_t i = 0; i < c.values.size(); ++i)
        {
            const float time = static_cast<float>(i);
            translation.Append(time, {1.0f, 2.0f, c.values[i]});
            rotation.Append(time, {c.values[i], 0.0f, 0.0f, 1.0f});
            user.Append(time, c.values[i]);
        }
        ReduceKeys(hierarchy);
        EXPECT_EQ(translation.m_times, c.kept) << c.what;
        EXPECT_EQ(rotation.m_times, c.kept) << c.what;
        EXPECT_EQ(user.m_times, c.kept) << c.what;
        ASSERT_EQ(user.m_values.size(), c.kept.size()) << c.what;
        for (std::size_t i = 0; i < c.kept.size(); ++i)
        {
            const float expected = c.values[static_cast<std::size_t>(c.kept[i])];
            EXPECT_TRUE(user.m_values[i] == expected || std::isnan(expected)) << c.what;
        }
    }
}

TEST(KeyReduction, ComparesIntegersExactlyAndTellsOppositeQuaternionsApart)
{
    TEV2_MATRIX_HIERARCHY hierarchy;
    TEV2_MATRIX_NODE& node = hierarchy.nodes.emplace_back();
    MakeTrack(node.translation, {});
    auto& rotation = MakeTrack(node.rotation, {});
    auto& track = MakeTrack(node.properties.intValues.emplace_back().track, {});
    const std::int32_t values[] = {7, 7, 8, 8, 8, 7};
    for (int i = 0; i < 6; ++i)
    {
        track.Append(static_cast<float>(i), values[i]);
        rotation.Append(static_cast<float>(i), {0.0f, 0.0f, 0.0f, i % 2 ? 1.0f : -1.0f});
    }
    ReduceKeys(hierarchy);
    EXPECT_EQ(track.m_times, (std::vector<float>{0, 1, 2, 4, 5}));
    EXPECT_EQ(track.m_values, (std::vector<std::int32_t>{7, 7, 8, 8, 7}));
    EXPECT_EQ(rotation.m_times.size(), 6u);
}

} // namespace
} // namespace tev2_exporter
