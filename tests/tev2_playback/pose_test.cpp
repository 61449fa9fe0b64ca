#include "tests/tev2_playback/player_difference.h"
#include "tests/tev2_playback/random_skeleton.h"
#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

using Numbers = std::array<double, 4>;
using Bits = std::array<std::uint32_t, 10>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Bits BitsOf(const Transform& transform)
{
    Bits bits;
    std::memcpy(bits.data(), &transform, sizeof bits);
    return bits;
}

Numbers NumbersOf(const TEV2_QUATERNION& rotation)
{
    return {rotation.x, rotation.y, rotation.z, rotation.w};
}

Numbers NormalisedTowards(const Numbers& from, Numbers to, double weight)
{
    double dot = 0;
    for (std::size_t i = 0; i < 4; ++i)
        dot += from[i] * to[i];
    Numbers moved;
    double square = 0;
    for (std::size_t i = 0; i < 4; ++i)
    {
        moved[i] = from[i] + ((dot < 0 ? -to[i] : to[i]) - from[i]) * weight;
        square += moved[i] * moved[i];
    }
    for (double& number : moved)
        number /= std::sqrt(square);
    return moved;
}

/// The Hamilton product, by its table.
Numbers Multiplied(const Numbers& left, const Numbers& right)
{
    const auto& [b, c, d, a] = left;
    const auto& [f, g, h, e] = right;
    return {a * f + b * e + c * h - d * g, a * g - b * h + c * e + d * f, a * h + b * g - c * f + d * e,
            a * e - b * f - c * g - d * h};
}

void ExpectNear(const TEV2_VECTOR_3& got, const std::array<double, 3>& expected)
{
    EXPECT_NEAR(double{got.x}, expected[0], 2e-6);
    EXPECT_NEAR(double{got.y}, expected[1], 2e-6);
    EXPECT_NEAR(double{got.z}, expected[2], 2e-6);
}

void ExpectNear(const TEV2_QUATERNION& got, const Numbers& expected)
{
    const Numbers numbers = NumbersOf(got);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(numbers[i], expected[i], 2e-6) << i;
}

/// A pose whose rotations are of length 1, but for rounding.
std::vector<Transform> RandomPose(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    const auto number = [&random] { return static_cast<float>(random() % 20'001) / 10'000.0f - 1.0f; };
    std::vector<Transform> pose(count);
    for (Transform& transform : pose)
    {
        transform.translation = {number(), number(), number()};
        transform.scale = {1.5f + number(), 1.5f + number(), 1.5f + number()};
        const Numbers turn = NormalisedTowards({0, 0, 0, 0}, {number(), number(), number(), 1.0}, 1.0);
        transform.rotation = {static_cast<float>(turn[0]), static_cast<float>(turn[1]),
                              static_cast<float>(turn[2]), static_cast<float>(turn[3])};
        if (random() % 2 == 0)
            transform.rotation = -transform.rotation;
    }
    return pose;
}

TEST(Blend, IsLinearAndTurnsTheShortestWay)
{
    for (const std::size_t count : {0u, 1u, 3u, 4u, 11u})
    {
        const std::vector<Transform> begin = RandomPose(count, 1);
        const std::vector<Transform> from = RandomPose(count, 2);
        std::vector<float> mask(count);
        for (std::size_t node = 0; node < count; ++node)
            mask[node] = 0.25f * static_cast<float>(node % 5);
        for (const bool masked : {false, true})
        {
            for (const float weight : {0.0f, 0.3f, 0.5f, 1.0f, 1.25f, -0.5f})
            {
                std::vector<Transform> to = begin;
                Blend(to, from, weight, masked ? std::span<const float>(mask) : std::span<const float>());
                for (std::size_t node = 0; node < count; ++node)
                {
                    SCOPED_TRACE(std::to_string(weight) + " node " + std::to_string(node));
                    const float w = masked ? weight * mask[node] : weight;
                    if (w == 0.0f || w == 1.0f)
                    {
                        EXPECT_EQ(BitsOf(to[node]), BitsOf(w == 0.0f ? begin[node] : from[node]));
                        continue;
                    }
                    const auto linear = [w](const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
                    {
                        const auto between = [w](double x, double y) { return x + (y - x) * double{w}; };
                        return std::array{between(a.x, b.x), between(a.y, b.y), between(a.z, b.z)};
                    };
                    ExpectNear(to[node].translation, linear(begin[node].translation, from[node].translation));
                    ExpectNear(to[node].scale, linear(begin[node].scale, from[node].scale));
                    ExpectNear(to[node].rotation, NormalisedTowards(NumbersOf(begin[node].rotation),
                                                                    NumbersOf(from[node].rotation), w));
                }
            }
        }
    }
}

TEST(Add, TurnsAboutTheAxesOfTheParent)
{
    const std::vector<Transform> begin = RandomPose(7, 3);
    const std::vector<Transform> delta = RandomPose(7, 4);
    const std::vector<float> mask = {0.0f, 1.0f, 0.5f, 0.0f, 1.0f, 0.5f, 0.25f};
    for (const float weight : {0.0f, 0.4f, 1.0f, 2.0f})
    {
        std::vector<Transform> to = begin;
        Add(to, delta, weight, mask);
        for (std::size_t node = 0; node < to.size(); ++node)
        {
            SCOPED_TRACE(std::to_string(weight) + " node " + std::to_string(node));
            const double w = double{weight} * double{mask[node]};
            if (w == 0.0)
            {
                EXPECT_EQ(BitsOf(to[node]), BitsOf(begin[node]));
                continue;
            }
            const auto& t = begin[node].translation;
            const auto& dt = delta[node].translation;
            ExpectNear(to[node].translation, {double{t.x} + double{dt.x} * w, double{t.y} + double{dt.y} * w,
                                              double{t.z} + double{dt.z} * w});
            const auto& s = begin[node].scale;
            const auto& ds = delta[node].scale;
            const auto scaled = [w](double factor, double d) { return factor * (1 + (d - 1) * w); };
            ExpectNear(to[node].scale, {scaled(s.x, ds.x), scaled(s.y, ds.y), scaled(s.z, ds.z)});
            const Numbers turn = NormalisedTowards({0, 0, 0, 1}, NumbersOf(delta[node].rotation), w);
            ExpectNear(to[node].rotation, Multiplied(turn, NumbersOf(begin[node].rotation)));
        }
    }
}

TEST(Difference, AddedToTheReferenceIsThePose)
{
    const std::vector<Transform> pose = RandomPose(6, 5);
    const std::vector<Transform> reference = RandomPose(6, 6);
    std::vector<Transform> delta(6);
    Difference(pose, reference, delta);
    std::vector<Transform> sum = reference;
    Add(sum, delta, 1.0f);
    for (std::size_t node = 0; node < sum.size(); ++node)
    {
        const auto& [x, y, z] = pose[node].translation;
        ExpectNear(sum[node].translation, {x, y, z});
        const auto& [sx, sy, sz] = pose[node].scale;
        ExpectNear(sum[node].scale, {sx, sy, sz});
        // As a rotation: the other quaternion is the same.
        const Numbers got = NumbersOf(sum[node].rotation);
        const Numbers expected = NumbersOf(pose[node].rotation);
        double dot = 0;
        for (std::size_t i = 0; i < 4; ++i)
            dot += got[i] * expected[i];
        EXPECT_NEAR(std::abs(dot), 1.0, 2e-6) << node;
    }
}

TEST(Poses, KeepRotationsThatCannotBeNormalised)
{
    const TEV2_QUATERNION kept = {0.5f, -0.5f, 0.5f, 0.5f};
    const TEV2_QUATERNION bad[] = {
        {kNan, 0, 0, 1}, {kInfinity, 0, 0, 0}, {3e38f, 3e38f, 0, 0}, {-0.5f / 3, 0.5f / 3, -0.5f / 3, kNan}};
    for (const TEV2_QUATERNION& rotation : bad)
    {
        std::vector<Transform> to(1);
        to[0].rotation = kept;
        std::vector<Transform> from(1);
        from[0].rotation = rotation;
        Blend(to, from, 0.5f);
        EXPECT_EQ(to[0].rotation, kept);
        Add(to, from, 0.5f);
        EXPECT_EQ(to[0].rotation, kept);
        std::vector<Transform> delta(1);
        Difference(from, to, delta);
        EXPECT_EQ(delta[0].rotation, TEV2_QUATERNION());
    }
    // Rotations that are not of length 1 become so; one of length 0 has no say.
    std::vector<Transform> to(1);
    std::vector<Transform> from(1);
    to[0].rotation = {0, 0, 0, 3};
    from[0].rotation = {0, 0, 0, 0};
    Blend(to, from, 0.5f);
    EXPECT_EQ(to[0].rotation, TEV2_QUATERNION());
    from[0].rotation = {4, 0, 0, 0};
    Add(to, from, 1.0f);
    EXPECT_EQ(to[0].rotation, (TEV2_QUATERNION{1, 0, 0, 0}));
    // What is scaled to nothing stays so.
    from[0].scale = {0, 2, 0};
    std::vector<Transform> delta(1);
    Difference(to, from, delta);
    EXPECT_EQ(delta[0].scale, (TEV2_VECTOR_3{1, 0.5f, 1}));
}

TEST(Mask, CoversANodeAndThoseBelow)
{
    TEV2 scene;
    const int parents[] = {-1, 0, 1, 0, 3, 2, 7, -1, 7, 9, 4};
    for (const int parent : parents)
        scene.matrixHierarchy.nodes.emplace_back().parentIndex = parent;
    const Clip clip(scene);
    const struct
    {
        std::size_t node;
        std::vector<float> mask;
    } rows[] = {
        {0, {9, 9, 9, 9, 9, 9, 0, 0, 0, 0, 9}}, // 6 comes before its parent
        {1, {0, 9, 9, 0, 0, 9, 0, 0, 0, 0, 0}},  {3, {0, 0, 0, 9, 9, 0, 0, 0, 0, 0, 9}},
        {7, {0, 0, 0, 0, 0, 0, 0, 9, 9, 0, 0}},  {9, {0, 0, 0, 0, 0, 0, 0, 0, 0, 9, 0}}, // its own parent
        {11, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& row : rows)
    {
        std::vector<float> mask(std::size(parents), 0.0f);
        MaskBelow(clip, row.node, 9.0f, mask);
        EXPECT_EQ(mask, row.mask) << row.node;
        MaskBelow(clip, row.node, 0.0f, mask);
        EXPECT_EQ(mask, std::vector<float>(std::size(parents), 0.0f)) << row.node;
    }
}

TEST(ToWorld, IsThePlayersOfASampledPose)
{
    for (const Frame frame : {Frame::AsStored, Frame::RightHandedYUp})
    {
        for (unsigned seed = 0; seed < 30; ++seed)
        {
            TEV2 scene;
            scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
            TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes.emplace_back(); // up is +Z
            root.translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
            root.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({});
            tv2_tests::RandomSkeleton random(scene, seed, 20 + seed);
            float number = 0;
            for (TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
                node.worldMatrix = {{{0, -2, 0, ++number}, {1, 0, 0, 2}, {0, 0, 3, 5}}};
            const Clip clip(scene, {.frame = frame});
            ASSERT_EQ(clip.UpAxis(), TEV2_UP_AXIS::PlusZ);
            Player player(clip);
            std::vector<Transform> pose(clip.NodeCount());
            std::vector<TEV2_MATRIX_3X4> world(clip.NodeCount());
            for (const float time : random.ComparedTimes())
            {
                player.SetTime(time);
                player.Sample(pose);
                ToWorld(clip, pose, world);
                for (std::size_t node = 0; node < clip.NodeCount(); ++node)
                    ASSERT_TRUE(tv2_tests::SameFloats(world[node], player.World()[node]))
                        << "seed " << seed << " time " << time << " node " << node;
            }
        }
    }
}

} // namespace
