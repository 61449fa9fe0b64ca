#include "tests/support/tracks.h"
#include "tev2_playback/player.h"
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

/// Places are multiplied in double precision: what is measured is the movements.
Place2 Moved(const Place2& place, const Transform& movement)
{
    const double angle = 2 * std::atan2(double{movement.rotation.y}, double{movement.rotation.w});
    const Plane step{movement.translation.z, movement.translation.x};
    return {place.at + place.turn * step, place.turn * std::polar(1.0, angle)};
}

void ExpectNear(const Place2& got, const Place2& expected, double most)
{
    EXPECT_LT(std::abs(got.at - expected.at), most) << got.at << " instead of " << expected.at;
    EXPECT_LT(std::abs(got.turn - expected.turn), most) << got.turn << " instead of " << expected.turn;
}

struct Walk
{
    Walk(const Clip& clip, Repeat repeat, double speed)
        : player(clip), motion(clip, 1), pose(clip.NodeCount())
    {
        player.SetRepeat(repeat);
        player.SetSpeed(speed);
    }

    Place2 Advance(const Place2& place, double seconds)
    {
        player.Advance(seconds);
        player.Sample(pose);
        return Moved(place, motion.Movement(pose, player.GetPlayhead().Played()));
    }

    Player player;
    RootMotion motion;
    std::vector<Transform> pose;
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
            Place2 place = kStart;
            for (int step = 0; step < row.steps; ++step)
                place = walk.Advance(place, row.step);
            ExpectNear(place, AfterLengths(row.lengths, kStart), 2e-4);
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
        Place2 place = kStart;
        for (const double step : row.steps)
            place = walk.Advance(place, step);
        ExpectNear(place, row.expected, 1e-5);

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
    const Place2 half = {(kStart.at + kEnd.at) / 2.0, std::polar(1.0, 0.4 + kTurn / 2)};
    ExpectNear(walk.Advance(half, 0.5), kEnd, 1e-5);

    // What is not a number does not move.
    walk.pose[1].translation.x = std::numeric_limits<float>::quiet_NaN();
    const Transform none = walk.motion.Movement(walk.pose, {});
    EXPECT_EQ(none.translation, TEV2_VECTOR_3());
    EXPECT_EQ(none.rotation, TEV2_QUATERNION());
}

} // namespace
