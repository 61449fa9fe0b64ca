#include "tests/tev2_loader/plain_evaluation.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace TEV2_LOADER;
namespace plain = tev2_tests::plain;

namespace
{

TEV2_ANIMATABLE_FLOAT32_LINEAR TrackAt(const std::vector<float>& times)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track;
    for (const float time : times)
        track.Append(time, time * 10.0f);
    return track;
}

TEST(SetTime, PlacesTheCursor)
{
    struct Case
    {
        float time;
        std::uint32_t key;
        float fraction;
    };
    const Case cases[] = {
        {-1.0f, 0, 0.0f}, {1.0f, 0, 0.0f},
        {1.5f, 0, 0.5f},  {2.0f, 0, 1.0f},
        {3.0f, 1, 0.5f},  {4.0f, 1, 1.0f},
        {7.0f, 2, 0.75f}, {8.0f, 2, 1.0f},
        {9.0f, 2, 1.0f},  {std::numeric_limits<float>::infinity(), 2, 1.0f},
    };
    for (const Case& item : cases)
    {
        TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({1.0f, 2.0f, 4.0f, 8.0f});
        track.SetTime(item.time);
        EXPECT_EQ(track.m_current_key, item.key) << item.time;
        EXPECT_EQ(track.m_fraction, item.fraction) << item.time;
    }
}

TEST(SetTime, ComingFromBehindTakesTheSegmentThatTheTimeOpens)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f});
    track.SetTime(9.0f);
    track.SetTime(1.0f);
    EXPECT_EQ(track.m_current_key, 1u);
    EXPECT_EQ(track.m_fraction, 0.0f);
    track.SetTime(7.0f);
    EXPECT_EQ(track.m_current_key, 6u);
    EXPECT_EQ(track.m_fraction, 1.0f);
}

TEST(Playback, ChangesNothingWithFewerThanTwoKeys)
{
    for (const std::vector<float>& times : {std::vector<float>{}, std::vector<float>{3.0f}})
    {
        TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt(times);
        track.m_current_key = 4;
        track.m_fraction = 0.5f;
        track.SetTime(100.0f);
        track.Update(1.0f);
        EXPECT_EQ(track.m_current_key, 4u);
        EXPECT_EQ(track.m_fraction, 0.5f);
    }
}

TEST(Update, MovesOnAndWraps)
{
    struct Case
    {
        float from;
        float delta;
        float value;
    };
    // Two to twelve, the value ten times the time.
    const Case cases[] = {
        {2.0f, 0.0f, 20.0f},   {2.0f, 3.0f, 50.0f},   {5.0f, -2.0f, 30.0f},  {5.0f, -9.0f, 20.0f},
        {12.0f, 0.0f, 120.0f}, {11.0f, 1.0f, 120.0f}, {12.0f, 4.0f, 60.0f},  {12.0f, 6.0f, 20.0f},
        {12.0f, 5.0f, 20.0f},  {12.0f, 10.0f, 20.0f}, {12.0f, 12.5f, 45.0f}, {12.0f, 24.0f, 60.0f},
    };
    for (const Case& item : cases)
    {
        TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({2.0f, 4.0f, 8.0f, 12.0f});
        track.SetTime(item.from);
        track.Update(item.delta);
        EXPECT_NEAR(track.GetValue(), item.value, 1e-4f) << item.from << " + " << item.delta;
    }
}

TEST(SetTime, FindsWhatASearchKeyByKeyFinds)
{
    std::mt19937 random(20170401);
    for (int round = 0; round < 200; ++round)
    {
        const std::size_t keys = 2 + random() % (round % 2 == 0 ? 8 : 400);
        TEV2_ANIMATABLE_FLOAT32_LINEAR fast;
        float time = -1.0f;
        for (std::size_t key = 0; key < keys; ++key)
            fast.Append(time += static_cast<float>(1 + random() % 64) / 64.0f, 0.0f);
        TEV2_ANIMATABLE_FLOAT32_LINEAR slow = fast;

        for (int jump = 0; jump < 200; ++jump)
        {
            // Near and far, between keys and exactly on them.
            const float span = fast.m_times.back() - fast.m_times.front();
            float to = fast.m_times[random() % keys];
            if (jump % 3 == 1)
                to = fast.m_times.front() + span * static_cast<float>(random() % 1000) / 990.0f - 0.1f;
            if (jump % 3 == 2)
                to = fast.m_times[fast.m_current_key] + static_cast<float>(random() % 200) / 100.0f - 1.0f;
            fast.SetTime(to);
            plain::SetTime(slow, to);
            ASSERT_EQ(fast.m_current_key, slow.m_current_key) << "round " << round << ", to " << to;
            ASSERT_EQ(fast.m_fraction, slow.m_fraction) << "round " << round << ", to " << to;
        }
    }
}

} // namespace
