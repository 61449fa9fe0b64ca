#include "tests/support/tracks.h"
#include "tev2_playback/player.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

TEV2_VECTOR_3 Times(const TEV2_MATRIX_3X4& matrix, const TEV2_VECTOR_3& point)
{
    const auto row = [&](const float(&m)[4])
    { return m[0] * point.x + m[1] * point.y + m[2] * point.z + m[3]; };
    return {row(matrix.m[0]), row(matrix.m[1]), row(matrix.m[2])};
}

/// x, y and depth in the picture, and w.
TEV2_VECTOR_4 Projected(const ProjectionMatrix& matrix, const TEV2_VECTOR_3& point)
{
    const auto row = [&](const float(&m)[4])
    { return m[0] * point.x + m[1] * point.y + m[2] * point.z + m[3]; };
    const float w = row(matrix.m[3]);
    return {row(matrix.m[0]) / w, row(matrix.m[1]) / w, row(matrix.m[2]) / w, w};
}

void ExpectPoint(const TEV2_VECTOR_3& value, const TEV2_VECTOR_3& expected, float within = 1e-5f)
{
    EXPECT_NEAR(value.x, expected.x, within);
    EXPECT_NEAR(value.y, expected.y, within);
    EXPECT_NEAR(value.z, expected.z, within);
}

void AddCamera(TEV2& scene, const char16_t* name, std::uint32_t node)
{
    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->name = TEV2_WIDE_STRING(name);
    camera->value = node;
    camera->inverseAspect = 0.5f;
    camera->distance = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(7.0f);
    camera->fieldOfView = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(1.2f);
    camera->clipRange = tv2_tests::MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(
        {{0.0f, {0.5f, 50.0f}}, {1.0f, {1.5f, 70.0f}}});
    scene.cameras.push_back(std::move(camera));
}

/// A node that goes from (1, 2, 3) to (3, 2, 3) in a second, a quarter turn about Y, below a scene root.
void FillScene(TEV2& scene)
{
    scene.environment.timeRange = {0.0f, 1.0f};
    scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes.resize(2);
    nodes[0].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0.0f, 0.0f, 0.0f});
    nodes[0].rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({0.0f, 0.0f, 0.0f, 1.0f});
    nodes[1].parentIndex = 0;
    nodes[1].translation = tv2_tests::MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{0.0f, {1.0f, 2.0f, 3.0f}}, {1.0f, {3.0f, 2.0f, 3.0f}}});
    const float half = std::sqrt(0.5f);
    nodes[1].rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({0.0f, half, 0.0f, half});
    scene.matrixHierarchy.LinkParents();
    AddCamera(scene, u"on a node", 1);
    AddCamera(scene, u"in the world", kNone);
    AddCamera(scene, u"on no node", 2);
}

} // namespace

TEST(Camera, LooksAlongZOfItsNode)
{
    TEV2 scene;
    FillScene(scene);
    const Clip clip(scene);
    Player player(clip);
    player.SetTime(0.5f);
    const CameraView camera = player.Camera(0);
    // A quarter turn about Y takes Z to X: the camera is at (2, 2, 3) and looks along X; right in the picture is -Z.
    ExpectPoint(Times(camera.world, {0.0f, 0.0f, 4.0f}), {6.0f, 2.0f, 3.0f});
    ExpectPoint(Times(camera.view, {2.0f, 2.0f, 3.0f}), {0.0f, 0.0f, 0.0f});
    ExpectPoint(Times(camera.view, {6.0f, 2.0f, 3.0f}), {0.0f, 0.0f, 4.0f});
    ExpectPoint(Times(camera.view, {2.0f, 3.0f, 2.0f}), {1.0f, 1.0f, 0.0f});
    EXPECT_EQ(camera.distance, 7.0f);
    EXPECT_EQ(camera.fieldOfView, 1.2f);
    EXPECT_EQ(camera.nearPlane, 1.0f);
    EXPECT_EQ(camera.farPlane, 60.0f);
    EXPECT_EQ(camera.inverseAspect, 0.5f);
    EXPECT_FALSE(camera.rightHanded);

    ASSERT_EQ(clip.CameraCount(), 3u);
    EXPECT_EQ(clip.CameraName(1), "in the world");
    EXPECT_EQ(clip.CameraNode(0), 1);
    EXPECT_EQ(clip.CameraNode(1), -1);
    EXPECT_EQ(clip.CameraNode(2), -1);
    EXPECT_EQ(clip.FindCamera("on no node"), 2);
    EXPECT_EQ(clip.FindCamera("on node"), -1);
    for (std::size_t in_world = 1; in_world < 4; ++in_world) // there are only three
        ExpectPoint(Times(player.Camera(in_world).view, {1.0f, 2.0f, 3.0f}), {1.0f, 2.0f, 3.0f});
}

TEST(Camera, ProjectsOntoItsPicture)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const struct
    {
        Depth depth;
        float of_near, of_far;
    } depths[] = {{Depth::ZeroToOne, 0.0f, 1.0f},
                  {Depth::OneToZero, 1.0f, 0.0f},
                  {Depth::MinusOneToOne, -1.0f, 1.0f},
                  {Depth::OneToMinusOne, 1.0f, -1.0f}};
    for (const auto& [depth, of_near, of_far] : depths)
    {
        for (const bool right_handed : {false, true})
        {
            CameraView camera;
            camera.fieldOfView = 1.2f;
            camera.nearPlane = 0.5f;
            camera.farPlane = 100.0f;
            camera.inverseAspect = 0.5f;
            camera.rightHanded = right_handed;
            const auto at = [&](const ProjectionMatrix& matrix, float x, float y, float distance) {
                return Projected(matrix, {x, y, right_handed ? -distance : distance});
            };
            const ProjectionMatrix own = camera.Projection(depth);
            EXPECT_NEAR(at(own, 0, 0, 0.5f).z, of_near, 1e-5f);
            EXPECT_NEAR(at(own, 0, 0, 100.0f).z, of_far, 1e-5f);
            // Depth is linear in 1 / distance: at twice the near plane, by hand.
            const float share = (1.0f / 0.5f - 1.0f / 1.0f) / (1.0f / 0.5f - 1.0f / 100.0f);
            EXPECT_NEAR(at(own, 0, 0, 1.0f).z, of_near + (of_far - of_near) * share, 1e-5f);
            // The right edge is at half the angle; half as high as wide, or as high as the viewport is.
            const float edge = 8.0f * std::tan(0.6f);
            EXPECT_NEAR(at(own, edge, 0.5f * edge, 8.0f).x, 1.0f, 1e-5f);
            EXPECT_NEAR(at(own, edge, 0.5f * edge, 8.0f).y, 1.0f, 1e-5f);
            EXPECT_NEAR(at(own, edge, 0.5f * edge, 8.0f).w, 8.0f, 1e-5f);
            const TEV2_VECTOR_4 square = at(camera.Projection(depth, 1.0f), edge, 0.5f * edge, 8.0f);
            EXPECT_NEAR(square.x, 1.0f, 1e-5f);
            EXPECT_NEAR(square.y, 0.5f, 1e-5f);

            camera.farPlane = infinity;
            EXPECT_NEAR(at(camera.Projection(depth), 0, 0, 0.5f).z, of_near, 1e-5f);
            EXPECT_NEAR(at(camera.Projection(depth), 0, 0, 1e8f).z, of_far, 1e-5f);
        }
    }
    EXPECT_FALSE(std::isfinite(CameraView().Projection(Depth::ZeroToOne).m[0][0]));
}

TEST(Camera, ShowsTheSamePictureInBothFrames)
{
    TEV2 scene;
    FillScene(scene);
    const Clip stored(scene);
    ClipOptions options;
    options.frame = Frame::RightHandedYUp;
    const Clip turned(scene, options);
    ASSERT_EQ(stored.UpAxis(), TEV2_UP_AXIS::PlusZ);
    Player left(stored);
    Player right(turned);
    left.SetTime(0.3f);
    right.SetTime(0.3f);
    for (std::size_t index = 0; index < 3; ++index)
    {
        const CameraView from = left.Camera(index);
        const CameraView to = right.Camera(index);
        EXPECT_TRUE(to.rightHanded);
        // +Z of the file is up, +Y; what is in front of the camera there is here too.
        const TEV2_VECTOR_3 point = Times(from.world, {0.7f, -0.4f, 5.0f});
        const TEV2_VECTOR_3 up = {point.x, point.z, -point.y};
        const TEV2_VECTOR_4 expected = Projected(from.Projection(Depth::ZeroToOne), Times(from.view, point));
        const TEV2_VECTOR_4 picture =
            Projected(to.Projection(Depth::ZeroToOne), Times(to.view, {up.x, up.y, -up.z}));
        EXPECT_NEAR(picture.x, expected.x, 1e-5f);
        EXPECT_NEAR(picture.y, expected.y, 1e-5f);
        EXPECT_NEAR(picture.z, expected.z, 1e-5f);
        EXPECT_NEAR(picture.w, 5.0f, 1e-4f);
    }
}

TEST(Camera, IsActiveBySwitcher)
{
    TEV2 scene;
    FillScene(scene);
    const Clip without(scene);
    EXPECT_EQ(Player(without).ActiveCamera(), -1);
    scene.cameraMan.cameraIndex = tv2_tests::MakeTrack<TEV2_ANIMATABLE_INT32_RLE>(
        {{0.0f, 1}, {0.25f, -1}, {0.5f, 3}, {0.625f, 2}, {0.75f, -2147483647}, {1.0f, 0}});
    const Clip clip(scene);
    Player player(clip);
    const struct
    {
        float time;
        int active;
    } rows[] = {{-1.0f, 1}, {0.2f, 1},  {0.25f, -1}, {0.3f, -1}, {0.5f, -1},
                {0.7f, 2},  {0.8f, -1}, {1.0f, 0},   {9.0f, 0}};
    for (const auto& row : rows)
    {
        player.SetTime(row.time);
        EXPECT_EQ(player.ActiveCamera(), row.active) << row.time;
    }
}
