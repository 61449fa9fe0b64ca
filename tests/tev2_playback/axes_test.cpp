#include "tests/support/sample_scenes.h"
#include "tests/tev2_playback/random_skeleton.h"
#include "tev2_playback/player.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

using Point = std::array<double, 3>;

Point Transformed(const TEV2_MATRIX_3X4& matrix, const Point& point)
{
    Point to;
    for (std::size_t row = 0; row < 3; ++row)
        to[row] = double{matrix.m[row][0]} * point[0] + double{matrix.m[row][1]} * point[1] +
                  double{matrix.m[row][2]} * point[2] + double{matrix.m[row][3]};
    return to;
}

Point MirroredPoint(const Point& point)
{
    return {point[0], point[1], -point[2]};
}

struct Case
{
    TEV2_UP_AXIS axis;
    TEV2_QUATERNION root; ///< the rotation by which the axis is recognised
    const char16_t* name;
    Point (*to_y_up)(const Point& point); ///< in the axes of the file
};

const Case kCases[] = {
    {TEV2_UP_AXIS::PlusY, {}, u"Exporter Inserted Root", [](const Point& p) { return p; }},
    {TEV2_UP_AXIS::PlusZ,
     {},
     u"Scene",
     [](const Point& p) {
         return Point{p[0], p[2], -p[1]};
     }},
    {TEV2_UP_AXIS::MinusZ,
     {0, 1, 0, 0},
     u"Scene",
     [](const Point& p) {
         return Point{p[0], -p[2], p[1]};
     }},
    {TEV2_UP_AXIS::Unknown, {0, 0, 1, 0}, u"Scene", [](const Point& p) { return p; }},
};

void Fill(TEV2& scene, const Case& item)
{
    scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes.emplace_back();
    root.name = TEV2_WIDE_STRING(item.name);
    root.translation = tv2_tests::SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({}, {});
    root.rotation = tv2_tests::SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(item.root, item.root);
    tv2_tests::RandomSkeleton(scene, 7, 60, tv2_tests::Oddity::Nodes);
    for (TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes) // what late parents leave for their children
        node.worldMatrix = {{{0, -2, 0, 1}, {1, 0, 0, 2}, {0, 0, 3, 5}}};
}

TEST(UpMatrix, TurnsUpToY)
{
    const Point ups[] = {{0, 1, 0}, {0, 0, 1}, {0, 0, -1}, {0, 1, 0}};
    for (std::size_t row = 0; row < std::size(kCases); ++row)
    {
        const TEV2_MATRIX_3X4 matrix = UpMatrix(kCases[row].axis);
        EXPECT_EQ(Transformed(matrix, ups[row]), (Point{0, 1, 0}));
        for (const Point& point : {Point{1, 2, 3}, Point{0, 0, 0}})
            EXPECT_EQ(Transformed(matrix, point), kCases[row].to_y_up(point));
        const auto& m = matrix.m;
        EXPECT_EQ(m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]), 1.0f);
    }
}

/// A point of a node, given in its axes as stored, is at the same place of the world.
TEST(RightHandedFrame, IsTheStoredWorldTurnedAndMirrored)
{
    for (const Case& item : kCases)
    {
        TEV2 scene;
        Fill(scene, item);
        const Clip stored_clip(scene);
        const Clip clip(scene, {.frame = Frame::RightHandedYUp});
        EXPECT_EQ(stored_clip.UpAxis(), item.axis);
        EXPECT_EQ(clip.UpAxis(), item.axis);
        EXPECT_EQ(clip.WorldFrame(), Frame::RightHandedYUp);
        Player stored(stored_clip);
        Player player(clip);
        for (const float time : {-1.0f, 0.0f, 0.3f, 1.1f, 1.25f, 2.5f})
        {
            SCOPED_TRACE(std::string(UpAxisName(item.axis)) + " at " + std::to_string(time));
            stored.SetTime(time);
            player.SetTime(time);
            for (std::size_t node = 0; node < clip.NodeCount(); ++node)
            {
                const double rounding =
                    item.axis == TEV2_UP_AXIS::PlusY || item.axis == TEV2_UP_AXIS::Unknown ? 0.0 : 1e-6;
                for (const Point& point : {Point{0, 0, 0}, Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}})
                {
                    const Point expected =
                        MirroredPoint(item.to_y_up(Transformed(stored.World()[node], point)));
                    const Point got = Transformed(player.World()[node], MirroredPoint(point));
                    const double size = std::hypot(expected[0], expected[1], expected[2]);
                    for (std::size_t axis = 0; axis < 3; ++axis)
                        EXPECT_NEAR(got[axis], expected[axis], rounding * size) << "node " << node;
                }
            }
        }
    }
}

TEST(RightHandedFrame, MirrorsLocalTransformsExactly)
{
    TEV2 scene;
    Fill(scene, kCases[2]);
    const Clip stored_clip(scene);
    const Clip clip(scene, {.frame = Frame::RightHandedYUp});
    Player stored(stored_clip);
    Player player(clip);
    std::vector<Transform> from(clip.NodeCount());
    std::vector<Transform> to(clip.NodeCount());
    for (const float time : {0.0f, 0.3f, 1.25f})
    {
        stored.SetTime(time);
        stored.Sample(from);
        player.SetTime(time);
        player.Sample(to);
        for (std::size_t node = 0; node < clip.NodeCount(); ++node)
        {
            const auto& [x, y, z] = from[node].translation;
            const auto& [i, j, k, w] = from[node].rotation;
            EXPECT_EQ(to[node].translation, (TEV2_VECTOR_3{x, y, -z})) << node;
            EXPECT_EQ(to[node].rotation, (TEV2_QUATERNION{-i, -j, k, w})) << node;
            EXPECT_EQ(to[node].scale, from[node].scale) << node;
        }
    }
}

} // namespace
