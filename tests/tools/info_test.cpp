// tv2 info: what is in a file, on one screen.

#include "tests/tools/tool_test.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using InfoTest = ToolTest;

nlohmann::json Info(const std::string& path)
{
    return FileOf(RunTv2({"info", "--json", path}));
}

TEST_F(InfoTest, JsonSumsUpTheScene)
{
    const auto file = Info(Write(SoundImage()));
    ExpectValues(file,
                 {
                     {"/creatorText", "MotionBuilder v17.00  Tev2 Exporter v1.14"},
                     {"/informationLines", {"USERNAME:\tann", "FBX_FILE:\twalk.bvh"}},
                     {"/timeRange", {{"start", 0.0}, {"end", 1.0}}},
                     {"/nodes", 3},
                     {"/topNodes", 1},
                     {"/bytes", SoundImage().size()},
                     {"/cameras",
                      {{{"name", "Camera"}, {"node", 2}, {"nodeName", "Camera"}, {"inverseAspect", 0.75}}}},
                     {"/switcher", {{"keys", 3}, {"cameras", {-1, 0}}}},
                 });
    EXPECT_EQ(file["version"].get<float>(), 1.16f);

    const std::vector<std::vector<int>> tracks = {{0, 3, 7}, {1, 1, 3}, {3, 4, 10},
                                                  {6, 3, 9}, {8, 2, 5}, {9, 1, 1}};
    std::vector<std::vector<int>> found;
    for (const auto& track : file["tracks"])
        found.push_back({track["kind"], track["tracks"], track["keys"]});
    EXPECT_EQ(found, tracks);

    std::size_t bytes = 4; // the magic
    for (const auto& chunk : file["chunks"])
        bytes += chunk["bytes"].get<std::size_t>();
    EXPECT_EQ(bytes, SoundImage().size());
}

TEST_F(InfoTest, ExtentsAreThoseOfNodeOriginsInTheWorldOverAllKeys)
{
    TEV2 scene;
    for (std::int32_t i = 0; i < 2; ++i)
        scene.matrixHierarchy.nodes.emplace_back().parentIndex = i - 1;
    // The parent turns a quarter about Z between its keys; its child stands 2 m along its X and goes up at 3 s.
    TEV2_MATRIX_NODE& parent = scene.matrixHierarchy.nodes[0];
    TEV2_MATRIX_NODE& child = scene.matrixHierarchy.nodes[1];
    parent.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1.0f, 0.0f, 0.0f}}});
    parent.rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_LERP>(
        {{0.0f, {0.0f, 0.0f, 0.0f, 1.0f}}, {1.0f, {0.0f, 0.0f, 0.70710677f, 0.70710677f}}});
    child.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{0.0f, {2.0f, 0.0f, 0.0f}}, {2.0f, {2.0f, 0.0f, 0.0f}}, {3.0f, {2.0f, 0.0f, 5.0f}}});
    child.rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0f, {}}});

    const auto extents = Info(Save(scene))["extents"];
    EXPECT_EQ(extents["keyTimes"], 4);
    EXPECT_EQ(extents["keyTimesEvaluated"], 4);
    const float least[] = {1.0f, 0.0f, 0.0f};
    const float most[] = {3.0f, 2.0f, 5.0f};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        EXPECT_NEAR(extents["minimum"][axis].get<float>(), least[axis], 1e-5f) << axis;
        EXPECT_NEAR(extents["maximum"][axis].get<float>(), most[axis], 1e-5f) << axis;
    }
}

TEST_F(InfoTest, ScreenNamesWhatAReaderLooksFor)
{
    const std::string name = "H\xC3\xBCpfen";
    const std::string path =
        SaveSound([&](TEV2& scene) { scene.cameras[0]->name = TEV2_WIDE_STRING::FromBytes(name); });
    ExpectParts(RunTv2({"info", path}).out,
                {"version      1.16, ", "creator      MotionBuilder v17.00  Tev2 Exporter v1.14\n",
                 "USERNAME     ann\n", "time range   0.0 to 1.0 s\n", "nodes        3, first \"Scene\"\n",
                 "0: \"" + name + "\" at node 2\n",
                 "switcher     3 keys, active cameras: none (not exported), 0\n", "4          10  3-vector\n",
                 "1         104  array lengths\n"});
}

TEST_F(InfoTest, WhatAFileLacksIsMissingAndNotADefault)
{
    const std::string path = Write(Bytes().U32(kMagic).data);
    ExpectParts(RunTv2({"info", path}).out,
                {"version      missing, 4 bytes\n", "creator      missing\n", "time range   missing\n"});
    const auto file = Info(path);
    for (const char* key : {"version", "creatorText", "timeRange"})
        EXPECT_EQ(file.at(key), nullptr) << key;
}

TEST_F(InfoTest, ExtentsNeedNodesAndHaveNoMinusZero)
{
    TEV2 scene;
    const auto file = Info(Save(scene));
    EXPECT_EQ(file["extents"], nullptr);
    EXPECT_EQ(file["switcher"], nullptr);
    EXPECT_EQ(file["nodes"], 0);
    scene.matrixHierarchy.nodes.emplace_back().translation =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {-0.0f, -0.0f, -1.0f}}});
    ExpectParts(RunTv2({"info", Save(scene)}).out, {"x 0 to 0, y 0 to 0, z -1 to -1 m"}); // 0 has no sign
}

} // namespace
