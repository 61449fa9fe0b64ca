#include "tests/host/import/import_fixture.h"

#include <numbers>

namespace
{

using ColladaImportTest = SceneImportTest;
using Names = std::vector<std::string>;

std::string ColladaDocument(const std::string& asset, const std::string& libraries, const std::string& nodes)
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset>)" + asset +
           "</asset>" + libraries + R"(<library_visual_scenes><visual_scene id="vs" name="Whole">)" + nodes +
           R"(</visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#vs"/></scene></COLLADA>)";
}

constexpr const char* kInchesZUp = R"(<unit meter="0.0254" name="inch"/><up_axis>Z_UP</up_axis>)";
constexpr const char* kMetresYUp = R"(<unit meter="1" name="meter"/><up_axis>Y_UP</up_axis>)";

// Moves node "n1" from (0, 0, 0) to (2, 4, 6) in two seconds.
std::string Animation(const std::string& interpolation)
{
    return R"(<library_animations><animation id="move" name="Move">
<source id="in"><float_array id="in-a" count="2">0 2</float_array><technique_common>
<accessor source="#in-a" count="2"><param name="TIME" type="float"/></accessor></technique_common></source>
<source id="out"><float_array id="out-a" count="6">0 0 0 2 4 6</float_array><technique_common>
<accessor source="#out-a" count="2" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source>
<source id="how"><Name_array id="how-a" count="2">)" +
           interpolation + " " + interpolation + R"(</Name_array><technique_common>
<accessor source="#how-a" count="2"><param name="INTERPOLATION" type="name"/></accessor></technique_common></source>
<sampler id="s"><input semantic="INPUT" source="#in"/><input semantic="OUTPUT" source="#out"/>
<input semantic="INTERPOLATION" source="#how"/></sampler>
<channel source="#s" target="n1/t"/></animation></library_animations>)";
}

TEST_F(ColladaImportTest, UnitAndUpAxisAreAppliedOnce)
{
    Open("a.dae",
         ColladaDocument(kInchesZUp, "", R"(<node id="n1" name="Top"><translate sid="t">1 2 3</translate>
<node id="n2" name="Below"><translate>0 0 10</translate></node></node>)"));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Top", "Below"}));
    ExpectRow(Global("Scene"), 0, 1, 0, 0);
    ExpectRow(Global("Top"), 3, 2.54, 7.62, -5.08);
    ExpectRow(Global("Top"), 0, 1, 0, 0); // no unit in the axes
    ExpectRow(Global("Top"), 2, 0, 1, 0); // its Z points up
    ExpectRow(Global("Below"), 3, 2.54, 33.02, -5.08);
}

TEST_F(ColladaImportTest, AnimationStandsInTheSameSpace)
{
    const auto result = Open(
        "a.dae", ColladaDocument(kInchesZUp, Animation("LINEAR"),
                                 R"(<node id="n1" name="Top"><translate sid="t">1 2 3</translate></node>)"));
    EXPECT_TRUE(result.notes.empty());
    EXPECT_EQ(StopOf(0), 2.0);
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 24.0); // the lowest with frames at 0 and 2 s
    Goto(1.0);
    ExpectRow(Global("Top"), 3, 1 * 2.54, 3 * 2.54, -2 * 2.54);
    ExpectRow(Global("Top"), 2, 0, 1, 0);
}

TEST_F(ColladaImportTest, CurvesAreNoted)
{
    const auto result = Open(
        "a.dae", ColladaDocument(kMetresYUp, Animation("BEZIER"),
                                 R"(<node id="n1" name="Top"><translate sid="t">1 2 3</translate></node>)"));
    ASSERT_EQ(result.notes.size(), 1u);
    EXPECT_NE(result.notes[0].find("straight lines"), std::string::npos);
    Goto(2.0);
    ExpectRow(Global("Top"), 3, 200, 400, 600);
}

TEST_F(ColladaImportTest, CamerasKeepLensAndDirection)
{
    const std::string cameras = R"(<library_cameras>
<camera id="c1"><optics><technique_common><perspective><yfov>40</yfov><aspect_ratio>1.5</aspect_ratio>
<znear>1</znear><zfar>100</zfar></perspective></technique_common></optics></camera>
<camera id="c3" name="Lens"><optics><technique_common><perspective><yfov sid="y">40</yfov><znear>1</znear>
<zfar>100</zfar></perspective></technique_common></optics></camera>
<camera id="c2"><optics><technique_common><perspective><xfov>50</xfov><aspect_ratio>1.25</aspect_ratio>
<znear>1</znear><zfar>100</zfar></perspective></technique_common></optics></camera></library_cameras>)";
    const auto result = Open("a.dae", ColladaDocument(kInchesZUp, cameras, R"(
<node id="n1" name="Eye one"><translate>0 0 10</translate><instance_camera url="#c1"/>
  <node id="n2" name="Held"><translate>0 0 -1</translate></node></node>
<node id="n3" name="Eye two"><instance_camera url="#c2"/><instance_camera url="#c1"/></node>
<node id="n5" name="Eye three"><instance_camera url="#c3"/></node>)"));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Eye one", "Held", "Eye two", "Eye three"}));
    ASSERT_EQ(result.notes.size(), 1u);
    EXPECT_NE(result.notes[0].find("further cameras"), std::string::npos);
    auto& one = static_cast<FBCamera&>(Model("Eye one"));
    auto& two = static_cast<FBCamera&>(Model("Eye two"));
    ASSERT_TRUE(one.Is(FBCamera::TypeInfo) && two.Is(FBCamera::TypeInfo));
    const double radians = std::numbers::pi / 180;
    EXPECT_NEAR(one.FieldOfView, 2 * std::atan(1.5 * std::tan(20 * radians)) / radians, 1e-4);
    EXPECT_NEAR(one.NearPlaneDistance, 2.54, 1e-5);
    EXPECT_NEAR(one.FarPlaneDistance, 254, 1e-4);
    EXPECT_NEAR(two.FieldOfView, 50, 1e-4);
    EXPECT_NEAR(two.FilmAspectRatio, 1.25, 1e-6);

    auto& three = static_cast<FBCamera&>(Model("Eye three")); // no aspect stated: as in a square picture
    EXPECT_NEAR(three.FieldOfView, 40, 1e-4);
    EXPECT_NEAR(three.FilmAspectRatio, 1, 1e-6);

    // Straight down in a world where Z was up, the top of the picture towards its Y.
    ExpectRow(Global("Eye one"), 3, 0, 25.4, 0);
    ExpectRow(Global("Eye one"), 0, 0, -1, 0);
    ExpectRow(Global("Eye one"), 1, 0, 0, -1);
    ExpectRow(Global("Eye one"), 2, 1, 0, 0);
    ExpectRow(Global("Held"), 3, 0, 22.86, 0);
    ExpectRow(Global("Held"), 2, 0, 1, 0);
}

TEST_F(ColladaImportTest, ModelsBearNamesAndNotIds)
{
    Open("a.dae",
         ColladaDocument(kMetresYUp, "", R"(<node id="x1" name="Left &amp; &#233;"/><node name='Hip' id='x2'/>
<node id="only_id"/><node id="x3" name="Hip"/><node><translate>1 0 0</translate></node>)"));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Left & \xC3\xA9", "Hip", "only_id", "Hip 1", "Node"}));
    ExpectRow(Global("Node"), 3, 100, 0, 0);
}

} // namespace
