// tv2 diff: what people read, and how it ends. What differs and how much is tested in tests/compare/.

#include "tests/tools/tool_test.h"
#include "tev2_loader/names.h"

#include <algorithm>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using DiffTest = ToolTest;

/// The hips of the sound scene are this many metres farther along Z in the middle of the take.
std::function<void(TEV2&)> MovedHips(float metres)
{
    return [metres](TEV2& scene)
    {
        scene.matrixHierarchy.nodes[1].translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
            {{0.0f, {0, 1, 0}}, {0.5f, {1, 1, metres}}, {1.0f, {0, 1, -2}}});
    };
}

TEST_F(DiffTest, SaysWhatDiffersFirstThenHowMuchAndWhere)
{
    const std::string sound = Write(SoundImage(), "sound.tv2");
    const std::string same = Write(SoundImage(), "same.tv2");
    const std::string moved = SaveSound(MovedHips(0.003f), "moved.tv2");
    const auto identical = RunTv2({"diff", sound, same});
    EXPECT_EQ(identical.exit_code, 0);
    EXPECT_EQ(identical.out, sound + " and " + same + " are identical\n");
    const auto different = RunTv2({"diff", sound, moved});
    EXPECT_EQ(different.exit_code, 1);
    EXPECT_EQ(different.out, moved + " compared with " + sound +
                                 ":\n"
                                 "  motion: 1 of 3 nodes moves differently, the worst first\n"
                                 "    \"Hips\": 3 mm at 0.5 s, first at 0.25 s\n"
                                 "    1 node follows what is above, the farthest \"Camera\": 3 mm at 0.5 s, "
                                 "first at 0.25 s\n"
                                 "  compared at 5 instants from 0 s to 1 s\n");
    EXPECT_EQ(RunTv2({"diff", "--tolerance-mm", "3.1", sound, moved}).exit_code, 0);
    const auto structure = RunTv2({"diff", "--structure", sound, moved});
    EXPECT_EQ(structure.exit_code, 0);
    ExpectParts(structure.out, {"have the same rig"});
}

TEST_F(DiffTest, NodesWithRepeatedNamesAreToldApart)
{
    // two arms, and a tip below the first
    const auto with_arms = [](TEV2& scene)
    {
        const std::pair<const char16_t*, std::int32_t> added[] = {{u"Arm", 0}, {u"Arm", 1}, {u"Tip", 3}};
        for (const auto& [name, parent] : added)
        {
            TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
            node.name = Wide(name);
            node.parentIndex = parent;
            node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {5, 0, 0}}});
        }
        scene.cameras[0]->value = 3;
    };
    const struct
    {
        void (*change)(TEV2&);
        std::vector<std::string> parts;
    } cases[] = {
        {[](TEV2& s) { s.matrixHierarchy.nodes[5].parentIndex = 4; },
         {R"("Tip" has moved, to below "Scene/Hips/Arm" from below "Scene/Arm")",
          "s, in the world: it has another parent\n"}},
        {[](TEV2& s) { s.cameras[0]->value = 4; },
         {R"(camera "Camera" is at "Scene/Hips/Arm" instead of "Scene/Arm")"}},
        {[](TEV2& s) { s.matrixHierarchy.nodes[4].name = Wide(u"Leg"); },
         {R"("Scene/Hips/Arm" is called "Leg")"}},
        {[](TEV2& s) { s.matrixHierarchy.nodes[1].rotation = nullptr; },
         {R"(the farthest "Scene/Hips/Arm": )"}},
    };
    const std::string left = SaveSound(with_arms, "left.tv2");
    for (const auto& item : cases)
    {
        const std::string right = SaveSound(
            [&](TEV2& scene)
            {
                with_arms(scene);
                item.change(scene);
            },
            "right.tv2");
        ExpectParts(RunTv2({"diff", left, right}).out, item.parts);
    }
}

TEST_F(DiffTest, DeviationsThatAddUpAreSaidToDoSo)
{
    const std::string sound = Write(SoundImage(), "sound.tv2");
    const std::string moved = SaveSound(
        [](TEV2& scene)
        {
            for (const std::size_t node : {1U, 2U}) // 3 mm each
                scene.matrixHierarchy.nodes[node].translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
                    {{0.0f, {0, 1, 0.003f}}, {0.5f, {1, 1, 0.003f}}, {1.0f, {0, 1, -1.997f}}});
        },
        "moved.tv2");
    const auto run = RunTv2({"diff", "--tolerance-mm", "5", sound, moved});
    EXPECT_EQ(run.exit_code, 1);
    ExpectParts(run.out,
                {"    \"Camera\": 6 mm at ", ", in the world: smaller deviations above it add up\n"});
}

TEST_F(DiffTest, TwentyLinesAreEnoughUnlessAllAreAskedFor)
{
    const auto with_properties = [](const char* prefix)
    {
        return [prefix](TEV2& scene)
        {
            for (int i = 0; i < 40; ++i)
                ASSERT_TRUE(SetName(scene.matrixHierarchy.nodes[1].properties.intValues.emplace_back(),
                                    prefix + std::to_string(i)));
        };
    };
    const std::string left = SaveSound(with_properties("a"), "left.tv2");
    const std::string right = SaveSound(with_properties("b"), "right.tv2");
    const auto lines = [](const std::string& text) { return std::ranges::count(text, '\n'); };
    const auto some = RunTv2({"diff", left, right});
    ExpectParts(some.out, {"    and 60 more (--all shows them)\n"});
    EXPECT_EQ(lines(some.out), 2 + 20 + 2);
    EXPECT_EQ(lines(RunTv2({"diff", "--all", left, right}).out), 2 + 80 + 1);
}

TEST_F(DiffTest, DamagedFilesCannotBeCompared)
{
    const std::string sound = Write(SoundImage());
    const std::string damaged = Write({1, 2, 3, 4}, "damaged.tv2");
    for (const auto& files : {std::pair(sound, damaged), std::pair(damaged, sound)})
    {
        const auto run = RunTv2({"diff", files.first, files.second});
        EXPECT_EQ(run.exit_code, 2); // 1 would mean that they differ
        ExpectParts(run.err, {"damaged.tv2", "bad-magic"});
    }
}

} // namespace
