#include "host/import/base/parse_error.h"
#include "host/import/host_scene.h"
#include "tests/host/import/import_fixture.h"

namespace
{

using namespace mobu_host;
using Names = std::vector<std::string>;

class HostSceneTest : public SceneImportTest
{
protected:
    static ModelDescription At(const std::string& name, std::uint32_t parent, const Vector& place,
                               const Vector& scale = kOnes)
    {
        ModelDescription model;
        model.name = name;
        model.parent = parent;
        model.rest = {Scaling(scale), place};
        return model;
    }

    static TakeDescription Named(const std::string& name, double start, double stop)
    {
        TakeDescription take;
        take.name = name;
        take.start = start;
        take.stop = stop;
        return take;
    }

    static Names Build(SceneDescription scene, const ImportOptions& options = {})
    {
        ImportNotes notes;
        BuildHostScene(std::move(scene), options, notes);
        return notes.Lines();
    }

    // Empty where it is built.
    static std::string CauseOf(SceneDescription scene)
    {
        try
        {
            Build(std::move(scene));
            return "";
        }
        catch (const ParseError& error)
        {
            return error.what();
        }
    }

    static FBTimeSpan Span(int take) { return Take(take).LocalTimeSpan; }
};

TEST_F(HostSceneTest, NamesAreUniqueAndAJointKeepsItsNameBeforeTheMeshOnIt)
{
    SceneDescription scene;
    scene.models = {At("Hand", kNoModel, {}), At("Hand", 0, {}), At("", 1, {}), At("Scene", kNoModel, {})};
    scene.models[0].has_geometry = true;
    scene.takes = {Named("a:b", 0, 0), Named("a/b", 0, 0), Named("", 0, 0), Named("a\\c:d", 0, 0)};
    EXPECT_EQ(
        Build(std::move(scene)),
        (Names{"3 duplicate names were numbered: Scene -> \"Scene 1\", Hand -> \"Hand 1\", a_b -> \"a_b 1\"",
               "3 take names with ':', '/' or '\\' were changed: a:b -> \"a_b\", a/b -> \"a_b\", "
               "a\\c:d -> \"a_c_d\""}));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Hand 1", "Hand", "Node", "Scene 1"}));
    EXPECT_EQ(TakeNames(), (Names{"a_b", "a_b 1", "Take 003", "a_c_d"}));
}

TEST_F(HostSceneTest, AMirroredModelIsReversedAndNamedWhatIsBelowItStays)
{
    SceneDescription scene;
    scene.models = {At("Left", kNoModel, {1, 2, 3}, {-1, 1, 1}), At("Tip", 0, {5, 0, 0}),
                    At("Twice", 1, {1, 0, 0}, {1, -1, 1})};
    TakeDescription take = Named("t", 0, 1);
    take.models = {{1, [](double seconds) { return Affine{{}, {5 + seconds, 0, 0}}; }}};
    scene.takes = {take};
    EXPECT_EQ(Build(std::move(scene)), Names{"1 mirrored model had one of its axes reversed: Left"});
    Goto(0.0);
    ExpectRow(Global("Left"), 0, 1, 0, 0);
    ExpectRow(Global("Tip"), 3, 1 - 5, 2, 3);
    Goto(1.0);
    ExpectRow(Global("Tip"), 3, 1 - 6, 2, 3);
    ExpectRow(Global("Twice"), 3, 1 - 7, 2, 3);
    for (const char* name : {"Left", "Tip", "Twice"})
    {
        FBMatrix m = Global(name);
        EXPECT_GT(
            Determinant(
                {{{m(0, 0), m(0, 1), m(0, 2)}, {m(1, 0), m(1, 1), m(1, 2)}, {m(2, 0), m(2, 1), m(2, 2)}}}),
            0.0)
            << name;
    }
}

TEST_F(HostSceneTest, ShearedModelsKeepTheirMatrixAndAreNamed)
{
    SceneDescription scene;
    scene.models = {At("Leaning", kNoModel, {}), At("Rounded", kNoModel, {}), At("Also", kNoModel, {})};
    scene.models[0].rest.linear.at[0][1] = 0.5;
    scene.models[1].rest.linear.at[0][1] = 1e-5; // as in a matrix of five digits
    scene.models[2].rest.linear.at[2][0] = -0.01;
    EXPECT_EQ(Build(std::move(scene)),
              Names{"2 models are sheared at rest, where their exported rotations are "
                    "not of length 1: Leaning, Also"});
    ExpectRow(Global("Leaning"), 1, 0.5, 1, 0);
}

TEST_F(HostSceneTest, CamerasLookAlongXAndTheirLensMoves)
{
    SceneDescription scene;
    scene.axes = {EulerTurn({-90, 0, 0}, 0), {}}; // Z up
    scene.models = {At("Eye", kNoModel, {0, 0, 7}), At("Hat", 0, {0, 1, 0}), At("Flat", kNoModel, {})};
    scene.models[0].lens = {false, 50.0, 1.5, 2.0, 3000.0};
    scene.models[2].lens = {true, 4.0, 0.0, 0.0, 0.0};
    TakeDescription take = Named("zoom", 0, 1);
    take.properties = {{0, "FieldOfView", 0, [](double seconds, int) { return 50.0 + seconds; }}};
    scene.takes = {take};
    const double default_angle = FBCamera("c").FieldOfView;
    EXPECT_EQ(Build(std::move(scene)),
              Names{"1 orthographic camera has no field of view; the host's default stays: Flat"});
    Goto(1.0);
    ExpectRow(Global("Eye"), 3, 0, 7, 0);
    ExpectRow(Global("Eye"), 0, 0, -1, 0); // -Z of the file
    ExpectRow(Global("Eye"), 1, 0, 0, -1); // +Y of the file
    ExpectRow(Global("Hat"), 3, 0, 7, -1);
    auto& eye = static_cast<FBCamera&>(Model("Eye"));
    EXPECT_DOUBLE_EQ(eye.FieldOfView, 51.0);
    EXPECT_DOUBLE_EQ(eye.FilmAspectRatio, 1.5);
    EXPECT_DOUBLE_EQ(eye.NearPlaneDistance, 2.0);
    EXPECT_DOUBLE_EQ(eye.FarPlaneDistance, 3000.0);
    EXPECT_DOUBLE_EQ(static_cast<FBCamera&>(Model("Flat")).FieldOfView, default_angle);
}

TEST_F(HostSceneTest, TakesThatNoRateFitsAreWidenedToFramesOfThirtyAndNamed)
{
    SceneDescription scene;
    scene.takes = {Named("whole", 0, 0.5), Named("odd", -0.01, 0.0512), Named("near", 0, 0.2000001)};
    scene.takes[1].keys = {std::make_shared<const std::vector<double>>(std::vector<double>{0.0, 0.0512})};
    EXPECT_EQ(Build(scene),
              (Names{"1 take is keyed at no common frame rate; the scene has 30 frames per second: odd",
                     "1 take was widened to whole frames at 30 frames per second: odd"}));
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 30.0);
    EXPECT_NEAR(Span(1).GetStart().GetSecondDouble(), -1.0 / 30.0, 1e-9);
    EXPECT_NEAR(Span(1).GetStop().GetSecondDouble(), 2.0 / 30.0, 1e-9);
    EXPECT_EQ(LastFrame(0), 15);
    EXPECT_EQ(LastFrame(2), 6);

    ImportOptions at_48;
    at_48.scene_rate = 48.0;
    EXPECT_EQ(Build(scene, at_48).size(), 1u);
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 48.0);
    EXPECT_EQ(LastFrame(1), 3);
}

TEST_F(HostSceneTest, PropertiesKeepTheirKinds)
{
    SceneDescription scene;
    scene.models = {At("a", kNoModel, {})};
    scene.models[0].properties = {{"yes", true},
                                  {"whole", -3},
                                  {"number", 0.25},
                                  {"text", std::string("t\xC3\xAAte")},
                                  {"three", std::array<double, 3>{1, 2, 3}},
                                  {"four", std::array<double, 4>{1, 2, 3, 4}}};
    scene.properties = {{"of_all", 7}};
    Build(std::move(scene));
    const std::pair<const char*, const char*> cases[] = {{"yes", "1"},       {"whole", "-3"},
                                                         {"number", "0.25"}, {"text", "tête"},
                                                         {"three", "1,2,3"}, {"four", "1,2,3,4"}};
    for (const auto& [name, shown] : cases)
        EXPECT_STREQ(Model("a").PropertyList.Find(name)->AsString(), shown) << name;
    EXPECT_EQ(static_cast<FBModel*>(Scene().RootModel)->PropertyList.Find("of_all")->AsInt(), 7);
}

// 3.402823e38 is the largest number of single precision.
TEST_F(HostSceneTest, NumbersBeyondSinglePrecisionAreRefusedByName)
{
    struct Case
    {
        LensDescription lens;
        PropertyDescription::Value value;
        const char* cause;
    };
    const Case cases[] = {
        {{}, 1e39, "the property \"p\" of \"m\""},
        {{}, -1e39, "the property \"p\" of \"m\""},
        {{}, std::array<double, 3>{0, 0, 1e39}, "the property \"p\" of \"m\""},
        {{}, std::array<double, 4>{0, 0, 0, std::nan("")}, "the property \"p\" of \"m\""},
        {{.horizontal_angle = std::nan("")}, 1, "the lens of \"m\""},
        {{.aspect = 1e39}, 1, "the lens of \"m\""},
        {{.near_plane = 1e39}, 1, "the lens of \"m\""},
        {{.far_plane = 1e39}, 1, "the lens of \"m\""},
        {{.far_plane = 3.4e38}, 3.4e38, nullptr},
    };
    for (const Case& item : cases)
    {
        SceneDescription scene;
        scene.models = {At("m", kNoModel, {})};
        scene.models[0].lens = item.lens;
        scene.models[0].properties = {{"p", item.value}};
        EXPECT_EQ(CauseOf(scene),
                  item.cause ? std::string(item.cause) + " is not finite in single precision" : "");
    }
    SceneDescription scene;
    scene.properties = {{"p", 1e39}};
    EXPECT_EQ(CauseOf(scene), "the property \"p\" of the scene is not finite in single precision");
}

TEST_F(HostSceneTest, TextsThatAnExportCutsAreNotedOfEveryFormat)
{
    const std::string fits(65535, 'x'), cut(65536, 'x'), shown = std::string(60, 'x') + "...";
    SceneDescription scene;
    scene.models = {At(cut, kNoModel, {}), At("m", kNoModel, {}), At(fits, kNoModel, {})};
    scene.models[1].properties = {{"story", cut}, {"short", fits}, {cut, 1}};
    scene.properties = {{"plot", cut}};
    scene.takes = {Named(cut, 0, 0), Named(fits, 0, 0)};
    const std::string note = " of more than 65535 characters";
    EXPECT_EQ(Build(scene),
              Names{"5 texts" + note + " are cut by an export: plot, " + shown + ", m.story, m." + shown});

    const auto of_fbx_take = [this](const std::string& name)
    {
        return Open("take.fbx", "; FBX 7.4.0\nObjects:{\nAnimationStack:10,\"" + name +
                                    "\",\"\"\nAnimationLayer:11,\"\",\"\"\n}\n"
                                    "Connections:{\nC:\"OO\",11,10\n}\n")
            .notes;
    };
    EXPECT_EQ(of_fbx_take(fits), Names());
    EXPECT_EQ(of_fbx_take(cut), Names{"1 text" + note + " is cut by an export: " + shown});
}

TEST(ImportNotesTest, NameEachOnceAndCountAll)
{
    ImportNotes notes;
    for (int i = 0; i < 10; ++i)
        notes.Add({"model moves", "models move"}, "Head");
    EXPECT_EQ(notes.Lines(), Names{"10 models move: Head"});
    for (const char name : std::string("abcdefg"))
        notes.Add({"model moves", "models move"}, {name});
    EXPECT_EQ(notes.Lines(), Names{"17 models move: Head, a, b, c, d, e, f, g"});
    notes.Add({"model moves", "models move"}, "h");
    EXPECT_EQ(notes.Lines(), Names{"18 models move: Head, a, b, c, d, e, f, g, ..."});
}

TEST_F(HostSceneTest, WhatNoSceneCanHoldIsRefusedBeforeAnythingChanges)
{
    SceneDescription many, nowhere, far, late;
    far.models = {At("far", kNoModel, {0, 0, -1e39})};
    many.models = {At("a", kNoModel, {}), At("b", 0, {}), At("c", 1, {})};
    nowhere.models = {At("lost", kNoModel, {0, std::nan(""), 0})};
    late.takes = {Named("eternity", 0, 1e7)};
    const std::pair<const SceneDescription*, const char*> cases[] = {
        {&many, "it has more than 2 models, which is the limit"},
        {&nowhere, "the transform of \"lost\" is not finite in single precision"},
        {&far, "the transform of \"far\" is not finite in single precision"},
        {&late, "take \"eternity\" has times beyond a million seconds"}};
    ImportOptions options;
    options.most_models = 2;
    AddModel("Here before");
    for (const auto& [scene, cause] : cases)
    {
        try
        {
            Build(*scene, options);
            ADD_FAILURE() << cause;
        }
        catch (const ParseError& error)
        {
            EXPECT_STREQ(error.what(), cause);
        }
        EXPECT_EQ(ModelNames(), (Names{"Scene", "Here before"}));
    }
}

} // namespace
