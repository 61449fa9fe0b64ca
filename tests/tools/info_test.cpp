// tv2 info: what is in a file, on one screen.

#include "tests/tools/tool_test.h"
#include "tests/tools/typed_scene.h"

#include <map>

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

TEST_F(InfoTest, JsonHasTheObjectsOfAScene)
{
    TEV2 scene;
    FillTypedScene(scene);
    const std::string path = Save(scene);
    const auto file = Info(path);
    ExpectValues(
        file,
        {{"/lights/0",
          {{"path", "lights[0]"}, {"name", "Key"}, {"type", "spot"}, {"node", 2}, {"nodeName", "Camera"}}},
         {"/lights/1",
          {{"path", "lights[1]"},
           {"name", "Sun"},
           {"type", "directional"},
           {"node", nullptr},
           {"nodeName", ""}}},
         {"/meshes/1/type", "anim"},
         {"/meshes/1/vertices", 3},
         {"/meshes/2/targets", 2},
         {"/meshes/3",
          {{"path", "weightedMeshes[0]"},
           {"name", "Body"},
           {"type", "weighted"},
           {"node", nullptr},
           {"nodeName", ""},
           {"vertices", 4},
           {"triangles", 2},
           {"bones", 2},
           {"targets", 1}}},
         {"/materials",
          {{{"path", "materials[0]"}, {"name", "Skin"}, {"type", "standard"}},
           {{"path", "materials[1]"},
            {"name", "Metal"},
            {"type", "shader"},
            {"shader", "metallic-roughness"}}}},
         {"/splines", 1},
         {"/helpers", 1},
         {"/instances", 2},
         {"/references/0", {{"path", "xrefs15[0]"}, {"type", "scene"}, {"fileName", "../sets/hall.tv2"}}},
         {"/references/2",
          {{"path", "xrefObjects[0]"},
           {"type", "object"},
           {"fileName", "props.tv2"},
           {"objectName", "Chair"}}},
         {"/kept", nlohmann::json::array()}});
    ExpectParts(RunTv2({"info", path}).out,
                {"  lights       2\n               \"Key\", spot, at node 2 \"Camera\"\n"
                 "               \"Sun\", directional, in the world\n",
                 "\"Body\", weighted, 4 vertices, 2 triangles, 2 bones, 1 target\n", "\"Skin\", standard\n",
                 "\"Metal\", shader \"metallic-roughness\"\n", "  splines      1\n", "  instances    2\n",
                 "object \"Chair\" of \"props.tv2\"\n"});
}

TEST_F(InfoTest, KeptBodiesSayWhy)
{
    const std::string path = SaveSound(
        [](TEV2& scene)
        {
            scene.helpers.push_back(std::make_unique<TEV2_HELPER>());
            scene.helpers[0]->name = Wide(u"Grip");
            scene.helpers[0]->value = 1;
            scene.helpers[0]->KeepAfterPlaced(Bytes().U32({kLayout, 2}).data);
            scene.cameras[0]->keptEffects = {1, Bytes().U32({1, 0, 7}).data};
            scene.environment.environmentMap = TEV2_MATERIAL_MAP::MakeKept(0);
            scene.environment.environmentMap->Keep({1, 2, 3});
        });
    const auto kept = Info(path)["kept"];
    ASSERT_EQ(kept.size(), 3U) << kept.dump(2);
    std::map<std::string, nlohmann::json> bodies;
    for (const auto& body : kept)
        bodies[body["path"]] = body;
    ExpectValues(
        bodies["helpers[0]"],
        {{"/class", "TEV2_HELPER"}, {"/name", "Grip"}, {"/node", 1}, {"/nodeName", "Hips"}, {"/bytes", 8}});
    const auto offset = bodies["helpers[0]"]["offset"].get<std::size_t>();
    EXPECT_EQ(WordAt(ReadBytes(path), offset), kLayout);
    EXPECT_EQ(bodies["helpers[0]"]["reason"],
              "shape at byte " + std::to_string(offset + 4) + ": expected below 2, found 2");
    EXPECT_EQ(bodies["cameras[0].keptEffects"]["bytes"], 12);
    EXPECT_EQ(bodies["environment.environmentMap"]["bytes"], 3);
    ExpectParts(RunTv2({"info", path}).out,
                {"  kept         3\n",
                 "helpers[0] \"Grip\" at node 1 \"Hips\", kept as bytes, 8 bytes, because shape at"});
    ExpectParts(
        RunTv2({"info", Write(FileOfVersion(1.13f).Chunk(17, Bytes().U32(7)).data)}).out,
        {"helpers[0], kept as bytes, 4 bytes, because the file has version 1.13, not version 1.16\n"});
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
