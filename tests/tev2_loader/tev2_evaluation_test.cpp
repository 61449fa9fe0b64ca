#include "tests/support/sample_scenes.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// The tracks of a full scene that evaluating the scene must reach.
std::vector<const TEV2_ANIMATABLE*> MovingTracks(const TEV2& scene)
{
    const TEV2_CAMERA& camera = *scene.cameras.at(0);
    const auto& material = static_cast<const TEV2_STANDARD_MATERIAL&>(*scene.materials.at(1));
    return {scene.globalLightTint->tint.get(),
            scene.ambientLight->colour.get(),
            scene.environment.environmentMap->amount.get(),
            scene.lights[0]->colour.get(),
            scene.lights[scene.lights.size() - 2]->bounds.get(), // of a kept body
            scene.rigids[0]->visibility.get(),
            scene.animMeshes[0]->vertices->tracks[1].position.get(),
            scene.morphMeshes[0]->targets[0].track.get(),
            scene.bezierSplines[0]->bounds.get(),
            scene.speedTreeReferences[0]->bounds.get(),
            scene.instanceLists[0][0]->bounds.get(),
            material.diffuse.get(),
            material.maps[0].map->amount.get(),
            scene.matrixHierarchy.nodes[0].translation.get(),
            scene.matrixHierarchy.nodes[0].rotation.get(),
            scene.matrixHierarchy.nodes[1].scale.get(),
            scene.environment.environmentColour.get(),
            camera.distance.get(),
            camera.clipRange.get(),
            scene.cameraMan.cameraIndex.get()};
}

/// And those that it leaves alone.
std::vector<const TEV2_ANIMATABLE*> StillTracks(const TEV2& scene)
{
    return {scene.helpers.at(0)->bounds.get(), scene.xrefObjects.at(0)->bounds.get(),
            scene.instanceLists[2].at(0)->bounds.get(), scene.cameras.at(0)->bounds.get(),
            scene.lights[0]->properties.floatValues[0].track.get()};
}

TEST(Evaluation, ReachesEveryRecordThatMoves)
{
    TEV2 scene;
    FillWithEverything(scene);
    scene.SetTime(1.5f);
    for (const TEV2_ANIMATABLE* track : MovingTracks(scene))
        EXPECT_EQ(track->m_fraction, 0.5f);
    scene.Update(0.5f);
    for (const TEV2_ANIMATABLE* track : MovingTracks(scene))
        EXPECT_EQ(track->m_fraction, 0.75f);
    EXPECT_EQ(scene.weightedMeshes[0]->targets[0].track->m_fraction, 0.75f);
    for (const TEV2_ANIMATABLE* track : StillTracks(scene))
        EXPECT_EQ(track->m_fraction, 0.0f);
    EXPECT_EQ(scene.matrixHierarchy.nodes[0].worldMatrix.m[0][3], 0.75f);
}

TEST(Evaluation, BeginsAtTheStartTimeWhenAskedTo)
{
    TEV2 scene;
    FillWithEverything(scene);
    scene.weightedMeshes.clear();
    scene.environment.timeRange = {1.5f, 2.5f};
    const std::vector<std::uint8_t> image = SceneImage(scene);
    for (const bool apply : {false, true})
    {
        TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
        ASSERT_TRUE(scene.Load(cursor, apply));
        EXPECT_TRUE(scene.inverseBindMatrices.empty());
        for (const TEV2_ANIMATABLE* track : MovingTracks(scene))
            EXPECT_EQ(track->m_fraction, apply ? 0.5f : 0.0f);
    }
}

TEST(Evaluation, BindsWeightedMeshesToTheSkeletonAtTheStart)
{
    TEV2 scene;
    FillWithEverything(scene);
    scene.environment.timeRange = {1.5f, 2.5f};
    const std::vector<std::uint8_t> image = SceneImage(scene);
    TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
    ASSERT_TRUE(scene.Load(cursor, false));

    ASSERT_EQ(scene.inverseBindMatrices.size(), 3u);
    for (std::size_t node = 0; node < 3; ++node)
    {
        const TEV2_MATRIX_3X4 identity =
            Product(scene.inverseBindMatrices[node], scene.matrixHierarchy.nodes[node].worldMatrix);
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                EXPECT_NEAR(identity.m[row][column], row == column ? 1.0f : 0.0f, 1e-5f) << node;
    }
    EXPECT_EQ(scene.matrixHierarchy.nodes[0].worldMatrix.m[0][3], 0.5f);

    scene.SetTime(2.0f);
    EXPECT_EQ(scene.weightedMeshes[0]->hierarchy, &scene.matrixHierarchy);
    EXPECT_EQ(scene.weightedMeshes[0]->inverseBindMatrices, &scene.inverseBindMatrices);
}

} // namespace
