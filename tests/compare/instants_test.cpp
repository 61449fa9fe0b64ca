#include "compare/instants.h"
#include "tests/support/tracks.h"

#include <gtest/gtest.h>
#include <limits>

namespace
{

using namespace TEV2_LOADER;
using namespace tev2_compare;

TEV2_ANIMATABLE_FLOAT32_LINEAR TrackAt(std::initializer_list<float> times)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track;
    for (const float time : times)
        track.Append(time, 0.0f);
    return track;
}

TEST(InstantsTest, KeyTimesOfBothEndsAndWhatIsBetween)
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    const auto first = TrackAt({0.0f, 1.0f, kNaN, 9.0f});
    const auto second = TrackAt({0.5f, 1.0f, 1.00005f});
    InstantCollector collector({0.0f, 2.0f});
    collector.Add(&first);
    collector.Add(nullptr);
    collector.Add(&second);
    const Instants instants = collector.Take(100);
    EXPECT_EQ(instants.times, (std::vector{0.0f, 0.25f, 0.5f, 0.5f + (1.00005f - 0.5f) / 2, 1.00005f,
                                           1.00005f + (2.0f - 1.00005f) / 2, 2.0f}));
    EXPECT_EQ(instants.all, 7U);
}

TEST(InstantsTest, OfTooManyEveryNthAndTheLast)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track;
    for (int key = 0; key <= 1000; ++key)
        track.Append(static_cast<float>(key), 0.0f);
    InstantCollector collector({0.0f, 1000.0f});
    collector.Add(&track);
    const Instants instants = collector.Take(10);
    EXPECT_EQ(instants.all, 2001U);
    EXPECT_LE(instants.times.size(), 11U);
    EXPECT_EQ(instants.times.front(), 0.0f);
    EXPECT_EQ(instants.times.back(), 1000.0f);
}

TEST(InstantsTest, ThousandsOfTimesCloseTogetherAreNotOneInstant)
{
    TEV2_ANIMATABLE_FLOAT32_LINEAR track;
    for (int key = 0; key <= 2000; ++key)
        track.Append(static_cast<float>(key) * 0.00005f, 0.0f); // up to 0.1 s
    InstantCollector collector({0.0f, 0.1f});
    collector.Add(&track);
    EXPECT_GE(collector.Take(10'000).times.size(), 600U); // groups of at most 3, and between them
}

} // namespace
