#include "tests/host/scene_import/import_fixture.h"

#include <array>
#include <numbers>

namespace
{

using BvhImportTest = SceneImportTest;
using Names = std::vector<std::string>;

constexpr const char* kTwoJoints = R"(HIERARCHY
ROOT Hips
{
  OFFSET 0 0 0
  CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
  JOINT Leg
  {
    OFFSET 1 2 3
    CHANNELS 3 Zrotation Xrotation Yrotation
    End Site
    {
      OFFSET 0 -5 0
    }
  }
}
MOTION
Frames: 3
Frame Time: 0.04
0 0 0 0 0 0 0 0 0
1 2 3 90 0 0 0 0 0
3 2 3 90 0 0 0 90 0
)";

TEST_F(BvhImportTest, JointsMoveAsTheChannelsSay)
{
    const auto result = Open("walk.bvh", kTwoJoints);
    EXPECT_EQ(result.notes,
              Names{"BVH has no unit; one unit was taken as one centimetre: the figure is 0.05 m tall"});
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Hips", "Leg", "EndSite_Leg"}));
    EXPECT_EQ(TakeNames(), Names{"Motion"});
    EXPECT_DOUBLE_EQ(FBPlayerControl().GetTransportFpsValue(), 25.0);
    EXPECT_EQ(LastFrame(0), 2);

    Goto(0.0);
    ExpectRow(Global("EndSite_Leg"), 3, 1, -3, 3);
    Goto(0.04); // Hips stand at (1, 2, 3), a quarter turn about Z
    ExpectRow(Global("Hips"), 0, 0, 1, 0);
    ExpectRow(Global("Leg"), 3, 1 - 2, 2 + 1, 3 + 3);
    ExpectRow(Global("EndSite_Leg"), 3, 1 - 2 + 5, 2 + 1, 6);
    Goto(0.08); // the leg turns about its own X on top of that
    ExpectRow(Global("EndSite_Leg"), 3, 3 - 2, 2 + 1, 6 - 5);
}

TEST_F(BvhImportTest, BetweenKeysPlacesGoStraightAndTurnsAlongTheArcOutsideTheyHold)
{
    Open("walk.bvh", kTwoJoints);
    const double c = std::cos(std::numbers::pi / 8), s = std::sin(std::numbers::pi / 8);
    Goto(0.01);
    ExpectRow(Global("Hips"), 3, 0.25, 0.5, 0.75);
    ExpectRow(Global("Hips"), 0, c, s, 0);
    Goto(0.05); // backwards and forwards again: the order of the questions does not matter
    ExpectRow(Global("Hips"), 3, 1.5, 2, 3);
    Goto(0.01);
    ExpectRow(Global("Hips"), 3, 0.25, 0.5, 0.75);
    Goto(5.0);
    ExpectRow(Global("Hips"), 3, 3, 2, 3);
    Goto(-5.0);
    ExpectRow(Global("Hips"), 3, 0, 0, 0);
}

TEST_F(BvhImportTest, JointsOfOneNameKeepTheirOwnChannels)
{
    std::string text = kTwoJoints;
    text.replace(text.find("JOINT Leg"), 9, "JOINT Hips");
    const auto result = Open("twins.bvh", text);
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Hips", "Hips 1", "EndSite_Hips"}));
    ASSERT_EQ(result.notes.size(), 2u);
    EXPECT_EQ(result.notes[0], "1 duplicate name was numbered: Hips -> \"Hips 1\"");
    Goto(0.08);
    ExpectRow(Global("Hips"), 3, 3, 2, 3);
    ExpectRow(Global("EndSite_Hips"), 3, 1, 3, 1);
}

TEST_F(BvhImportTest, OnlyAnImplausibleSizeIsTold)
{
    const std::pair<const char*, const char*> cases[] = {
        {"-29", "the figure is 0.29 m tall"}, {"-30", ""}, {"999", ""}, {"1001", "the figure is 10 m tall"}};
    for (const auto& [length, told] : cases)
    {
        const auto result =
            Open("size.bvh", "HIERARCHY\nROOT a\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\nEnd Site\n"
                             "{\nOFFSET 0 " +
                                 std::string(length) + " 0\n}\n}\nMOTION\nFrames: 1\nFrame Time: 0.04\n0\n");
        ASSERT_EQ(result.notes.size(), *told ? 1u : 0u) << length;
        if (*told)
        {
            EXPECT_TRUE(result.notes[0].ends_with(told)) << result.notes[0];
        }
    }
}

// Frame times are short decimals. Whoever counts whole frames by truncation must still find every one.
TEST_F(BvhImportTest, NoFrameIsLostToTheRoundingOfTheFrameTime)
{
    for (const char* frame_time : {".0083333", "0.041667", "0.0333333", "0.016667", "0.01", "0.04166667"})
    {
        for (const int frames : {1, 2, 7, 100, 451})
        {
            std::string text =
                "HIERARCHY\nROOT a\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\nEnd Site\n{\nOFFSET 0 1 0\n}\n"
                "}\nMOTION\nFrames: " +
                std::to_string(frames) + "\nFrame Time: " + frame_time + "\n";
            for (int i = 0; i < frames; ++i)
                text += std::to_string(i) + "\n";
            Open("count.bvh", text);
            EXPECT_EQ(LastFrame(0), frames - 1) << frame_time;
            EXPECT_NEAR(FBPlayerControl().GetTransportFpsValue(), 1.0 / std::atof(frame_time), 1e-9);
            EXPECT_NEAR(StopOf(0), (frames - 1) * std::atof(frame_time), 1e-9) << frame_time;
        }
    }
}

TEST_F(BvhImportTest, TheContentDecidesWhateverTheName)
{
    Open("walk.txt", kTwoJoints);
    EXPECT_EQ(ModelNames().size(), 4u);
    Open("walk.fbx", kTwoJoints);
    EXPECT_EQ(ModelNames().size(), 4u);
    EXPECT_EQ(std::string(mobu_host::Scene().FilePath), (folder_ / "walk.fbx").string());
}

} // namespace
