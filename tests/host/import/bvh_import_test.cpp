#include "tests/host/import/import_fixture.h"
#include "tests/support/scene_texts.h"

#include <cctype>
#include <numbers>

namespace
{

using BvhImportTest = SceneImportTest;
using Names = std::vector<std::string>;
using tv2_tests::kTwoJoints;

std::string Joint(const std::string& channels, const std::string& motion, const std::string& offset = "1 2 3")
{
    return tv2_tests::OneJointBvh(offset, channels, motion);
}

TEST_F(BvhImportTest, JointsMoveAsTheChannelsSay)
{
    const auto result = Open("walk.fbx", kTwoJoints); // the content decides, not the name
    EXPECT_EQ(std::string(mobu_host::Scene().FilePath), (folder_ / "walk.fbx").string());
    EXPECT_EQ(result.notes,
              Names{"BVH has no unit; one unit was taken as one centimetre: the figure is 0.05 m tall"});
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Hips", "ns:Leg", "EndSite_ns:Leg"}));
    EXPECT_EQ(TakeNames(), Names{"Motion"});
    EXPECT_DOUBLE_EQ(FBPlayerControl().GetTransportFpsValue(), 25.0);
    EXPECT_EQ(LastFrame(0), 2);

    Goto(0.0);
    ExpectRow(Global("EndSite_ns:Leg"), 3, 1, -3, 3);
    Goto(0.04); // Hips stand at (1, 2, 3), a quarter turn about Z
    ExpectRow(Global("Hips"), 0, 0, 1, 0);
    ExpectRow(Global("ns:Leg"), 3, 1 - 2, 2 + 1, 3 + 3);
    ExpectRow(Global("EndSite_ns:Leg"), 3, 1 - 2 + 5, 2 + 1, 6);
    Goto(0.08); // the leg turns about its own X on top of that
    ExpectRow(Global("EndSite_ns:Leg"), 3, 3 - 2, 2 + 1, 6 - 5);
}

TEST_F(BvhImportTest, BetweenKeysPlacesGoStraightAndTurnsAlongTheArcOutsideTheyHold)
{
    Open("walk.bvh", kTwoJoints);
    const double c = std::cos(std::numbers::pi / 8), s = std::sin(std::numbers::pi / 8);
    Goto(0.01);
    ExpectRow(Global("Hips"), 3, 0.25, 0.5, 0.75);
    ExpectRow(Global("Hips"), 0, c, s, 0);
    Goto(5.0);
    ExpectRow(Global("Hips"), 3, 3, 2, 3);
    Goto(-5.0);
    ExpectRow(Global("Hips"), 3, 0, 0, 0);
}

// Turns about one axis between two frames are turns by the mean angle: of 30 degrees from each frame to the next.
TEST_F(BvhImportTest, TheOrderOfTimesChangesNothing)
{
    std::string motion = "Frames: 9\nFrame Time: 0.04\n";
    for (int frame = 0; frame < 9; ++frame)
        motion += std::to_string(30 * frame) + " " + std::to_string(frame) + "\n";
    Open("turn.bvh", Joint("2 Zrotation Xposition", motion));
    for (const double frame : {0.25, 0.75, 1.5, 2.0, 2.5, 4.75, 3.25, 4.25, 8.0, 7.5, 0.5, 1.5, 7.0, 7.25})
    {
        Goto(0.04 * frame);
        const double angle = 30.0 * frame * std::numbers::pi / 180.0;
        ExpectRow(Global("a"), 0, std::cos(angle), std::sin(angle), 0, 1e-6);
        ExpectRow(Global("a"), 3, frame, 2, 3, 1e-6);
    }
}

TEST_F(BvhImportTest, JointsOfOneNameKeepTheirOwnChannels)
{
    std::string text = kTwoJoints;
    text.replace(text.find("ns:Leg"), 6, "Hips");
    const auto result = Open("twins.bvh", text);
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Hips", "Hips 1", "EndSite_Hips"}));
    ASSERT_EQ(result.notes.size(), 2u);
    EXPECT_EQ(result.notes[1], "1 duplicate name was numbered: Hips -> \"Hips 1\"");
    Goto(0.08);
    ExpectRow(Global("Hips"), 3, 3, 2, 3);
    ExpectRow(Global("EndSite_Hips"), 3, 1, 3, 1);
}

TEST_F(BvhImportTest, OnlyAnImplausibleSizeIsNoted)
{
    const std::pair<const char*, const char*> cases[] = {
        {"-29", "the figure is 0.29 m tall"}, {"-30", ""}, {"999", ""}, {"1001", "the figure is 10 m tall"}};
    for (const auto& [length, told] : cases)
    {
        const auto result =
            Open("size.bvh", tv2_tests::BvhText("CHANNELS 1 Xrotation\nEnd Site\n{\nOFFSET 0 " +
                                                    std::string(length) + " 0\n}\n",
                                                "Frames: 1\nFrame Time: 0.04\n0\n"));
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
            std::string text = Joint("1 Xrotation", "Frames: " + std::to_string(frames) +
                                                        "\nFrame Time: " + frame_time + "\n");
            for (int i = 0; i < frames; ++i)
                text += std::to_string(i) + "\n";
            Open("count.bvh", text);
            EXPECT_EQ(LastFrame(0), frames - 1) << frame_time;
            EXPECT_NEAR(FBPlayerControl().GetTransportFpsValue(), 1.0 / std::atof(frame_time), 1e-9);
            EXPECT_NEAR(StopOf(0), (frames - 1) * std::atof(frame_time), 1e-9) << frame_time;
        }
    }
}

TEST_F(BvhImportTest, FilesOfOtherProgramsOpen)
{
    std::string crlf, cr;
    for (const char c : std::string(kTwoJoints))
    {
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
        cr += c == '\n' ? '\r' : c;
    }
    std::string lower_case = kTwoJoints;
    for (char& c : lower_case)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::string tabs = kTwoJoints;
    for (std::size_t at = 0; (at = tabs.find(' ', at)) != std::string::npos;)
        tabs[at] = '\t';
    std::string spread = kTwoJoints; // values over several lines, a space before the colon, plus signs
    spread.replace(spread.find("Frames:"), 7, "Frames :");
    spread.replace(spread.find("1 2 3 90"), 8, "+1 +2\n\n3 90");
    for (const std::string& text :
         {crlf, cr, lower_case, tabs, spread, "\xEF\xBB\xBF\n " + std::string(kTwoJoints)})
    {
        EXPECT_EQ(Open("walk.bvh", text).notes.size(), 1u);
        ASSERT_EQ(ModelNames().size(), 4u);
        Goto(0.04);
        FBMatrix tip;
        mobu_host::ModelsInPreOrder()[3]->GetMatrix(tip, kModelTransformation, true, nullptr);
        ExpectRow(tip, 3, 4, 3, 6);
    }
}

TEST_F(BvhImportTest, NamesAreTheRestOfTheirLineAndThereMayBeSeveralRoots)
{
    std::string text = "HIERARCHY\nROOT T\xC3\xAAte de lit {\nOFFSET 0 50 0\nCHANNELS 1 Yposition\n}\n"
                       "ROOT\n{\nOFFSET 5 0 0\nEnd Site Toe\n{\nOFFSET 0 1 0\n}\n}\n"
                       "MOTION\nFrames: 1\nFrame Time: .04\n7\n";
    EXPECT_EQ(Open("two.bvh", text).notes, Names{});
    EXPECT_EQ(ModelNames(), (Names{"Scene", "T\xC3\xAAte de lit", "Node", "Toe"}));
    Goto(0.0);
    ExpectRow(Global("T\xC3\xAAte de lit"), 3, 0, 7, 0); // a position replaces the offset, axis by axis
    ExpectRow(Global("Toe"), 3, 5, 1, 0);
}

TEST_F(BvhImportTest, ChannelsComeInAnyOrderAndTurnFromTheLastToTheFirst)
{
    Open("order.bvh",
         Joint("4 Yrotation Xposition Xrotation Zposition", "Frames: 1\nFrame Time: 0.04\n90 7 90 8\n"));
    Goto(0.0);
    ExpectRow(Global("a"), 3, 7, 2, 8);
    ExpectRow(Global("a"), 1, 1, 0, 0); // Y turns to Z about X, and on to X about Y
}

TEST_F(BvhImportTest, LinesBeyondTheFramesAreLeftOutAndNoted)
{
    const auto result = Open("more.bvh", Joint("1 Xrotation", "Frames: 1\nFrame Time: 0.04\n1\n2\n"));
    EXPECT_EQ(result.notes,
              Names{"the file has more lines than the 1 frames that it states; they are left out"});
    EXPECT_EQ(LastFrame(0), 0);
}

TEST_F(BvhImportTest, WhatIsNotBvhIsRefusedWithItsLine)
{
    const std::string sound = "Frames: 2\nFrame Time: 0.04\n";
    const std::pair<std::string, const char*> cases[] = {
        {"HIERARCHY\nMOTION", "\"MOTION\" where ROOT is expected (line 2)"},
        {"HIERARCHY\nROOT a\n{\nOFFSET 0 0", "the file ends where OFFSET is expected (line 4)"},
        {"HIERARCHY\nROOT a\n{\nOFFSET 0 0 0", "the file ends inside its hierarchy (line 4)"},
        {"HIERARCHY\nROOT a\n{\nSCALE 1\n", "\"SCALE\" where OFFSET, CHANNELS, JOINT, End Site or } is "
                                            "expected (line 4)"},
        {"HIERARCHY\nROOT " + std::string(257, 'x') + "\n{", "a name has more than 256 bytes (line 2)"},
        {Joint("1 Wrotation", sound), "\"Wrotation\" is not a channel (Xposition to Zposition, Xrotation to "
                                      "Zrotation are) (line 5)"},
        {Joint("-1", sound), "CHANNELS is not a whole number from 0 to 100 (line 5)"},
        {Joint("1 Xrotation\nCHANNELS 0", sound), "joint \"a\" has CHANNELS twice (line 6)"},
        {Joint("0", sound), "2 frames, but no joint has a channel (line 12)"},
        {Joint("1 Xrotation", sound + "0\n1e400\n"),
         "a value of the motion: \"1e400\" is out of range (line 15)"},
        {Joint("1 Xrotation", sound + "0\n0,5\n"),
         "a value of the motion: \"0,5\" is not a finite number (line 15)"},
        {Joint("1 Xrotation", sound + "0\n", "0 -nan 0"), "OFFSET: \"-nan\" is not a finite number (line 4)"},
        {Joint("2 Xrotation Yrotation", sound + "1 2\n3\n"),
         "the motion ends in frame 2 of 2, after 1 of 2 values (line 16)"},
        {Joint("1 Xrotation", sound + "1\n2 3\n"),
         "there are more values than 1 channels in 2 frames (line 15)"},
        {Joint("1 Xrotation", "Frames: 2147483648\n"),
         "Frames is not a whole number from 0 to 2147483647 (line 12)"},
        {Joint("1 Xrotation", "Frames: 1\nFrame Time: 1e-320\n1\n"),
         "a frame time must be 0.000001 seconds or more (line 13)"},
        {Joint("1 Xrotation", "Frames: 20000000\nFrame Time: 1e-5\n"),
         "the frame time is too short for so long a motion: times in single precision would coincide (line "
         "13)"},
    };
    for (const auto& [text, cause] : cases)
    {
        const std::string path = Write("refused.bvh", text);
        EXPECT_EQ(mobu_host::ImportScene(path).error, "cannot read " + path + ": " + cause);
    }
}

TEST_F(BvhImportTest, JointsNestTwoThousandDeepAndNoDeeper)
{
    const auto chain = [](int joints)
    {
        std::string text = "HIERARCHY\nROOT a\n{\nCHANNELS 1 Xposition\n", ends;
        for (int i = 1; i < joints; ++i)
            text += "JOINT b\n{\n";
        for (int i = 0; i < joints; ++i)
            ends += "}\n";
        return text + ends + "MOTION\nFrames: 1\nFrame Time: 0.04\n1\n";
    };
    Open("deep.bvh", chain(2000));
    EXPECT_EQ(ModelNames().size(), 2001u);
    for (const int joints : {2001, 100'000})
        EXPECT_NE(mobu_host::ImportScene(Write("deeper.bvh", chain(joints)))
                      .error.find("nested more than 2000 deep"),
                  std::string::npos);
}

} // namespace
