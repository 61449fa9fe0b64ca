// tv2 info: what a file holds, on one screen.

#include "tests/tools/command.h"
#include "tests/tools/scene_files.h"

#include <gtest/gtest.h>

using namespace TEV2_LOADER;

namespace
{

TEST(Info, JsonSumsUpTheScene)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("scene.tv2");
    WriteBytes(path, SoundImage());
    const CommandResult result = RunTv2({"info", "--json", path});
    EXPECT_EQ(result.exit_code, 0);
    const auto file = result.Json()["files"][0];

    EXPECT_EQ(file["version"].get<float>(), 1.16F);
    EXPECT_EQ(file["creatorText"], "MotionBuilder v17.00  Tev2 Exporter v1.14");
    EXPECT_EQ(file["informationLines"], (nlohmann::json{"USERNAME:\tann", "FBX_FILE:\twalk.bvh"}));
    EXPECT_EQ(file["timeRange"], (nlohmann::json{{"start", 0.0}, {"end", 1.0}}));
    EXPECT_EQ(file["nodes"], 3);
    EXPECT_EQ(file["topNodes"], 1);
    ASSERT_EQ(file["cameras"].size(), 1U);
    EXPECT_EQ(file["cameras"][0]["name"], "Camera");
    EXPECT_EQ(file["cameras"][0]["node"], 2);
    EXPECT_EQ(file["cameras"][0]["nodeName"], "Camera");
    EXPECT_EQ(file["switcher"], (nlohmann::json{{"keys", 3}, {"cameras", {-1, 0}}}));

    const std::vector<std::tuple<int, int, int>> tracks = {{0, 3, 7}, {1, 1, 3}, {3, 4, 10},
                                                           {6, 3, 9}, {8, 2, 5}, {9, 1, 1}};
    ASSERT_EQ(file["tracks"].size(), tracks.size());
    for (std::size_t i = 0; i < tracks.size(); ++i)
    {
        const auto [kind, count, keys] = tracks[i];
        EXPECT_EQ(file["tracks"][i]["kind"], kind);
        EXPECT_EQ(file["tracks"][i]["tracks"], count) << kind;
        EXPECT_EQ(file["tracks"][i]["keys"], keys) << kind;
    }

    std::size_t bytes = 4;
    for (const auto& chunk : file["chunks"])
    {
        bytes += chunk["bytes"].get<std::size_t>();
    }
    EXPECT_EQ(bytes, SoundImage().size());
    EXPECT_EQ(file["bytes"], bytes);
}

TEST(Info, ExtentsAreThoseOfNodeOriginsInTheWorldOverAllKeys)
{
    TEV2 scene;
    for (std::int32_t i = 0; i < 2; ++i)
    {
        TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
        node.parentIndex = i - 1;
    }
    // The parent turns a quarter about Z between its keys; its child stands 2 m along its X and goes up at 3 s.
    scene.matrixHierarchy.nodes[0].translation =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0F, {1.0F, 0.0F, 0.0F}}});
    scene.matrixHierarchy.nodes[0].rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_LERP>(
        {{0.0F, {0.0F, 0.0F, 0.0F, 1.0F}}, {1.0F, {0.0F, 0.0F, 0.70710677F, 0.70710677F}}});
    scene.matrixHierarchy.nodes[1].translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{0.0F, {2.0F, 0.0F, 0.0F}}, {2.0F, {2.0F, 0.0F, 0.0F}}, {3.0F, {2.0F, 0.0F, 5.0F}}});
    scene.matrixHierarchy.nodes[1].rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0F, {}}});

    const ScratchFolder folder;
    SaveScene(scene, folder.Path("scene.tv2"));
    const auto extents = RunTv2({"info", "--json", folder.Path("scene.tv2")}).Json()["files"][0]["extents"];
    EXPECT_EQ(extents["keyTimes"], 4);
    EXPECT_EQ(extents["keyTimesEvaluated"], 4);
    const float least[] = {1.0F, 0.0F, 0.0F};
    const float most[] = {3.0F, 2.0F, 5.0F};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        EXPECT_NEAR(extents["minimum"][axis].get<float>(), least[axis], 1e-5F) << axis;
        EXPECT_NEAR(extents["maximum"][axis].get<float>(), most[axis], 1e-5F) << axis;
    }
}

TEST(Info, ScreenNamesWhatAReaderLooksFor)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("scene.tv2");
    TEV2 scene;
    FillSoundScene(scene);
    scene.cameras[0]->name = TEV2_WIDE_STRING::FromBytes("R\xC3\xBC"
                                                         "ckfahrt");
    SaveScene(scene, path);
    const CommandResult result = RunTv2({"info", path});
    EXPECT_EQ(result.exit_code, 0);
    for (const char* line :
         {"version      1.16, ", "creator      MotionBuilder v17.00  Tev2 Exporter v1.14\n",
          "USERNAME     ann\n", "time range   0.0 to 1.0 s\n", "nodes        3, first \"Scene\"\n",
          "0: \"R\xC3\xBC"
          "ckfahrt\" at node 2\n",
          "switcher     3 keys, on air: -1 0\n", "4          10  3-vector\n",
          "1         104  array lengths\n"})
    {
        EXPECT_NE(result.out.find(line), std::string::npos) << line << "\nin\n" << result.out;
    }
}

TEST(Info, WhatAFileLacksIsMissingAndNotADefault)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("cut.tv2");
    WriteBytes(path, Magic());
    const CommandResult result = RunTv2({"info", path});
    EXPECT_EQ(result.exit_code, 0);
    for (const char* line :
         {"version      missing, 4 bytes\n", "creator      missing\n", "time range   missing\n"})
    {
        EXPECT_NE(result.out.find(line), std::string::npos) << result.out;
    }
    const auto file = RunTv2({"info", "--json", path}).Json()["files"][0];
    for (const char* key : {"version", "creatorText", "timeRange"})
    {
        ASSERT_TRUE(file.contains(key)) << key;
        EXPECT_EQ(file[key], nullptr) << key;
    }
}

TEST(Info, ZeroHasNoSignInExtents)
{
    const ScratchFolder folder;
    TEV2 scene;
    scene.matrixHierarchy.nodes.emplace_back().translation =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0F, {-0.0F, -0.0F, -1.0F}}});
    SaveScene(scene, folder.Path("scene.tv2"));
    const std::string screen = RunTv2({"info", folder.Path("scene.tv2")}).out;
    EXPECT_NE(screen.find("x 0 to 0, y 0 to 0, z -1 to -1 m"), std::string::npos) << screen;
}

TEST(Info, SceneWithoutNodesHasNoExtents)
{
    const ScratchFolder folder;
    SaveScene(TEV2(), folder.Path("empty.tv2"));
    const auto file = RunTv2({"info", "--json", folder.Path("empty.tv2")}).Json()["files"][0];
    EXPECT_EQ(file["extents"], nullptr);
    EXPECT_EQ(file["switcher"], nullptr);
    EXPECT_EQ(file["nodes"], 0);
}

} // namespace
