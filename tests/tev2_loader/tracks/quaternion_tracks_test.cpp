#include "tests/support/tracks.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

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
    {
        for (const float fraction : {0.0f, 0.25f, 0.5f, 0.9f, 1.0f})
        {
            ExpectNear(Between<TEV2_ANIMATABLE_QUATERNION_SLERP>({0, 0, 0, 1}, AboutZ(angle), fraction),
                       AboutZ(angle * fraction), 1e-5f);
        }
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
