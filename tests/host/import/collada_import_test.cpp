#include "tests/host/import/builders/collada_text.h"
#include "tests/host/import/import_fixture.h"

#include <numbers>

namespace
{

using namespace collada_text;
using ColladaImportTest = SceneImportTest;
using Names = std::vector<std::string>;

constexpr const char* kInchesZUp = R"(<unit meter="0.0254" name="inch"/><up_axis>Z_UP</up_axis>)";

TEST_F(ColladaImportTest, AnimationStandsInTheSameSpace)
{
    const auto result =
        Open("a.dae",
             Document(Animations(Animation("a", {"n1/t", "0 2", "0 0 0 2 4 6", 3})),
                      R"(<node id="n1" name="Top"><translate sid="t">1 2 3</translate></node>)", kInchesZUp));
    EXPECT_TRUE(result.notes.empty());
    EXPECT_EQ(StopOf(0), 2.0);
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 24.0); // the lowest with frames at 0 and 2 s
    Goto(1.0);
    ExpectRow(Global("Top"), 3, 1 * 2.54, 3 * 2.54, -2 * 2.54);
    ExpectRow(Global("Top"), 2, 0, 1, 0);
}

TEST_F(ColladaImportTest, CamerasKeepTheirLens)
{
    const std::string cameras = R"(<library_cameras>
<camera id="c1"><optics><technique_common><perspective><yfov>40</yfov><aspect_ratio>1.5</aspect_ratio>
<znear>1</znear><zfar>100</zfar></perspective></technique_common></optics></camera>
<camera id="c3" name="Lens"><optics><technique_common><perspective><yfov sid="y">40</yfov><znear>1</znear>
<zfar>100</zfar></perspective></technique_common></optics></camera>
<camera id="c2"><optics><technique_common><perspective><xfov>50</xfov><aspect_ratio>1.25</aspect_ratio>
<znear>1</znear><zfar>100</zfar></perspective></technique_common></optics></camera></library_cameras>)";
    const auto result = Open("a.dae", Document(cameras, R"(
<node id="n1" name="Eye one"><translate>0 0 10</translate><instance_camera url="#c1"/></node>
<node id="n3" name="Eye two"><instance_camera url="#c2"/><instance_camera url="#c1"/></node>
<node id="n5" name="Eye three"><instance_camera url="#c3"/></node>)",
                                               kInchesZUp));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Eye one", "Eye two", "Eye three"}));
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
}

TEST_F(ColladaImportTest, ModelsBearNamesAndNotIds)
{
    Open("a.dae", Document("", R"(<node id="x1" name="Left &amp; &#233;"/><node name='Hip' id='x2'/>
<node id="only_id"/><node id="x3" name="Hip"/><node><translate>1 0 0</translate></node>)"));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Left & \xC3\xA9", "Hip", "only_id", "Hip 1", "Node"}));
    ExpectRow(Global("Node"), 3, 1, 0, 0);
}

} // namespace
