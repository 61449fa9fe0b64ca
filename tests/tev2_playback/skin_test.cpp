#include "tests/support/allocation_watch.h"
#include "tests/support/sample_scenes.h"
#include "tests/tev2_playback/counter.h"
#include "tests/tev2_playback/random_skeleton.h"
#include "tev2_loader/skinning.h"
#include "tev2_playback/player.h"
#include "tev2_playback/root_motion.h"
#include "tev2_playback/skin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

constexpr std::uint32_t kNodes = 31;

/// A file with up in +Z, and two meshes with a bone on every third node and one on none: the first with bind matrices.
std::vector<std::uint8_t> MeshImage()
{
    TEV2 scene;
    scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes.emplace_back();
    root.translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
    root.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({});
    tv2_tests::RandomSkeleton(scene, 5, kNodes - 1, tv2_tests::Oddity::Nodes);
    for (const bool own : {true, false})
    {
        auto mesh = std::make_unique<TEV2_WEIGHTED_MESH>();
        TEV2_SKIN& skin = *mesh->skin;
        for (std::uint32_t node = 0; node < kNodes; node += 3)
            skin.bones.push_back(node);
        skin.bones.push_back(kNodes);
        skin.influences = 2;
        for (std::uint32_t bone = 0; bone < skin.bones.size(); ++bone)
        {
            const auto number = static_cast<float>(bone);
            mesh->vertices->positions.push_back({number, 1.0f - number, 0.5f});
            skin.boneIndices.insert(skin.boneIndices.end(), {bone, 0});
            skin.weights.insert(skin.weights.end(), {0.75f, 0.25f});
            if (own)
                skin.bindMatrices.push_back({{{0, -1, 0.5f, number}, {1, 0, 0.25f, 2}, {-0.5f, 0, 1, -3}}});
        }
        scene.weightedMeshes.push_back(std::move(mesh));
    }
    return tv2_tests::SceneImage(scene);
}

TEST(Skin, FormsThePaletteOfTheScenesSetTime)
{
    const std::vector<std::uint8_t> image = MeshImage();
    for (const float time : {0.0f, 0.3f, 1.25f, 5.0f})
    {
        const auto loaded = tv2_tests::LoadImageOf(image);
        ASSERT_TRUE(loaded->loaded);
        const Clip clip(loaded->scene);
        Player player(clip);
        player.SetTime(time);
        loaded->scene.SetTime(time); // once: nodes before their parents depend on what was there before
        for (const auto& mesh : loaded->scene.weightedMeshes)
        {
            const Skin skin(clip, *mesh, loaded->scene.inverseBindMatrices);
            std::vector<TEV2_MATRIX_3X4> palette(skin.BoneCount());
            skin.FormPalette(player.World(), palette);
            ASSERT_EQ(palette.size(), mesh->skin->palette.size());
            for (std::size_t bone = 0; bone < palette.size(); ++bone)
                for (std::size_t i = 0; i < 12; ++i)
                    EXPECT_EQ(palette[bone].m[i / 4][i % 4], mesh->skin->palette[bone].m[i / 4][i % 4])
                        << "bone " << bone << " at " << time;
        }
    }
}

TEST(Skin, TakesMirroredVerticesToTheRightHandedWorld)
{
    const std::vector<std::uint8_t> image = MeshImage();
    const auto loaded = tv2_tests::LoadImageOf(image);
    ASSERT_TRUE(loaded->loaded);
    const Clip clip(loaded->scene, {.frame = Frame::RightHandedYUp});
    ASSERT_EQ(clip.UpAxis(), TEV2_UP_AXIS::PlusZ);
    Player player(clip);
    player.SetTime(0.7f);
    loaded->scene.SetTime(0.7f);
    for (const auto& mesh : loaded->scene.weightedMeshes)
    {
        const Skin skin(clip, *mesh, loaded->scene.inverseBindMatrices);
        std::vector<TEV2_MATRIX_3X4> palette(skin.BoneCount());
        skin.FormPalette(player.World(), palette);
        std::vector<TEV2_VECTOR_3> vertices = mesh->vertices->positions;
        for (TEV2_VECTOR_3& vertex : vertices)
            vertex.z = -vertex.z;
        SkinVertices({.positions = vertices},
                     {mesh->skin->influences, mesh->skin->boneIndices, mesh->skin->weights, palette},
                     {.positions = vertices});

        std::vector<TEV2_VECTOR_3> stored(vertices.size());
        SkinVertices(*mesh, {.positions = stored});
        for (std::size_t vertex = 0; vertex < vertices.size(); ++vertex)
        {
            // Up from +Z to +Y is (x, z, -y); then z is mirrored.
            const auto& [x, y, z] = stored[vertex];
            const float most = 1e-5f * (1.0f + std::hypot(x, y, z));
            EXPECT_NEAR(vertices[vertex].x, x, most) << vertex;
            EXPECT_NEAR(vertices[vertex].y, z, most) << vertex;
            EXPECT_NEAR(vertices[vertex].z, y, most) << vertex;
        }
    }
}

TEST(Skin, OfAMeshWithoutOneHasNoBones)
{
    const Skin skin(Clip(), TEV2_WEIGHTED_MESH(), {});
    EXPECT_EQ(skin.BoneCount(), 0u);
    skin.FormPalette({}, {});
}

/// What plays is in one piece of the memory given, and in no other.
TEST(Memory, IsTakenWhereItIsGiven)
{
    const auto loaded = tv2_tests::LoadImageOf(MeshImage());
    ASSERT_TRUE(loaded->loaded);
    const TEV2& scene = loaded->scene;
    tv2_tests::Counter of_clip;
    {
        const Clip clip(scene, {.memory = &of_clip, .frame = Frame::RightHandedYUp});
        EXPECT_EQ(of_clip.taken, 1);
        const TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes[0];
        tv2_tests::Counter of_skin;
        tv2_tests::Counter of_motion;
        const long before = tv2_tests::AllocationCount(); // not those with an alignment, by counters
        {
            const Skin skin(clip, mesh, scene.inverseBindMatrices, &of_skin);
            const RootMotion motion(clip, 0, &of_motion);
            EXPECT_EQ(of_motion.pieces, 0);
            EXPECT_EQ(of_skin.pieces, 1);
        }
        EXPECT_EQ(tv2_tests::AllocationCount(), before);
        EXPECT_EQ(of_skin.taken, 1);
        EXPECT_EQ(of_skin.pieces, 0);
        EXPECT_GT(of_motion.taken, 0);
        EXPECT_EQ(of_clip.pieces, 1);
    }
    EXPECT_EQ(of_clip.taken, 1);
    EXPECT_EQ(of_clip.pieces, 0);
}

} // namespace
