#include "tests/support/tracks.h"
#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"
#include "tev2_playback/root_motion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <string>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

// Seen from above, a place is a point and an angle: complex numbers, z forward along the real axis, x the imaginary
// one. A positive angle about Y turns z towards x.

namespace
{

using Plane = std::complex<double>;

struct Place2
{
    Plane at;
    Plane turn = 1.0;
};

constexpr double kTurn = 0.25; // radians a length
const Place2 kStart = {{0.5, -2.0}, std::polar(1.0, 0.4)};
const Place2 kEnd = {{2.0, -1.5}, std::polar(1.0, 0.4 + kTurn)};

/// Later places are P(t) = L^n P(t - n), where L leads from the start to the end of the range.
Place2 AfterLengths(int lengths, const Place2& place)
{
    const Plane turn = kEnd.turn / kStart.turn;
    const Plane shift = kEnd.at - turn * kStart.at;
    const Plane turns = std::pow(turn, lengths);
    return {turns * place.at + shift * (1.0 - turns) / (1.0 - turn), turns * place.turn};
}

TEV2_QUATERNION AboutY(const Plane& turn)
{
    const double half = std::arg(turn) / 2;
    return {0.0f, static_cast<float>(std::sin(half)), 0.0f, static_cast<float>(std::cos(half))};
}

/// Node 1 walks from the start to the end in one second, below a parent that is elsewhere.
void FillWalk(TEV2& scene, float begin)
{
    scene.matrixHierarchy.nodes.resize(2);
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes[1];
    node.parentIndex = 0;
    const auto place = [](const Plane& at) {
        return TEV2_VECTOR_3{static_cast<float>(at.imag()), 1.0f, static_cast<float>(at.real())};
    };
    node.translation = tv2_tests::MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{begin, place(kStart.at)}, {begin + 1, place(kEnd.at)}});
    node.rotation = tv2_tests::MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
        {{begin, AboutY(kStart.turn)}, {begin + 1, AboutY(kEnd.turn)}});
    scene.matrixHierarchy.nodes[0].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({7, 8, 9});
    scene.matrixHierarchy.LinkParents();
    scene.environment.timeRange = {begin, begin + 1};
}

constexpr Plane kParent = {9.0, 7.0};

Place2 Product(const Place2& left, const Place2& right)
{
    return {left.at + left.turn * right.at, left.turn * right.turn};
}

void ExpectNear(const Place2& got, const Place2& expected, double most)
{
    EXPECT_LT(std::abs(got.at - expected.at), most) << got.at << " instead of " << expected.at;
    EXPECT_LT(std::abs(got.turn - expected.turn), most) << got.turn << " instead of " << expected.turn;
}

/// A character that walks with node 1 held. Its places are multiplied in double precision: what is measured is the
/// movements.
struct Walk
{
    Walk(const Clip& clip, Repeat repeat, double speed)
        : player(clip), motion(clip, 1), pose(clip.NodeCount())
    {
        player.SetRepeat(repeat);
        player.SetSpeed(speed);
    }

    void Advance(double seconds)
    {
        player.Advance(seconds);
        player.Sample(pose);
        const Transform movement = motion.Movement(pose, player.GetPlayhead().Played());
        const double angle = 2 * std::atan2(double{movement.rotation.y}, double{movement.rotation.w});
        character =
            Product(character, {{movement.translation.z, movement.translation.x}, std::polar(1.0, angle)});
    }

    /// Where the node is, below its parent.
    Place2 Place() const
    {
        const Place2 world = Product(character, {kParent + kStart.at, kStart.turn});
        return {world.at - kParent, world.turn};
    }

    Player player;
    RootMotion motion;
    std::vector<Transform> pose;
    Place2 character;
};

TEST(RootMotion, GoesOnAcrossTheEndsOfALoop)
{
    const struct
    {
        double step;
        int steps;
        double speed;
        int lengths;
    } rows[] = {
        {1.0 / 64, 6400, 1.0, 100},                      // a hundred times round
        {0.375, 8, 1.0, 3},         {25.0, 4, 1.0, 100}, // several lengths at once
        {100.0, 1, 1.0, 100},       {1.0 / 64, 6400, -1.0, -100}, {0.75, 4, -1.0, -3}, {50.0, 2, -1.0, -100},
        {0.25, 4, 2.0, 2},
    };
    for (const float begin : {0.0f, -3.5f, 2.25f})
    {
        TEV2 scene;
        FillWalk(scene, begin);
        const Clip clip(scene);
        for (const auto& row : rows)
        {
            SCOPED_TRACE(std::to_string(row.step) + " s, " + std::to_string(row.lengths) + " lengths");
            Walk walk(clip, Repeat::Loop, row.speed);
            for (int step = 0; step < row.steps; ++step)
                walk.Advance(row.step);
            ExpectNear(walk.Place(), AfterLengths(row.lengths, kStart), 2e-4);
        }
    }
}

TEST(RootMotion, OfPartsOfALength)
{
    TEV2 scene;
    FillWalk(scene, 0.0f);
    const Clip clip(scene);
    const Place2 half = {(kStart.at + kEnd.at) / 2.0, std::polar(1.0, 0.4 + kTurn / 2)};
    const struct
    {
        Repeat repeat;
        std::vector<double> steps;
        Place2 expected;
    } rows[] = {
        {Repeat::Loop, {0.5}, half},
        {Repeat::Loop, {0.75, 0.75}, AfterLengths(1, half)},
        {Repeat::Loop, {2.5}, AfterLengths(2, half)},
        {Repeat::Loop, {0.25, -0.75}, AfterLengths(-1, half)},
        {Repeat::Loop, {0.5, 3.0, -1.0}, AfterLengths(2, half)},
        {Repeat::Once, {5.0}, kEnd},
        {Repeat::Once, {5.0, -0.5}, half},
        {Repeat::PingPong, {1.5}, half},
        {Repeat::PingPong, {1.75, 2.75}, half},
        {Repeat::PingPong, {0.5, 0.5, 1.0}, kStart},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        Walk walk(clip, row.repeat, 1.0);
        for (const double step : row.steps)
            walk.Advance(step);
        ExpectNear(walk.Place(), row.expected, 1e-5);

        walk.motion.Hold(walk.pose);
        EXPECT_EQ(walk.pose[1].translation, (TEV2_VECTOR_3{-2.0f, 1.0f, 0.5f}));
        EXPECT_EQ(walk.pose[1].rotation, AboutY(kStart.turn));
        EXPECT_EQ(walk.pose[0].translation, (TEV2_VECTOR_3{7, 8, 9}));
    }
}

TEST(RootMotion, StartsAgainAfterAJump)
{
    TEV2 scene;
    FillWalk(scene, 0.0f);
    const Clip clip(scene);
    Walk walk(clip, Repeat::Loop, 1.0);
    walk.player.SetTime(0.5f);
    walk.player.Sample(walk.pose);
    walk.motion.Restart(walk.pose);
    const Plane half = (kStart.at + kEnd.at) / 2.0, turned = std::polar(1.0, kTurn / 2);
    walk.character = {kParent + half - turned * (kParent + kStart.at), turned};
    walk.Advance(0.5);
    ExpectNear(walk.Place(), kEnd, 1e-5);

    // What is not a number does not move.
    walk.pose[1].translation.x = std::numeric_limits<float>::quiet_NaN();
    const Transform none = walk.motion.Movement(walk.pose, {});
    EXPECT_EQ(none.translation, TEV2_VECTOR_3());
    EXPECT_EQ(none.rotation, TEV2_QUATERNION());

    // Nor does a node that is not there.
    RootMotion of_nobody(clip, 2);
    of_nobody.Restart(walk.pose);
    of_nobody.Hold(walk.pose);
    EXPECT_EQ(of_nobody.Movement(walk.pose, {0, 1, 0, 0, false, false, 5}).translation, TEV2_VECTOR_3());
}

/// Whatever the axes of the node and of those above it are, the character goes where the clip goes.
TEST(RootMotion, WithTheHeldPoseIsTheWorldOfTheClip)
{
    const TEV2_QUATERNION up = {0.5f, -0.5f, 0.5f, 0.5f}, slanted = {0.8f, 0.0f, -0.6f, 0.0f};
    for (const float scale : {1.0f, 2.0f, -0.5f})
        for (const Frame frame : {Frame::AsStored, Frame::RightHandedYUp})
        {
            SCOPED_TRACE(scale);
            TEV2 scene;
            scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
            auto& nodes = scene.matrixHierarchy.nodes;
            nodes.resize(4); // of the file with +Z up, above, that moves, below
            for (std::int32_t node = 1; node < 4; ++node)
                nodes[static_cast<std::size_t>(node)].parentIndex = node - 1;
            nodes[0].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
            nodes[0].rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({});
            nodes[1].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, -2, 3});
            nodes[1].rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(slanted);
            nodes[1].scale = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({scale, scale, scale});
            nodes[2].translation =
                tv2_tests::MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0, {0, 1, 0}}, {1, {2, 1.5f, -1}}});
            nodes[2].rotation = tv2_tests::MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
                {{0, up}, {1, {0.5f, 0.5f, 0.5f, 0.5f}}});
            nodes[3].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0.25f, 0.5f, 1});
            scene.matrixHierarchy.LinkParents();
            scene.environment.timeRange = {0, 1};
            const Clip clip(scene, {.frame = frame});
            ASSERT_EQ(clip.UpAxis(), TEV2_UP_AXIS::PlusZ);

            Player player(clip);
            RootMotion motion(clip, 2);
            std::vector<Transform> pose(4);
            std::vector<TEV2_MATRIX_3X4> world(4);
            TEV2_MATRIX_3X4 character;
            for (int step = 0; step < 10; ++step)
            {
                player.Advance(0.1);
                player.Sample(pose);
                const Transform movement = motion.Movement(pose, player.GetPlayhead().Played());
                character = Product(character, RigidMatrix(movement.rotation, movement.translation));
                motion.Hold(pose);
                ToWorld(clip, pose, world);
                for (const std::size_t node : {2u, 3u})
                {
                    const TEV2_MATRIX_3X4 moved = Product(character, world[node]);
                    for (int number = 0; number < 12; ++number)
                        EXPECT_NEAR(moved.m[number / 4][number % 4],
                                    player.World()[node].m[number / 4][number % 4], 2e-5)
                            << "step " << step << " node " << node << " number " << number;
                }
            }
        }
}

} // namespace
