#include "tests/support/tracks.h"
#include "tev2_playback/player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

using Keys = std::vector<std::pair<float, int>>;

/// A clip of 0 to 4 seconds whose node has "int" and "float" with these keys; the switcher has them too.
Clip ClipOf(const Keys& keys)
{
    TEV2 scene;
    scene.environment.timeRange = {0.0f, 4.0f};
    TEV2_EXTENDED_PROPERTIES& properties = scene.matrixHierarchy.nodes.emplace_back().properties;
    auto whole = std::make_unique<TEV2_ANIMATABLE_INT32_RLE>();
    auto real = std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>();
    for (const auto& [time, value] : keys)
    {
        whole->Append(time, value);
        real->Append(time, static_cast<float>(value));
    }
    scene.cameraMan.cameraIndex = CloneTrack<TEV2_ANIMATABLE_INT32>(
        std::unique_ptr<TEV2_ANIMATABLE_INT32>(std::make_unique<TEV2_ANIMATABLE_INT32_RLE>(*whole)));
    properties.intValues.emplace_back().track = std::move(whole);
    properties.floatValues.emplace_back().track = std::move(real);
    return Clip(scene);
}

template <typename Value>
std::string Text(const EventList<Value>& events)
{
    std::string text;
    for (const Event<Value>& event : events)
    {
        char line[64];
        std::snprintf(line, sizeof line, "%g:%g>%g ", static_cast<double>(event.time),
                      static_cast<double>(event.before), static_cast<double>(event.after));
        text += line;
    }
    return text;
}

/// The events of the property, which are also those of the float property and of the switcher.
std::string EventsOf(const Clip& clip, const Player& player)
{
    const std::string text = Text(player.CameraCuts());
    EXPECT_EQ(Text(player.Events(clip.FindProperty<std::int32_t>(OfNode(0), ""))), text);
    EXPECT_EQ(Text(player.Events(clip.FindProperty<float>(OfNode(0), ""))), text);
    return text;
}

const Keys kSteps = {{0.0f, 1}, {1.0f, 2}, {2.0f, 2}, {3.0f, 3}, {4.0f, 3}};
const Keys kAtEnd = {{0.0f, 1}, {4.0f, 2}};
const Keys kOutside = {{-1.0f, 1}, {0.0f, 2}, {2.0f, 3}, {9.0f, 4}};
const Keys kAtOnce = {{0.0f, 1}, {2.0f, 2}, {2.0f, 3}, {4.0f, 3}};
const Keys kLate = {{2.0f, 1}, {3.0f, 2}};

using enum Repeat;

struct PlayedCourse
{
    Keys keys;
    Repeat repeat;
    float start;
    std::vector<double> advances;
    std::vector<std::string> events; // of each
};

const PlayedCourse kPlayedCourses[] = {
    {kSteps, Once, 0.0f, {0.5, 0.5, 0.5}, {"", "1:1>2 ", ""}},
    {kSteps, Once, 0.0f, {9.0, 1.0}, {"1:1>2 3:2>3 ", ""}},
    {kSteps, Once, 1.0f, {2.0}, {"3:2>3 "}},
    // Going back passes the same keys, also where it turned exactly at one.
    {kSteps, Once, 0.0f, {1.0, -0.5, 0.5}, {"1:1>2 ", "1:2>1 ", "1:1>2 "}},
    {kSteps, Once, 4.0f, {-1.0, -1.0, -9.0}, {"", "3:3>2 ", "1:2>1 "}},
    // Nothing is an event that was not played.
    {kSteps, Once, 2.5f, {0.0, std::numeric_limits<double>::quiet_NaN()}, {"", ""}},
    {kSteps, Once, 9.0f, {0.5}, {""}},
    // The jump of a loop.
    {kSteps, Loop, 3.5f, {0.5, 0.5, 0.5}, {"0:3>1 ", "", "1:1>2 "}},
    {kSteps, Loop, 3.5f, {4.0}, {"0:3>1 1:1>2 3:2>3 "}},
    {kSteps, Loop, 2.5f, {8.0}, {"3:2>3 0:3>1 1:1>2 3:2>3 0:3>1 1:1>2 "}},
    {kSteps, Loop, 0.5f, {-0.5, -0.5, -0.5}, {"", "4:1>3 ", ""}},
    {kSteps, Loop, 1.5f, {-8.0}, {"1:2>1 4:1>3 3:3>2 1:2>1 4:1>3 3:3>2 "}},
    {kAtEnd, Loop, 3.0f, {1.0, 1.0}, {"4:1>2 0:2>1 ", ""}},
    {kAtEnd, Loop, 1.0f, {-2.0}, {"4:1>2 4:2>1 "}},
    // The turn.
    {kSteps, PingPong, 2.5f, {2.0, 1.5}, {"3:2>3 ", "3:3>2 "}},
    {kSteps, PingPong, 2.5f, {8.0}, {"3:2>3 3:3>2 1:2>1 1:1>2 "}},
    {kSteps, PingPong, 2.5f, {-6.0}, {"1:2>1 1:1>2 3:2>3 "}},
    {kAtEnd, PingPong, 3.0f, {1.0, 1.0}, {"4:1>2 ", "4:2>1 "}},
    // Keys out of the range are not reached; values before the first key are the first.
    {kOutside, Loop, 1.0f, {4.0, -4.0}, {"2:2>3 0:3>2 ", "4:2>3 2:3>2 "}},
    {kOutside, Once, 10.0f, {-3.0, -2.0}, {"2:3>2 ", ""}}, // from the end of the range
    {kLate, Loop, 0.0f, {4.0, -4.0}, {"3:1>2 0:2>1 ", "4:1>2 3:2>1 "}},
    {kAtOnce, Once, 1.0f, {2.0, -2.0}, {"2:1>2 2:2>3 ", "2:3>2 2:2>1 "}},
    {{{1.0f, 5}}, Loop, 0.0f, {9.0}, {""}},
    {{}, Loop, 0.0f, {9.0}, {""}},
    {{{0.0f, 5}, {2.0f, 5}, {4.0f, 5}}, Loop, 0.0f, {4e15}, {""}},
    {{{0.0f, 5}, {2.0f, 5}, {4.0f, 5}}, PingPong, 0.0f, {4e15}, {""}},
    {{{3.0f, 1}, {2.0f, 2}, {4.0f, 3}}, Loop, 0.0f, {9.0}, {""}}, // not ascending
};

} // namespace

TEST(Events, AreTheChangesOfWhatWasPlayed)
{
    for (const PlayedCourse& row : kPlayedCourses)
    {
        SCOPED_TRACE(testing::Message() << "row " << &row - kPlayedCourses);
        const Clip clip = ClipOf(row.keys);
        Player player(clip);
        player.SetRepeat(row.repeat);
        player.SetTime(row.start);
        EXPECT_EQ(EventsOf(clip, player), "");
        for (std::size_t step = 0; step < row.advances.size(); ++step)
        {
            player.Advance(row.advances[step]);
            EXPECT_EQ(EventsOf(clip, player), row.events[step]) << "advance " << step;
        }
        player.SetTime(2.5f);
        EXPECT_EQ(EventsOf(clip, player), "");
    }
}

TEST(Events, LeadFromValueToValueInStepsOfAnySize)
{
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round)
    {
        Keys keys;
        for (int key = 0; key < 12; ++key) // quarters of a second: all sums are exact
            keys.emplace_back(static_cast<float>(random() % 20) / 4.0f - 0.5f, random() % 3);
        std::ranges::sort(keys, {}, &std::pair<float, int>::first);
        keys.erase(std::unique(keys.begin(), keys.end(),
                               [](const auto& left, const auto& right) { return left.first == right.first; }),
                   keys.end());
        const Clip clip = ClipOf(keys);
        const auto property = clip.FindProperty<std::int32_t>(OfNode(0), "");
        Player small(clip);
        small.SetRepeat(static_cast<Repeat>(random() % 3));
        small.SetTime(static_cast<float>(random() % 17) / 4.0f);
        Player large = small;
        int value = small.Value(property);
        std::string text;
        double moved = 0.0;
        const double sign = random() % 2 == 0 ? 1.0 : -1.0;
        for (int step = 0; step < 20; ++step)
        {
            const double seconds = sign * static_cast<double>(random() % 30) / 8.0;
            small.Advance(seconds);
            moved += seconds;
            text += Text(small.Events(property));
            for (const Event<std::int32_t>& event : small.Events(property))
            {
                EXPECT_EQ(event.before, value);
                EXPECT_NE(event.before, event.after);
                value = event.after;
            }
            ASSERT_EQ(small.Value(property), value) << "round " << round << " at " << small.Time();
        }
        large.Advance(moved);
        EXPECT_EQ(large.Time(), small.Time());
        ASSERT_EQ(Text(large.Events(property)), text) << "round " << round;
    }
}

TEST(Events, CanBeLeftEarly)
{
    const Clip clip = ClipOf({{0.0f, 1}, {1.0f, 2}});
    Player player(clip);
    player.SetRepeat(Repeat::Loop);
    player.Advance(4e12);
    EXPECT_EQ(player.GetPlayhead().Wraps(), 1'000'000'000'000u);
    player.Advance(1e30);
    EXPECT_EQ(player.GetPlayhead().Wraps(), std::uint64_t{1} << 53); // as many as are counted
    int count = 0;
    for ([[maybe_unused]] const Event<std::int32_t>& event : player.CameraCuts())
        if (++count == 5)
            break;
    EXPECT_EQ(count, 5);
}

TEST(Events, TakeNaNForEqualAndVectorsComponentByComponent)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    TEV2 scene;
    scene.environment.timeRange = {0.0f, 4.0f};
    auto& values = scene.matrixHierarchy.nodes.emplace_back().properties.vector3Values;
    values.emplace_back().track =
        tv2_tests::MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {nan, 1.0f, 2.0f}},
                                                               {1.0f, {nan, 1.0f, 2.0f}},
                                                               {2.0f, {nan, 1.0f, 3.0f}},
                                                               {3.0f, {4.0f, 1.0f, 3.0f}}});
    const Clip clip(scene);
    Player player(clip);
    player.Advance(4.0);
    std::vector<float> times;
    for (const auto& event : player.Events(clip.FindProperty<TEV2_VECTOR_3>(OfNode(0), "")))
    {
        times.push_back(event.time);
        EXPECT_EQ(event.after.z, 3.0f);
    }
    EXPECT_EQ(times, (std::vector<float>{2.0f, 3.0f}));
}
