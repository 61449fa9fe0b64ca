// What the command tells about scene files.

#include "tests/tools/export/export_fixture.h"

namespace
{

using SceneVerbTest = ExportCommandTest;

TEST_F(SceneVerbTest, JsonHoldsTakesModelsLensesAndProperties)
{
    const CommandResult run = RunTv2({"scene", "--json", Path("takes.gltf")});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    const auto scene = run.Json();
    ExpectValues(scene, {{"/transportRate", 30.0},
                         {"/takes/0/name", "A b"},
                         {"/takes/0/current", true},
                         {"/takes/1/current", false},
                         {"/switcher", false},
                         {"/models/1/name", "Eye"},
                         {"/models/1/parent", "Scene"},
                         {"/models/1/type", "camera"}});
    EXPECT_EQ(scene.at("takes").size(), 3u);
    EXPECT_EQ(scene.at("systemCameras").size(), 7u);
    ASSERT_EQ(scene.at("models").size(), 2u);
    const auto eye = scene.at("models").at(1);
    EXPECT_NEAR(eye.at("lens").at("fieldOfView").get<double>(), 45.8366, 1e-3);
    EXPECT_NEAR(eye.at("lens").at("far").get<double>(), 1000.0, 1e-6);
    const nlohmann::json properties = {{{"name", "note"}, {"kind", "text"}, {"value", "left"}},
                                       {{"name", "weight"}, {"kind", "double"}, {"value", 0.5}}};
    EXPECT_EQ(eye.at("properties"), properties);
}

TEST_F(SceneVerbTest, ScreenShowsTheTree)
{
    const CommandResult run = RunTv2({"scene", Path("walk.bvh")});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    EXPECT_EQ(run.out, Path("walk.bvh") + R"(
transport rate 25 frames a second
1 take
  Motion  0 to 0.08 s, frames 0 to 2  (current)
3 models below the root
  Scene
    Hips
      ns:Leg
        EndSite_ns:Leg
7 system cameras, no camera switcher
0 constraints
note: BVH has no unit; one unit was taken as one centimetre: the figure is 0.05 m tall
)");
}

TEST_F(SceneVerbTest, WhatIsNoSceneCannotBeRead)
{
    for (const std::string& path : {folder_.Make("junk.bvh", "junk"), Path("gone.bvh")})
    {
        const CommandResult run = RunTv2({"scene", path});
        EXPECT_EQ(run.exit_code, 2);
        EXPECT_NE(run.err.find(path), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
        const auto json = RunTv2({"scene", "--json", path}).Json();
        EXPECT_EQ(json.at("file"), path);
        EXPECT_NE(json.at("error").get<std::string>().find(path), std::string::npos);
    }
}

} // namespace
