#include "tests/tev2_loader/plain_evaluation.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <tuple>

using namespace TEV2_LOADER;
namespace plain = tv2_tests::plain;

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
    const std::tuple<float, std::uint32_t, float> cases[] = {
        {-1.0f, 0, 0.0f}, {1.0f, 0, 0.0f},  {1.5f, 0, 0.5f}, {2.0f, 0, 1.0f}, {3.0f, 1, 0.5f},
        {4.0f, 1, 1.0f},  {7.0f, 2, 0.75f}, {8.0f, 2, 1.0f}, {9.0f, 2, 1.0f}, {INFINITY, 2, 1.0f},
    };
    for (const auto& [time, key, fraction] : cases)
    {
        TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({1.0f, 2.0f, 4.0f, 8.0f});
        track.SetTime(time);
        EXPECT_EQ(track.m_current_key, key) << time;
        EXPECT_EQ(track.m_fraction, fraction) << time;
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
    // From, by, and the value, ten times the time; keys are from 2 to 12.
    const std::tuple<float, float, float> cases[] = {
        {2.0f, 0.0f, 20.0f},   {2.0f, 3.0f, 50.0f},   {5.0f, -2.0f, 30.0f},  {5.0f, -9.0f, 20.0f},
        {12.0f, 0.0f, 120.0f}, {11.0f, 1.0f, 120.0f}, {12.0f, 4.0f, 60.0f},  {12.0f, 6.0f, 20.0f},
        {12.0f, 5.0f, 20.0f},  {12.0f, 10.0f, 20.0f}, {12.0f, 12.5f, 45.0f}, {12.0f, 24.0f, 60.0f},
    };
    for (const auto& [from, delta, value] : cases)
    {
        TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({2.0f, 4.0f, 8.0f, 12.0f});
        track.SetTime(from);
        track.Update(delta);
        EXPECT_NEAR(track.GetValue(), value, 1e-4f) << from << " + " << delta;
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
        const float unit =
            round % 3 == 0 ? 64.0f : 0.7f * static_cast<float>(1 + random() % 1000); // exact, rounded
        for (std::size_t key = 0; key < keys; ++key)
            fast.Append(time += static_cast<float>(1 + random() % 64) / unit, 0.0f);
        TEV2_ANIMATABLE_FLOAT32_LINEAR slow = fast;

        for (int jump = 0; jump < 200; ++jump)
        {
            // Near and far, between keys and exactly on them.
            const float span = fast.m_times.back() - fast.m_times.front();
            float to = fast.m_times[random() % keys];
            if (jump % 3 == 1)
                to = fast.m_times.front() + span * static_cast<float>(random() % 1000) / 990.0f - 0.1f;
            if (jump % 7 == 6)
                to = std::nextafter(fast.m_times[fast.m_current_key + 1], jump % 2 == 0 ? 1e9f : -1e9f);
            if (jump % 3 == 2)
                to = fast.m_times[fast.m_current_key] + static_cast<float>(random() % 200) / 100.0f - 1.0f;
            fast.SetTime(to);
            plain::SetTime(slow, to);
            ASSERT_EQ(fast.m_current_key, slow.m_current_key) << "round " << round << ", to " << to;
            ASSERT_EQ(fast.m_fraction, slow.m_fraction) << "round " << round << ", to " << to;
        }
    }
}

TEST(SetTime, GoesOnWhereThePresentTimeIsRoundedPastItsSegment)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({-0.0562151894f, 0.0060071256f, 0.25f});
    track.SetTime(0.0060071256f);
    ASSERT_EQ(track.m_current_key, 0u);
    ASSERT_EQ(track.m_fraction, 1.0f);
    const float next = 0.00600712607f;
    ASSERT_GT(next, track.m_times[1]);
    ASSERT_GT(plain::PresentTime(track), next);
    track.SetTime(next);
    EXPECT_EQ(track.m_current_key, 1u);
    EXPECT_EQ(track.m_fraction, (next - 0.0060071256f) / (0.25f - 0.0060071256f));
}

TEST(SetTime, TakesASegmentOfTheTrackWhereKeysAreMoreThanAFloatCounts)
{
    for (const std::size_t keys : {(1u << 24) - 1, (1u << 24) + 1, (1u << 24) + 5, (1u << 25) + 8})
    {
        SCOPED_TRACE(keys);
        TEV2_ANIMATABLE_FLOAT32_LINEAR track;
        std::vector<float>& times = track.m_times;
        times.assign(keys + 8, 1e30f); // the last eight, no longer of the track, would hold any time
        const float segments = static_cast<float>(keys - 2);
        for (std::size_t gone = 0; gone < 8; gone += 2)
            times[keys + gone] = -1.0f;
        times.resize(keys);
        std::fill(times.begin() + 2, times.end() - 1, 0.75f);
        times[0] = 0.0f;
        times[1] = 0.5f;
        times.back() = segments;
        // As if keys went on every half second, the time is the one of the last segment.
        track.SetTime(0.5f * segments);
        EXPECT_EQ(track.m_current_key, keys - 2);
        EXPECT_EQ(track.m_fraction, (0.5f * segments - 0.75f) / (segments - 0.75f));
        track.SetTime(2.0f * segments);
        EXPECT_EQ(track.m_current_key, keys - 2);
        EXPECT_EQ(track.m_fraction, 1.0f);
    }
}

TEST(Playback, ACursorBeyondTheKeysIsAtTheLastOne)
{
    for (const std::uint32_t key : {3u, 4u, 0xFFFFFFFFu})
    {
        TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({0.0f, 1.0f, 2.0f, 3.0f});
        track.m_current_key = key;
        track.m_fraction = 0.25f;
        EXPECT_EQ(track.GetValue(), 30.0f);
        track.Update(-0.5f);
        EXPECT_EQ(track.m_current_key, 2u);
        EXPECT_EQ(track.m_fraction, 0.5f);

        TEV2_ANIMATABLE_FLOAT32_LINEAR large = TrackAt({0.0f, 1.0f});
        large.m_values = {1e8f, 0.1f}; // 1e8 + (0.1 - 1e8) is 0
        large.m_current_key = key;
        const float stored = large.GetValue();
        large.SetTime(1.0f);
        EXPECT_EQ(stored, large.GetValue());
    }
}

TEST(Playback, EndsDoNotDependOnTheTracksBefore)
{
    const struct
    {
        std::vector<float> before; ///< has 2 in the segment that times have it in, too
        std::vector<float> times;  ///< not ascending
        std::uint32_t key;
        float fraction;
    } cases[] = {
        {{0.0f, 4.0f, 5.0f}, {0.0f, 5.0f, 1.0f}, 1, 1.0f}, // 2 is after the last key
        {{0.0f, 1.0f, 4.0f}, {3.0f, 0.0f, 5.0f}, 0, 0.0f}, // 2 is before the first
    };
    for (const auto& item : cases)
    {
        TEV2_MATRIX_HIERARCHY hierarchy;
        hierarchy.nodes.resize(2);
        for (std::size_t node = 0; node < 2; ++node)
        {
            auto track = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
            for (const float time : node == 0 ? item.before : item.times)
                track->Append(time, {});
            hierarchy.nodes[node].translation = std::move(track);
        }
        hierarchy.SetTime(2.0f);
        EXPECT_EQ(hierarchy.nodes[1].translation->m_current_key, item.key);
        EXPECT_EQ(hierarchy.nodes[1].translation->m_fraction, item.fraction);
    }
}

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
        for (const float fraction : {0.0f, -1e30f, 1e30f, NAN, INFINITY, -INFINITY})
            for (const bool moved_first : {false, true})
            {
                TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({0.0f, 1.0f, 2.0f, 3.0f});
                track.m_current_key = key;
                track.m_fraction = fraction;
                if (moved_first)
                    track.Update(0.25f);
                track.SetTime(2.5f);
                EXPECT_EQ(track.GetValue(), 25.0f);
                track.SetTime(NAN);
                EXPECT_EQ(track.GetValue(), 25.0f) << "NaN changes nothing";
                track.SetTime(5.0f);
                EXPECT_EQ(track.GetValue(), 30.0f);
                track.SetTime(1.5f);
                EXPECT_EQ(track.GetValue(), 15.0f);
            }
}

TEST(MalformedTrack, EqualTimesMakeNoNan)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track = TrackAt({0.0f, 1.0f, 1.0f, 1.0f, 2.0f});
    for (const float time : {2.0f, 1.0f, 0.5f, 1.0f, 1.5f, 1.0f})
    {
        track.SetTime(time);
        EXPECT_EQ(track.GetValue(), time * 10.0f);
    }
    TEV2_ANIMATABLE_FLOAT32_LINEAR still = TrackAt({1.0f, 1.0f});
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
        {NAN, NAN, NAN},
        {0.0f, NAN, 2.0f, INFINITY},
        {-INFINITY, 0.0f, INFINITY},
        {1.0f, NAN, NAN, NAN, NAN, NAN, NAN, NAN, 9.0f},
    };
    for (const std::vector<float>& times : odd)
        for (std::size_t values = 0; values < times.size() + 2; ++values)
        {
            TEV2_ANIMATABLE_VECTOR_3_LINEAR track;
            track.m_times = times;
            track.m_values.assign(values, {1.0f, 2.0f, 3.0f});
            for (const float time : {2.2f, -1.0f, 8.5f, 0.1f, NAN, 1e38f, 4.5f, 1.0f, INFINITY, 0.5f})
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

} // namespace
