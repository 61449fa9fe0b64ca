#include "tests/support/sample_scenes.h"
#include "tests/tev2_loader/plain_evaluation.h"

#include <functional>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

constexpr TEV2_MATRIX_3X4 kIdentity;

/// Three moving nodes in a chain, the second one mirroring, and a mesh with bones in another order: the last one, one
/// beyond the nodes, the first, the second.
void FillSkinned(TEV2& scene)
{
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes.resize(3);
    for (std::size_t node = 0; node < 3; ++node)
    {
        const auto n = static_cast<float>(node);
        nodes[node].parentIndex = static_cast<std::int32_t>(node) - 1;
        nodes[node].translation =
            MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {n, 1.0f, 0.5f}}, {4.0f, {n, -3.0f, 2.0f}}});
        nodes[node].rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
            {{0.0f, {0.6f, 0.0f, 0.0f, 0.8f}}, {4.0f, {0.0f, 0.8f, 0.0f, 0.6f}}});
    }
    nodes[1].scale = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {-2.0f, 1.0f, 0.5f}}});
    scene.matrixHierarchy.LinkParents();
    scene.environment.timeRange = {1.0f, 3.0f};
    TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    mesh.skin->bones = {2, 3, 0, 1};
}

void AddBindMatrices(TEV2& scene)
{
    for (int bone = 0; bone < 4; ++bone)
    {
        const auto b = static_cast<float>(bone);
        scene.weightedMeshes[0]->skin->bindMatrices.push_back(
            {{{1.0f, b, 0.0f, 0.25f}, {0.0f, -1.0f, 0.5f, b}, {b, 0.0f, 2.0f, -1.0f}}});
    }
}

/// What the palette has to be as the tracks stand. `bind_of` gives the bind matrix of a bone and its node.
std::vector<TEV2_MATRIX_3X4>
Expected(const TEV2& scene, const std::function<TEV2_MATRIX_3X4(std::size_t, std::uint32_t)>& bind_of)
{
    std::vector<TEV2_MATRIX_3X4> worlds;
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        const TEV2_MATRIX_3X4 local = plain::LocalMatrix(node);
        worlds.push_back(worlds.empty() ? local : plain::Product(worlds.back(), local));
    }
    std::vector<TEV2_MATRIX_3X4> palette;
    for (const std::uint32_t bone : std::as_const(*scene.weightedMeshes[0]).skin->bones)
    {
        palette.push_back(bone < worlds.size() ? plain::Product(worlds[bone], bind_of(palette.size(), bone))
                                               : kIdentity);
    }
    return palette;
}

std::vector<float> Numbers(const std::vector<TEV2_MATRIX_3X4>& matrices)
{
    std::vector<float> numbers;
    for (const TEV2_MATRIX_3X4& matrix : matrices)
        for (const auto& row : matrix.m)
            numbers.insert(numbers.end(), std::begin(row), std::end(row));
    return numbers;
}

std::vector<float> Palette(const TEV2& scene)
{
    return Numbers(std::as_const(*scene.weightedMeshes[0]).skin->palette);
}

std::unique_ptr<LoadOutcome> LoadedFrom(const TEV2& scene, bool apply_start_time)
{
    auto loaded = LoadImageOf(SceneImage(scene), apply_start_time);
    EXPECT_TRUE(loaded->loaded);
    EXPECT_FALSE(loaded->scene.HasKeptBodies());
    return loaded;
}

TEST(Palettes, AreFormedOfOwnBindMatrices)
{
    TEV2 scene;
    FillSkinned(scene);
    AddBindMatrices(scene);
    const auto loaded = LoadedFrom(scene, true);
    for (TEV2* const played : {&scene, &loaded->scene})
    {
        const auto expected = [played]
        {
            return Numbers(Expected(*played, [played](std::size_t bone, std::uint32_t)
                                    { return played->weightedMeshes[0]->skin->bindMatrices[bone]; }));
        };
        if (played != &scene)
        {
            EXPECT_EQ(Palette(*played), expected()) << "at the start time";
        }
        for (const float time : {0.0f, 2.5f, 9.0f})
        {
            played->SetTime(time);
            EXPECT_EQ(Palette(*played), expected()) << time;
        }
        played->SetTime(1.0f);
        played->Update(0.75f);
        EXPECT_EQ(Palette(*played), expected());
    }
}

TEST(Palettes, AreFormedOfTheRootsTableOtherwise)
{
    TEV2 scene;
    FillSkinned(scene);
    const auto loaded = LoadedFrom(scene, true);
    const std::vector<TEV2_MATRIX_3X4>& table = loaded->scene.inverseBindMatrices;
    const std::vector<float> at_start = Palette(loaded->scene);
    const std::vector<float> identities = Numbers(std::vector<TEV2_MATRIX_3X4>(4));
    ASSERT_EQ(at_start.size(), identities.size());
    for (std::size_t number = 0; number < at_start.size(); ++number)
        EXPECT_NEAR(at_start[number], identities[number], 1e-5f) << number;
    loaded->scene.SetTime(2.5f);
    const auto from_table = [&table](std::size_t, std::uint32_t node) { return table.at(node); };
    EXPECT_EQ(Palette(loaded->scene), Numbers(Expected(loaded->scene, from_table)));

    // A scene made by a program has no table.
    scene.SetTime(2.5f);
    const auto none = [](std::size_t, std::uint32_t) { return kIdentity; };
    EXPECT_EQ(Palette(scene), Numbers(Expected(scene, none)));
}

TEST(Palettes, HaveTheirSizeAfterALoadAndFollowThatOfTheBones)
{
    TEV2 scene;
    FillSkinned(scene);
    const auto loaded = LoadedFrom(scene, false);
    EXPECT_EQ(Palette(loaded->scene), Numbers(std::vector<TEV2_MATRIX_3X4>(4)))
        << "identities until time is set";
    auto& skin = *loaded->scene.weightedMeshes[0]->skin;
    skin.bones.push_back(0);
    skin.bindMatrices.resize(2); // neither none nor one a bone: as none
    loaded->scene.SetTime(2.5f);
    const std::vector<TEV2_MATRIX_3X4>& table = loaded->scene.inverseBindMatrices;
    const auto from_table = [&table](std::size_t, std::uint32_t node) { return table.at(node); };
    EXPECT_EQ(Palette(loaded->scene), Numbers(Expected(loaded->scene, from_table)));
    EXPECT_EQ(skin.palette.size(), 5u);
}

TEST(Palettes, AreNotThereForKeptMeshes)
{
    TEV2 scene;
    FillSkinned(scene);
    scene.weightedMeshes[0]->Keep({1, 2, 3, 4, 5});
    const auto loaded = LoadImageOf(SceneImage(scene), true);
    ASSERT_TRUE(loaded->loaded);
    loaded->scene.SetTime(2.0f);
    const TEV2_WEIGHTED_MESH& mesh = *loaded->scene.weightedMeshes[0];
    EXPECT_FALSE(mesh.IsTyped());
    EXPECT_TRUE(mesh.skin.Empty());
}

} // namespace
