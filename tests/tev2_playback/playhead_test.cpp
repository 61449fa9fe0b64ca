#include "tev2_playback/playhead.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace TEV2_PLAYBACK;

namespace
{

constexpr double kEndless = std::numeric_limits<double>::infinity();
constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();
using enum Repeat;

/// Of a range of 1 to 3 seconds.
struct Course
{
    Repeat repeat;
    double speed;
    float start;
    std::vector<double> steps;
    float time;
    int direction;
    std::uint64_t wraps; // of the last step
    bool ended;
};

const Course kCourses[] = {
    {Once, 1.0, 1.0f, {0.5}, 1.5f, 1, 0, false},
    {Once, 1.0, 1.0f, {2.0}, 3.0f, 1, 0, true},
    {Once, 1.0, 1.0f, {9.0, 0.5}, 3.0f, 1, 0, true},
    {Once, 1.0, 1.0f, {9.0, -0.5}, 2.5f, 1, 0, false},
    {Once, 1.0, 1.0f, {-0.5}, 1.0f, 1, 0, false},
    {Once, -2.0, 3.0f, {0.5}, 2.0f, -1, 0, false},
    {Once, -2.0, 3.0f, {1.5}, 1.0f, -1, 0, true},
    {Once, 0.0, 3.0f, {1.5}, 3.0f, 0, 0, false},
    {Loop, 1.0, 1.0f, {0.5}, 1.5f, 1, 0, false},
    {Loop, 1.0, 1.0f, {2.0}, 1.0f, 1, 1, false},
    {Loop, 1.0, 1.0f, {1.5, 1.0}, 1.5f, 1, 1, false},
    {Loop, 1.0, 1.0f, {1.5, 1.0, 0.5}, 2.0f, 1, 0, false},
    {Loop, 1.0, 1.5f, {2000.25}, 1.75f, 1, 1000, false},
    {Loop, 1.0, 3.0f, {0.5}, 1.5f, 1, 1, false},
    {Loop, 1.0, 3.0f, {-0.5}, 2.5f, 1, 0, false},
    {Loop, -1.0, 1.5f, {0.5}, 1.0f, -1, 0, false},
    {Loop, -1.0, 1.5f, {0.5, 0.5}, 2.5f, -1, 1, false},
    {Loop, -1.0, 1.5f, {5.0}, 2.5f, -1, 3, false},
    {PingPong, 1.0, 1.0f, {1.5}, 2.5f, 1, 0, false},
    {PingPong, 1.0, 1.0f, {2.0}, 3.0f, 1, 0, false},
    {PingPong, 1.0, 1.0f, {2.0, 0.5}, 2.5f, -1, 1, false},
    {PingPong, 1.0, 1.0f, {2.5, 0.5}, 2.0f, -1, 0, false},
    {PingPong, 1.0, 1.0f, {2.5, 1.5}, 1.0f, -1, 0, false},
    {PingPong, 1.0, 1.0f, {2.5, 1.5, 0.25}, 1.25f, 1, 1, false},
    {PingPong, 1.0, 1.0f, {2.5, -0.75}, 2.75f, 1, 1, false},
    {PingPong, 1.0, 1.0f, {4000.5}, 1.5f, 1, 2000, false},
    {PingPong, 1.0, 1.0f, {4002.5}, 2.5f, -1, 2001, false},
    {PingPong, -1.0, 2.0f, {1.5}, 1.5f, 1, 1, false},
    {PingPong, -1.0, 2.0f, {1.5, 2.0}, 2.5f, -1, 1, false},
    // Sums that are short of the end by less than a float can tell.
    {Once, 1.0, 1.0f, std::vector<double>(120, 1.0 / 60), 3.0f, 1, 0, true},
    {Loop, 1.0, 1.0f, std::vector<double>(120, 1.0 / 60), 3.0f, 1, 0, false},
    // From outside, and after what is not a time.
    {Once, 1.0, 9.0f, {0.5}, 3.0f, 1, 0, true},
    {Loop, 1.0, -9.0f, {0.5}, 1.5f, 1, 0, false},
    {Loop, 1.0, 9.0f, {}, 9.0f, 1, 0, false},
    {PingPong, 1.0, std::numeric_limits<float>::quiet_NaN(), {0.5}, 1.5f, 1, 0, false},
    {PingPong, 1.0, std::numeric_limits<float>::infinity(), {0.5}, 2.5f, -1, 1, false},
    // What moves nothing.
    {Loop, 1.0, 1.5f, {kNoTime}, 1.5f, 1, 0, false},
    {Loop, 1.0, 1.5f, {kEndless, 0.25}, 1.75f, 1, 0, false},
    {PingPong, 1.0, 1.5f, {-kEndless, 0.0}, 1.5f, 1, 0, false},
    {Once, kNoTime, 1.5f, {0.5}, 1.5f, 0, 0, false},
    {Once, kEndless, 1.5f, {0.5, 0.0}, 1.5f, 1, 0, false},
    {Loop, 1e300, 1.5f, {1e300}, 1.5f, 1, 0, false},
};

} // namespace

TEST(Playhead, GoesRoundItsRange)
{
    for (const Course& row : kCourses)
    {
        SCOPED_TRACE(testing::Message() << "row " << &row - kCourses);
        Playhead playhead(1.0f, 3.0f);
        EXPECT_EQ(playhead.Time(), 1.0f);
        playhead.SetRepeat(row.repeat);
        playhead.SetSpeed(row.speed);
        playhead.SetTime(row.start);
        for (const double step : row.steps)
            playhead.Advance(step);
        EXPECT_EQ(playhead.Time(), row.time);
        EXPECT_EQ(playhead.Direction(), row.direction);
        EXPECT_EQ(playhead.Wraps(), row.wraps);
        EXPECT_EQ(playhead.HasEnded(), row.ended);
    }
}

TEST(Playhead, TurnsToTheSpeedsDirection)
{
    Playhead playhead(1.0f, 3.0f);
    for (int way = 0; way < 2; ++way)
    {
        playhead.SetRepeat(PingPong);
        playhead.SetTime(1.0f);
        playhead.Advance(2.5);
        EXPECT_EQ(playhead.Direction(), -1);
        if (way == 0)
            playhead.SetTime(1.5f);
        else
            playhead.SetRepeat(Loop);
        EXPECT_EQ(playhead.Direction(), 1);
    }
}

TEST(Playhead, IsAtTheRightFrameAfterHours)
{
    for (const Repeat repeat : {Loop, PingPong})
    {
        for (const double speed : {1.0, -1.0})
        {
            // 77 frames at 60 a second, from a time that no float has; 10 hours.
            constexpr int kFrames = 77;
            const float begin = 0.1f;
            const float end = begin + static_cast<float>(kFrames) / 60.0f;
            const double length = static_cast<double>(end) - static_cast<double>(begin);
            Playhead playhead(begin, end);
            playhead.SetRepeat(repeat);
            playhead.SetSpeed(speed * length / (kFrames / 60.0)); // the range is no float either
            std::int64_t wrong = 0;
            for (std::int64_t step = 1; step <= 10 * 3600 * 60; ++step)
            {
                playhead.Advance(1.0 / 60.0);
                std::int64_t frame = step % (repeat == Loop ? kFrames : 2 * kFrames);
                if (repeat == PingPong && frame > kFrames)
                    frame = 2 * kFrames - frame;
                if (repeat == Loop && speed < 0.0)
                    frame = kFrames - frame;
                const double at = (static_cast<double>(playhead.Time()) - static_cast<double>(begin)) * 60.0;
                const double off = std::fabs(at - static_cast<double>(frame));
                // The begin of a loop is its end.
                wrong += std::min(off, repeat == Loop ? std::fabs(off - kFrames) : off) > 1e-4;
            }
            EXPECT_EQ(wrong, 0) << static_cast<int>(repeat) << " " << speed;
        }
    }
}

TEST(Playhead, StaysWhereARangeHasNoLength)
{
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const float nan = std::nanf("");
    const struct
    {
        float begin, end, time;
    } rows[] = {{2.0f, 2.0f, 2.0f},  {2.0f, 1.0f, 2.0f}, {2.0f, kInf, 2.0f}, {2.0f, nan, 2.0f},
                {-kInf, 1.0f, 0.0f}, {nan, 1.0f, 0.0f},  {nan, nan, 0.0f}};
    for (const auto& row : rows)
    {
        for (const Repeat repeat : {Once, Loop, PingPong})
        {
            Playhead playhead(row.begin, row.end);
            playhead.SetRepeat(repeat);
            EXPECT_EQ(playhead.Time(), row.time);
            playhead.SetTime(7.0f);
            EXPECT_EQ(playhead.Time(), 7.0f);
            for (const double step : {0.5, -0.75, 1e30})
            {
                playhead.Advance(step);
                EXPECT_EQ(playhead.Time(), row.time);
                EXPECT_EQ(playhead.Wraps(), 0u);
            }
        }
    }
    // The longest of all ranges.
    Playhead playhead(std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max());
    playhead.SetRepeat(Loop);
    playhead.Advance(static_cast<double>(std::numeric_limits<float>::max()) * 2.5);
    EXPECT_EQ(playhead.Time(), -std::numeric_limits<float>::max() / 2.0f);
    EXPECT_EQ(playhead.Wraps(), 1u);
}
