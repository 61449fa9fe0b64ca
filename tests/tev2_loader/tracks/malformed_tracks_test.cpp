#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <gtest/gtest.h>
#include <limits>

using namespace TEV2_LOADER;

namespace
{

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(MalformedTrack, WithoutValuesGivesTheNeutralValue)
{
    EXPECT_EQ(TEV2_ANIMATABLE_FLOAT32_LINEAR().GetValue(), 0.0f);
    EXPECT_EQ(TEV2_ANIMATABLE_INT32_RLE().GetValue(), 0);
    EXPECT_TRUE(TEV2_ANIMATABLE_VECTOR_3_LINEAR().GetValue() == (TEV2_VECTOR_3{0, 0, 0}));
    EXPECT_TRUE(TEV2_ANIMATABLE_QUATERNION_SLERP().GetValue() == (TEV2_QUATERNION{0, 0, 0, 1}));
    EXPECT_TRUE(TEV2_ANIMATABLE_QUATERNION_LERP().GetValue() == (TEV2_QUATERNION{0, 0, 0, 1}));
}

TEST(MalformedTrack, HoldsTheLastValueBeyondItsValues)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track;
    track.m_values = {1.0f, 2.0f, 3.0f};
    TEV2_ANIMATABLE_INT32_RLE steps;
    steps.m_values = {1, 2, 3};
    for (const std::uint32_t key : {2u, 3u, 0x7FFFFFFFu, 0xFFFFFFFEu, 0xFFFFFFFFu})
    {
        track.m_current_key = steps.m_current_key = key;
        EXPECT_EQ(track.GetValue(), 3.0f) << key;
        EXPECT_EQ(steps.GetValue(), 3) << key;
    }
}

TEST(MalformedTrack, FindsItsWayFromAnyCursor)
{
    for (const std::uint32_t key : {0u, 1u, 2u, 3u, 0xFFFFFFFFu})
        for (const float fraction : {0.0f, -1e30f, 1e30f, kNan, kInfinity, -kInfinity})
            for (const bool moved_first : {false, true})
            {
                TEV2_ANIMATABLE_FLOAT32_LINEAR track;
                for (const float time : {0.0f, 1.0f, 2.0f, 3.0f})
                    track.Append(time, time);
                track.m_current_key = key;
                track.m_fraction = fraction;
                if (moved_first)
                    track.Update(0.25f);
                track.SetTime(2.5f);
                EXPECT_EQ(track.GetValue(), 2.5f);
                track.SetTime(kNan);
                EXPECT_EQ(track.GetValue(), 2.5f) << "NaN changes nothing";
                track.SetTime(5.0f);
                EXPECT_EQ(track.GetValue(), 3.0f);
                track.SetTime(1.5f);
                EXPECT_EQ(track.GetValue(), 1.5f);
            }
}

TEST(MalformedTrack, EqualTimesMakeNoNan)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track;
    for (const float time : {0.0f, 1.0f, 1.0f, 1.0f, 2.0f})
        track.Append(time, time);
    track.SetTime(2.0f);
    for (const float time : {1.0f, 0.5f, 1.0f, 1.5f, 1.0f})
    {
        track.SetTime(time);
        EXPECT_EQ(track.GetValue(), time);
    }

    TEV2_ANIMATABLE_FLOAT32_LINEAR still;
    still.Append(1.0f, 4.0f);
    still.Append(1.0f, 5.0f);
    still.SetTime(0.0f);
    still.Update(10.0f);
    EXPECT_EQ(still.m_current_key, 0u);
    EXPECT_EQ(still.m_fraction, 0.0f);
}

TEST(MalformedTrack, PlaysTimesInAnyOrder)
{
    const std::vector<float> odd[] = {
        {3.0f, 2.0f, 1.0f, 0.0f},
        {0.0f, 5.0f, 1.0f, 4.0f, 2.0f, 3.0f, 1.0f, 9.0f, 8.0f, 2.5f},
        {kNan, kNan, kNan},
        {0.0f, kNan, 2.0f, kInfinity},
        {-kInfinity, 0.0f, kInfinity},
        {1.0f, kNan, kNan, kNan, kNan, kNan, kNan, kNan, 9.0f},
    };
    for (const std::vector<float>& times : odd)
    {
        for (std::size_t values = 0; values < times.size() + 2; ++values)
        {
            TEV2_ANIMATABLE_VECTOR_3_LINEAR track;
            track.m_times = times;
            track.m_values.assign(values, {1.0f, 2.0f, 3.0f});
            for (const float time : {2.2f, -1.0f, 8.5f, 0.1f, kNan, 1e38f, 4.5f, 1.0f, kInfinity, 0.5f})
            {
                track.SetTime(time);
                EXPECT_LT(track.m_current_key + 1, times.size());
                track.GetValue();
                track.Update(time);
                EXPECT_LT(track.m_current_key + 1, times.size());
                track.GetValue();
            }
        }
    }
}

} // namespace
