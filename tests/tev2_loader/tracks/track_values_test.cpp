#include "tests/support/tracks.h"

#include <array>
#include <cmath>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// A value of a type whose components are first, first + step, ...
template <typename Value>
Value Counting(float first, float step)
{
    Value value{};
    std::apply([&](auto&... component) { ((component = first, first += step), ...); }, value.Components());
    return value;
}

template <>
float Counting<float>(float first, float)
{
    return first;
}

template <typename Track>
class LinearTrackValues : public testing::Test
{
};

using LinearKinds = testing::Types<TEV2_ANIMATABLE_FLOAT32_LINEAR, TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR,
                                   TEV2_ANIMATABLE_COLOUR_LINEAR, TEV2_ANIMATABLE_VECTOR_3_LINEAR,
                                   TEV2_ANIMATABLE_VECTOR_2_LINEAR, TEV2_ANIMATABLE_RECTF_LINEAR,
                                   TEV2_ANIMATABLE_VECTOR_4_LINEAR, TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR,
                                   TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>;
TYPED_TEST_SUITE(LinearTrackValues, LinearKinds);

TYPED_TEST(LinearTrackValues, InterpolateEachComponent)
{
    using Value = typename TypeParam::Value;
    TypeParam track;
    track.Append(0.0f, Counting<Value>(1.0f, 1.0f));
    track.m_fraction = 0.75f;
    EXPECT_TRUE(track.GetValue() == Counting<Value>(1.0f, 1.0f)) << "one value is a constant";
    track.Append(4.0f, Counting<Value>(5.0f, 3.0f));
    track.SetTime(1.0f);
    EXPECT_TRUE(track.GetValue() == Counting<Value>(2.0f, 1.5f));
    track.SetTime(4.0f);
    EXPECT_TRUE(track.GetValue() == Counting<Value>(5.0f, 3.0f));
}

TYPED_TEST(LinearTrackValues, TakeTheArithmeticOfTheirFamily)
{
    using Value = typename TypeParam::Value;
    TypeParam track;
    track.Append(0.0f, Counting<Value>(8.0f, 2.0f));
    track.Append(1.0f, Counting<Value>(-4.0f, 2.0f));
    constexpr bool kOffsets = requires
    {
        track.Add(Value{});
    };
    constexpr bool kScales = requires
    {
        track.Scale(1.0f);
    };
    EXPECT_EQ(kOffsets, track.GetType() != 10);
    EXPECT_EQ(kScales, track.GetType() != 10 && track.GetType() != 1);

    if constexpr (kOffsets)
    {
        track.Add(Counting<Value>(1.0f, 1.0f));
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(9.0f, 3.0f));
        EXPECT_TRUE(track.m_values[1] == Counting<Value>(-3.0f, 3.0f));
        track.Subtract(Counting<Value>(1.0f, 1.0f));
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(8.0f, 2.0f));
    }
    if constexpr (kScales)
    {
        track.Scale(0.5f).Scale(4.0f).Divide(2.0f);
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(8.0f, 2.0f));
        track.Divide(-2.0f);
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(-4.0f, -1.0f));
        EXPECT_TRUE(track.m_values[1] == Counting<Value>(2.0f, -1.0f));
    }
}

TEST(SteppedIntegerTrack, HoldsUntilTheNextKey)
{
    TEV2_ANIMATABLE_INT32_RLE track;
    track.Append(0.0f, 4);
    track.m_fraction = 1.0f;
    EXPECT_EQ(track.GetValue(), 4) << "one value is a constant";
    track.Append(1.0f, 7);
    track.Append(2.0f, -1);

    const std::pair<float, std::int32_t> cases[] = {{-1.0f, 4}, {0.0f, 4},  {0.999f, 4}, {1.0f, 7},
                                                    {1.5f, 7},  {2.0f, -1}, {9.0f, -1},  {1.999f, 7}};
    for (const auto& [time, value] : cases)
    {
        track.SetTime(time);
        EXPECT_EQ(track.GetValue(), value) << time;
    }
}

TEST(SteppedIntegerTrack, IsNotMovedByArithmetic)
{
    TEV2_ANIMATABLE_INT32_RLE track;
    track.Append(0.0f, 5);
    EXPECT_EQ(&track.Add(1).Subtract(3).Scale(2.0f).Divide(0.0f), &track);
    EXPECT_EQ(track.m_values, std::vector<std::int32_t>{5});
}

constexpr float kHalf = 0.70710678f;

template <typename Track>
TEV2_QUATERNION Between(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing, float fraction)
{
    const auto track = MakeTrack<Track>({{0.0f, opening}, {1.0f, closing}});
    track->SetTime(fraction);
    return track->GetValue();
}

void ExpectNear(const TEV2_QUATERNION& found, const TEV2_QUATERNION& expected, float tolerance = 1e-6f)
{
    EXPECT_NEAR(found.x, expected.x, tolerance);
    EXPECT_NEAR(found.y, expected.y, tolerance);
    EXPECT_NEAR(found.z, expected.z, tolerance);
    EXPECT_NEAR(found.w, expected.w, tolerance);
}

/// A rotation about z by an angle in radians.
TEV2_QUATERNION AboutZ(float angle)
{
    return {0.0f, 0.0f, std::sin(angle / 2.0f), std::cos(angle / 2.0f)};
}

TEST(QuaternionLerp, LeavesTheUnitSphere)
{
    ExpectNear(Between<TEV2_ANIMATABLE_QUATERNION_LERP>({0, 0, 0, 1}, {0, 0, 1, 0}, 0.5f),
               {0, 0, 0.5f, 0.5f});
    ExpectNear(Between<TEV2_ANIMATABLE_QUATERNION_LERP>({0, 0, 0, 1}, {4, 8, 0, 1}, 0.25f), {1, 2, 0, 1});
}

TEST(QuaternionSlerp, FollowsTheArc)
{
    for (const float angle : {0.5f, 1.5f, 3.0f})
        for (const float fraction : {0.0f, 0.25f, 0.5f, 0.9f, 1.0f})
        {
            ExpectNear(Between<TEV2_ANIMATABLE_QUATERNION_SLERP>({0, 0, 0, 1}, AboutZ(angle), fraction),
                       AboutZ(angle * fraction), 1e-5f);
        }
    // A negative dot product goes the long way round.
    ExpectNear(Between<TEV2_ANIMATABLE_QUATERNION_SLERP>(AboutZ(0.0f), AboutZ(5.0f), 0.5f), AboutZ(2.5f),
               1e-5f);
}

TEST(QuaternionSlerp, IsLinearOnlyAboveItsThreshold)
{
    const auto halfway = [](float dot)
    {
        return Between<TEV2_ANIMATABLE_QUATERNION_SLERP>({0, 0, 0, 1}, {std::sqrt(1 - dot * dot), 0, 0, dot},
                                                         0.5f);
    };
    const auto length = [](const TEV2_QUATERNION& q) { return std::sqrt(Dot(q, q)); };
    // On the arc halfway the length is 1, on the chord it is sqrt((1 + dot) / 2).
    EXPECT_NEAR(length(halfway(0.98f)), 1.0f, 1e-5f);
    EXPECT_NEAR(length(halfway(0.99f)), 1.0f, 1e-5f);
    EXPECT_NEAR(length(halfway(std::nextafter(0.99f, 1.0f))), std::sqrt(0.995f), 1e-5f);
    EXPECT_NEAR(length(halfway(0.995f)), std::sqrt(0.9975f), 1e-5f);
}

TEST(QuaternionTrack, MultipliesEveryKeyFromTheRight)
{
    const std::array<TEV2_QUATERNION, 3> cases[] = {
        {{{1, 2, 3, 4}, {0, 0, 0, 1}, {1, 2, 3, 4}}},     {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}},
        {{{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, -1, 0}}},    {{{0, 0, 1, 0}, {0, 0, 1, 0}, {0, 0, 0, -1}}},
        {{{1, 2, 3, 4}, {5, 6, 7, 8}, {24, 48, 48, -6}}},
    };
    for (const auto& [key, by, product] : cases)
    {
        const auto track = MakeTrack<TEV2_ANIMATABLE_QUATERNION_LERP>({{0.0f, key}, {1.0f, key}});
        track->Multiply(by);
        EXPECT_TRUE(track->m_values[0] == product);
        EXPECT_TRUE(track->m_values[1] == product);
    }
}

TEST(QuaternionTrack, MakesItsKeysContinuous)
{
    const TEV2_QUATERNION q{0.0f, 0.0f, kHalf, kHalf};
    const TEV2_QUATERNION across{kHalf, kHalf, 0.0f, 0.0f}; // dot product 0: stays
    TEV2_ANIMATABLE_QUATERNION_SLERP track;
    for (const TEV2_QUATERNION& key : {q, -q, q, across, -across, -across})
        track.Append(0.0f, key);
    track.MakeContinuous();
    const TEV2_QUATERNION expected[] = {q, q, q, across, across, across};
    for (std::size_t index = 0; index < track.m_values.size(); ++index)
        EXPECT_TRUE(track.m_values[index] == expected[index]) << index;
}

} // namespace
