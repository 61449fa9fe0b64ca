#include "tev2_loader/tracks/stepped_integer_track.h"

#include <gtest/gtest.h>

using namespace TEV2_LOADER;

namespace
{

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

} // namespace
