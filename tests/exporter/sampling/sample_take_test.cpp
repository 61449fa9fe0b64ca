#include "exporter/sampling/take_span.h"
#include "tests/exporter/export_fixture.h"

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

class SampleTake : public ExportTest
{
protected:
    // The instants at which the exporter evaluates the scene, the last one (putting the player back) left
    // out.
    std::vector<float> EvaluatedInstants()
    {
        std::vector<float> instants;
        mobu_host::SceneObserver observer({{}, [&](FBTime time, FBTake*) {
                                               instants.push_back(static_cast<float>(time.GetSecondDouble()));
                                           }});
        EXPECT_EQ(Run(), 1u);
        instants.pop_back();
        return instants;
    }
};

using Instants = std::vector<float>;

TEST_F(SampleTake, EvaluatesOnceAtEveryInstant)
{
    OneTake(1.0);
    options_.SamplingRate = 4.0f;
    EXPECT_EQ(EvaluatedInstants(), (Instants{0.0f, 0.25f, 0.5f, 0.75f, 1.0f}));
    options_.SamplingRate = 1.0f;
    EXPECT_EQ(EvaluatedInstants(), (Instants{0.0f, 1.0f}));
    options_.SamplingRate = 0.0f;
    EXPECT_EQ(EvaluatedInstants(), (Instants{0.0f, 1.0f}));
}

TEST_F(SampleTake, AlignsTheTakeToWholeFrames)
{
    mobu_host::ClearTakes();
    mobu_host::SetTransportRate(10.0);
    FBTake* take = mobu_host::AddTake("T", -0.17, 0.19); // frames -1.7 and 1.9, truncated toward zero
    FBSystem().CurrentTake = take;
    ExportContext context;
    const TakeFrameSpan frames = GetTakeFrameSpan(context);
    EXPECT_EQ(frames.start_frame, -1);
    EXPECT_EQ(frames.stop_frame, 1);
    const TakeSecondSpan seconds = GetTakeSecondSpan(context);
    EXPECT_EQ(seconds.start, -0.1f);
    EXPECT_EQ(seconds.stop, 0.1f);
}

TEST_F(SampleTake, ClampsTheCustomRangeIntoTheTake)
{
    OneTake(2.0);
    options_.UseCustomRange = 1;
    struct
    {
        float start, end;
        Instants expected;
    } const cases[] = {
        {0.5f, 1.0f, {0.5f, 0.75f, 1.0f}}, {-3.0f, 0.25f, {0.0f, 0.25f}}, {1.75f, 9.0f, {1.75f, 2.0f}},
        {0.5f, 0.5f, {0.5f, 0.5f}},        {1.0f, 0.5f, {1.0f, 0.5f}}, // reversed: its two ends
    };
    for (const auto& c : cases)
    {
        options_.CustomStart = c.start;
        options_.CustomEnd = c.end;
        EXPECT_EQ(EvaluatedInstants(), c.expected) << c.start << " to " << c.end;
    }
}

TEST_F(SampleTake, GuardsAgainstAPlayerThatLandsElsewhere)
{
    // Ends 1/40 s off the nearest frame of 10 a second: snapping lands more than 0.01 s away from them.
    mobu_host::SetTransportRate(10.0);
    OneTake(1.0);
    FBPlayerControl player;
    player.SnapMode = kFBTransportSnapModeSnapOnFrames;
    options_.SamplingRate = 1.0f;
    options_.UseCustomRange = 1;
    options_.CustomStart = 0.125f;
    options_.CustomEnd = 0.875f;
    EXPECT_EQ(EvaluatedInstants(), (Instants{0.1f, 0.0f, 0.9f, 1.0f}));
    // A landing within 0.01 s is accepted.
    options_.CustomStart = 0.105f;
    options_.CustomEnd = 0.895f;
    EXPECT_EQ(EvaluatedInstants(), (Instants{0.1f, 0.9f}));
    player.SnapMode = kFBTransportSnapModeNoSnap;
}

} // namespace
} // namespace tev2_exporter
