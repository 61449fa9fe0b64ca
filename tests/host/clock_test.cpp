#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/host/scene_steps.h"

namespace mobu_host
{
namespace
{

constexpr kLongLong kSecond = 46'186'158'000;

TEST(Time, RoundsSecondsToTheNearestTick)
{
    const std::pair<double, kLongLong> cases[] = {
        {0.0, 0},
        {1.0, kSecond},
        {-2.0, -2 * kSecond},
        {1.0 / 30.0, 1'539'538'600},
        {1001.0 / 30000.0, 1'541'078'139}, // exactly ...138.6
        {0.4 / 46'186'158'000.0, 0},
        {-0.6 / 46'186'158'000.0, -1},
        {1e30, std::numeric_limits<kLongLong>::max()},
        {-1e30, -std::numeric_limits<kLongLong>::max()},
        {std::nan(""), 0},
    };
    for (const auto& [seconds, ticks] : cases)
        EXPECT_EQ(Seconds(seconds).Get(), ticks) << seconds;
    EXPECT_DOUBLE_EQ(FBTime(kSecond / 2).GetSecondDouble(), 0.5);
}

TEST(Time, SumsStopAtTheInfinities)
{
    EXPECT_EQ(FBTime::Infinity + FBTime::OneSecond, FBTime::Infinity);
    EXPECT_EQ(FBTime::MinusInfinity - FBTime::OneSecond, FBTime::MinusInfinity);
    EXPECT_EQ(FBTime::Infinity + FBTime::MinusInfinity, FBTime::Zero);
    EXPECT_EQ(FBTime(1, 2, 3), FBTime::OneHour + FBTime(2 * 60 * kSecond) + FBTime(3 * kSecond));
}

TEST(Time, FramesRoundTripAtEveryRate)
{
    NewScene();
    for (int mode = kFBTimeModeDefault; mode < kFBTimeModeCustom; ++mode)
        for (const kLongLong frame : {-7LL, 0LL, 1LL, 29LL, 107892LL})
        {
            FBTime time;
            time.SetFrame(frame, static_cast<FBTimeMode>(mode));
            EXPECT_EQ(time.GetFrame(static_cast<FBTimeMode>(mode)), frame) << mode;
            EXPECT_EQ((time - FBTime::Epsilon - FBTime::Epsilon).GetFrame(static_cast<FBTimeMode>(mode)),
                      frame - 1);
        }
}

TEST(Time, SpansKnowTheirDirection)
{
    const FBTimeSpan backward(FBTime(30), FBTime(10));
    EXPECT_EQ(FBTimeSpan(FBTime(10), FBTime(30)).GetDirection(), 1);
    EXPECT_EQ(backward.GetDirection(), -1);
    EXPECT_EQ(backward.GetDuration(), FBTime(20));
    EXPECT_EQ(backward.GetSignedDuration(), FBTime(-20));
}

TEST(Player, RatesAreExact)
{
    NewScene();
    FBPlayerControl player;
    EXPECT_EQ(player.GetTransportFpsValue(), 30.0);
    const std::pair<FBTimeMode, double> cases[] = {
        {kFBTimeMode2997Frames, 30000.0 / 1001.0},
        {kFBTimeMode23976Frames, 24000.0 / 1001.0},
        {kFBTimeMode5994Frames, 60000.0 / 1001.0},
        {kFBTimeMode119dot88Frames, 120000.0 / 1001.0},
        {kFBTimeMode25Frames, 25.0},
        {kFBTimeMode1000Frames, 1000.0},
    };
    for (const auto& [mode, rate] : cases)
    {
        EXPECT_EQ(player.GetTransportFpsValue(mode), rate);
        SetTransportRate(rate);
        EXPECT_EQ(player.GetTransportFps(), mode) << rate;
        EXPECT_EQ(player.GetTransportFpsValue(), rate);
    }
    SetTransportRate(12.5);
    EXPECT_EQ(player.GetTransportFps(), kFBTimeModeCustom);
    EXPECT_EQ(player.GetTransportFpsValue(), 12.5);
    player.SetTransportFps(kFBTimeModeCustom, 7.0);
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 7.0);
}

TEST(Player, GotoMovesTheClockAndEvaluateTheValues)
{
    NewScene();
    FBModel& model = *AddModel("Mover");
    AnimateTransform(model, *FBSystem::TheOne().CurrentTake, [](double seconds) { return At(seconds); });
    Scene().Evaluate();
    EXPECT_TRUE(FBPlayerControl().Goto(Seconds(3.0)));
    for (const double evaluated : {0.0, 3.0})
    {
        EXPECT_EQ(Now(), Seconds(3.0));
        EXPECT_EQ(EvaluatedTime(), Seconds(evaluated));
        EXPECT_EQ(X(model), evaluated);
        EXPECT_EQ(static_cast<FBVector3d>(model.Translation)[0], evaluated);
        EXPECT_TRUE(Scene().Evaluate());
    }
    EXPECT_EQ(EvaluationCount(), 3u);
}

TEST(Player, SnapsAndClampsWhereItIsToldTo)
{
    const struct
    {
        FBTransportSnapMode snap;
        bool clamp;
        double requested;
        double landed;
    } cases[] = {
        {kFBTransportSnapModeNoSnap, false, 0.51, 0.51},
        {kFBTransportSnapModeNoSnap, false, -8.0, -8.0},
        {kFBTransportSnapModePlayOnFrames, false, 0.51, 0.51},
        {kFBTransportSnapModeSnapOnFrames, false, 0.51, 0.5},
        {kFBTransportSnapModeSnapAndPlayOnFrames, false, 0.56, 0.6},
        {kFBTransportSnapModeSnapOnFrames, false, -0.16, -0.2},
        {kFBTransportSnapModeNoSnap, true, -8.0, 0.25},
        {kFBTransportSnapModeNoSnap, true, 8.0, 2.0},
        {kFBTransportSnapModeSnapOnFrames, true, 0.26, 0.3},
        {kFBTransportSnapModeSnapOnFrames, true, 0.21, 0.25},
    };
    NewScene();
    ClearTakes();
    AddTake("Span", 0.25, 2.0);
    SetTransportRate(10.0);
    FBPlayerControl player;
    for (const auto& c : cases)
    {
        player.SnapMode = c.snap;
        SceneBehaviour().clamp_goto_to_take = c.clamp;
        player.Goto(Seconds(c.requested));
        EXPECT_EQ(Now(), Seconds(c.landed)) << c.requested << " snap " << c.snap;
    }
    player.SnapMode = kFBTransportSnapModeNoSnap;
    player.GotoStart();
    EXPECT_EQ(Now(), Seconds(0.25));
    NewScene();
    EXPECT_EQ(player.SnapMode, kFBTransportSnapModeNoSnap);
    EXPECT_FALSE(SceneBehaviour().clamp_goto_to_take);
}

} // namespace
} // namespace mobu_host
