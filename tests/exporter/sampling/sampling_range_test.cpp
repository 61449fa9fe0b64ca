#include "exporter/base/clamped_cast.h"
#include "exporter/sampling/sampling_range.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace tev2_exporter
{
namespace
{

std::vector<float> Regular(const SamplingRange& range)
{
    std::vector<float> times;
    RegularInstants instants(range);
    while (times.size() < 100000 && instants.Next())
        times.push_back(instants.Time());
    return times;
}

TEST(SamplingRange, AccumulatesItsInstantsInSinglePrecision)
{
    const std::vector<float> times = Regular({0.0f, 1.0f, 30.0f});
    const float step = 1.0f / 30.0f;
    float expected = 0.0f;
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        expected += step;
        EXPECT_EQ(times[i], expected) << i;
        EXPECT_LT(times[i], 1.0f) << i;
    }
    EXPECT_FALSE(expected + step < 1.0f);
    // Thirty steps of 1/30 do not meet 1 in single precision; a time recomputed as i / 30 would.
    EXPECT_NE(times[20], 21.0f * step);
}

TEST(SamplingRange, EndsItsInstantsWhereTimeStandsStill)
{
    const float inf = std::numeric_limits<float>::infinity();
    struct
    {
        const char* what;
        SamplingRange range;
        std::size_t instants;
        bool advances;
    } const cases[] = {
        {"end not more than a step away", {0.0f, 0.02f, 50.0f}, 0, true},
        {"start and end at one instant", {0.5f, 0.5f, 30.0f}, 0, true},
        {"end before start", {1.0f, 0.0f, 30.0f}, 0, true},
        {"two seconds of four a second", {0.0f, 2.0f, 4.0f}, 7, true},
        {"negative times", {-1.0f, 1.0f, 1.0f}, 1, true},
        {"rate 0", {0.0f, 1.0f, 0.0f}, 0, false},
        {"negative rate", {0.0f, 1.0f, -30.0f}, 0, false},
        {"step lost beside the start", {1.0f, 2.0f, 1e9f}, 0, false},
        {"NaN", {0.0f, 1.0f, std::nanf("")}, 0, false},
        {"endless rate", {0.0f, 1.0f, inf}, 0, false},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(Regular(c.range).size(), c.instants) << c.what;
        EXPECT_EQ(TimeAdvances(c.range), c.advances) << c.what;
    }
}

TEST(ToInt32, TruncatesAndClamps)
{
    const std::pair<double, std::int32_t> cases[] = {
        {2.9, 2},           {-2.9, -2},          {-0.0, 0},         {2147483647.9, INT32_MAX},
        {1e300, INT32_MAX}, {-1e300, INT32_MIN}, {std::nan(""), 0}, {-HUGE_VAL, INT32_MIN}};
    for (const auto& [value, whole] : cases)
        EXPECT_EQ(ToInt32(value), whole) << value;
}

TEST(SamplingRange, ReservesWithinReason)
{
    EXPECT_EQ(ReservedKeys({0.0f, 1.0f, 30.0f}), 32u);
    EXPECT_EQ(ReservedKeys({0.0f, 0.05f, 30.0f}), 3u); // 3.5 truncated
    EXPECT_EQ(ReservedKeys({1.0f, 0.0f, 30.0f}), 0u);
    EXPECT_EQ(ReservedKeys({0.0f, 1.0f, std::nanf("")}), 0u);
    EXPECT_EQ(ReservedKeys({0.0f, 1e6f, 1e9f}), 1048576u);
}

} // namespace
} // namespace tev2_exporter
