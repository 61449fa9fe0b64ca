#include "host/import/base/parse_error.h"
#include "host/import/fbx/fbx_reader.h"
#include "host/import/host_scene.h"
#include "tests/host/import/builders/fbx_writer.h"
#include "tests/host/import/import_fixture.h"

#include <algorithm>

namespace
{

using namespace fbx_writer;

constexpr std::int32_t kHoldKey = 2;

// FBX files made in code, opened into the host's scene.
class FbxSceneTest : public SceneImportTest
{
protected:
    static mobu_host::ImportNotes OpenFile(const std::string& file)
    {
        mobu_host::ImportNotes notes;
        mobu_host::BuildHostScene(mobu_host::fbx::ReadFbx(file, {}, notes), {}, notes);
        return notes;
    }

    static mobu_host::ImportNotes Open(const std::vector<Node>& objects, const std::vector<Node>& connections,
                                       const std::vector<Node>& settings = {})
    {
        return OpenFile(Binary(7400, fbx_writer::Scene(settings, objects, connections)));
    }

    static std::string CauseOf(const std::string& file)
    {
        mobu_host::ImportNotes notes;
        try
        {
            mobu_host::fbx::ReadFbx(file, {}, notes);
        }
        catch (const mobu_host::ParseError& error)
        {
            return error.what();
        }
        ADD_FAILURE() << "it was read";
        return {};
    }

    static bool Tells(const mobu_host::ImportNotes& notes, const std::string& what)
    {
        const auto lines = notes.Lines();
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return line.find(what) != std::string::npos; });
    }

    static Node Limb(std::int64_t id, const std::string& name, std::vector<Node> rows)
    {
        return fbx_writer::Object("Model", id, name, "LimbNode", std::move(rows));
    }
    static Node Vector(const std::string& name, double x, double y, double z)
    {
        return P(name, "Vector3D", "A", {x, y, z});
    }

    static FBProperty& UserProperty(const std::string& model, const char* name)
    {
        FBProperty* const property = Model(model).PropertyList.Find(name);
        EXPECT_NE(property, nullptr) << name;
        return *property;
    }
    static std::vector<double> Numbers(FBProperty& property, int count)
    {
        std::vector<double> numbers(static_cast<std::size_t>(count));
        property.GetData(numbers.data(), count * static_cast<int>(sizeof(double)));
        return numbers;
    }
};

// The same scene from every form of file.
class RichSceneTest : public FbxSceneTest, public testing::WithParamInterface<std::string (*)()>
{
protected:
    const mobu_host::ImportNotes notes_ = OpenFile(GetParam()());
};

TEST_P(RichSceneTest, ModelsTakesAndRate)
{
    EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "ns:Hips", "Camera", "Target"}));
    EXPECT_EQ(TakeNames(), (std::vector<std::string>{"Run", "Still"}));
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 24.0);
    const FBTimeSpan span = Take(0).LocalTimeSpan;
    EXPECT_EQ(span.GetStart().GetSecondDouble(), 0.5);
    EXPECT_EQ(span.GetStop().GetSecondDouble(), 2.0);
}

TEST_P(RichSceneTest, UserPropertiesOfAllKinds)
{
    EXPECT_EQ(UserProperty("ns:Hips", "truth").AsInt(), 1);
    EXPECT_EQ(UserProperty("ns:Hips", "whole").AsInt(), -7);
    EXPECT_EQ(Numbers(UserProperty("ns:Hips", "vector"), 3), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(Numbers(UserProperty("ns:Hips", "colour"), 3), (std::vector<double>{0.25, 0.5, 0.75}));
    EXPECT_EQ(Numbers(UserProperty("ns:Hips", "rgba"), 4), (std::vector<double>{0.25, 0.5, 0.75, 0.5}));
    EXPECT_STREQ(UserProperty("ns:Hips", "text").AsString(), "a \"b\"");
    FBProperty& choice = UserProperty("ns:Hips", "choice");
    EXPECT_EQ(choice.GetPropertyType(), kFBPT_enum);
    EXPECT_STREQ(choice.EnumList(2), "Run");
    EXPECT_EQ(choice.EnumList(3), nullptr);
    EXPECT_EQ(choice.AsInt(), 1);

    std::vector<std::string> order;
    for (int i = 0; i < Model("ns:Hips").PropertyList.GetCount(); ++i)
        if (FBProperty* property = Model("ns:Hips").PropertyList[i]; property->IsUserProperty())
            order.emplace_back(property->GetName());
    EXPECT_EQ(order, (std::vector<std::string>{"truth", "whole", "number", "text", "choice", "vector",
                                               "colour", "rgba"}));
    EXPECT_TRUE(Tells(notes_, "1 user property of a kind that is not read is left out: ns:Hips.odd (Blob)"));

    FBProperty& number = UserProperty("ns:Hips", "number");
    Goto(1.0);
    EXPECT_EQ(Numbers(number, 1)[0], 1.0);
    Goto(1.75);
    EXPECT_EQ(Numbers(number, 1)[0], 3.0);
    FBSystem().CurrentTake = &Take(1);
    Goto(1.75);
    EXPECT_EQ(Numbers(number, 1)[0], 2.5) << "the other take does not move it";
}

TEST_P(RichSceneTest, CameraAndSwitcher)
{
    auto& camera = static_cast<FBCamera&>(Model("Camera"));
    ASSERT_TRUE(camera.Is(FBCamera::TypeInfo));
    EXPECT_EQ(static_cast<FBCameraApertureMode>(camera.ApertureMode), kFBApertureHorizontal);
    EXPECT_EQ(camera.NearPlaneDistance, 1.0);
    FBModel* const interest = camera.Interest;
    EXPECT_EQ(interest, &Model("Target"));
    auto& switcher = static_cast<FBCameraSwitcher&>(Model("Camera Switcher"));
    Goto(0.75);
    EXPECT_NEAR(camera.FieldOfView, 45.0, 1e-6);
    EXPECT_EQ(switcher.CurrentCameraIndex, 0);
    Goto(1.25);
    EXPECT_NEAR(camera.FieldOfView, 55.0, 1e-6);
    EXPECT_EQ(switcher.CurrentCameraIndex, 1);
    ExpectRow(Global("Producer Front"), 3, 0, 9, 0);
    EXPECT_EQ(mobu_host::Scene().Constraints.GetCount(), 1);
    FBConstraint& constraint = *mobu_host::Scene().Constraints[0];
    EXPECT_FALSE(constraint.Active);
    EXPECT_FALSE(mobu_host::HasEffect(constraint));
    EXPECT_STREQ(constraint.Description, "Parent-Child");
}

// The upper layer adds half of its 4 t / 2 to Y; the camera looks at the target wherever its parent carries it.
TEST_P(RichSceneTest, LayersAndLookAt)
{
    for (const double seconds : {0.5, 0.8, 1.3})
    {
        Goto(seconds);
        FBMatrix camera = Global("Camera");
        FBMatrix target = Global("Target");
        FBVector3d way;
        for (int i = 0; i < 3; ++i)
            way[i] = target(3, i) - camera(3, i);
        const double length = std::hypot(way[0], way[1], way[2]);
        const double axis = std::hypot(camera(0, 0), camera(0, 1), camera(0, 2));
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(camera(0, i) / axis, way[i] / length, 1e-9) << seconds;
        EXPECT_GT(camera(1, 1), 0.0) << "upright";
    }
    Goto(1.0);
    const double y_at_1 = Global("ns:Hips")(3, 1);
    Goto(2.0);
    EXPECT_NEAR(Global("ns:Hips")(3, 1) - y_at_1, 1.0, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Forms, RichSceneTest,
                         testing::Values([] { return Binary(7400, RichScene()); },
                                         [] { return Binary(7700, RichScene(), true); },
                                         [] { return Text(7300, RichScene()); }));

TEST_F(FbxSceneTest, Version6)
{
    for (const std::string& file : {Binary(6100, NamedScene()), Text(6100, NamedScene())})
    {
        OpenFile(file);
        EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "Hips", "Eye"}));
        EXPECT_EQ(TakeNames(), (std::vector<std::string>{"Walk"}));
        EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 25.0);
        EXPECT_NEAR(static_cast<FBCamera&>(Model("Eye")).FieldOfView, 40.0, 1e-9);
        Goto(1.0);
        ExpectRow(Global("Hips"), 3, 10, 2, 7);
        ExpectRow(Global("Hips"), 1, 0, 0, 1);
        EXPECT_NEAR(Numbers(UserProperty("Hips", "grip"), 1)[0], 0.5, 1e-9);
    }
}

// Parent scaled (2, 1, 1), child turned by 90 degrees about Z and scaled (1, 3, 1).
TEST_F(FbxSceneTest, ScaleInheritance)
{
    const struct
    {
        int type;
        FBVector3d x, y; // the child's axes
    } cases[] = {{0, FBVector3d(0, 2, 0), FBVector3d(-3, 0, 0)},
                 {1, FBVector3d(0, 1, 0), FBVector3d(-6, 0, 0)},
                 {2, FBVector3d(0, 1, 0), FBVector3d(-3, 0, 0)}};
    for (const auto& inherit : cases)
    {
        SCOPED_TRACE(inherit.type);
        Open({Limb(1, "Top", {Vector("Lcl Scaling", 2, 1, 1)}),
              Limb(2, "Child",
                   {Vector("Lcl Rotation", 0, 0, 90), Vector("Lcl Scaling", 1, 3, 1),
                    Vector("Lcl Translation", 5, 0, 0), P("InheritType", "enum", "", {inherit.type})}),
              Limb(3, "Grandchild", {Vector("Lcl Translation", 1, 0, 0), P("InheritType", "enum", "", {1})})},
             {Child(1, 0), Child(2, 1), Child(3, 2)});
        ExpectRow(Global("Child"), 0, inherit.x[0], inherit.x[1], inherit.x[2]);
        ExpectRow(Global("Child"), 1, inherit.y[0], inherit.y[1], inherit.y[2]);
        ExpectRow(Global("Child"), 3, 10, 0, 0);
        ExpectRow(Global("Grandchild"), 3, 10 + inherit.x[0], inherit.x[1], 0);
    }
}

// Turned by 90 degrees about Z through (1, 0, 0), then shifted; scaled by 2 about (1, 0, 0).
TEST_F(FbxSceneTest, PivotsOffsetsAndPreRotation)
{
    Open({Limb(1, "Pivot",
               {Vector("Lcl Rotation", 0, 0, 90), Vector("RotationPivot", 1, 0, 0),
                Vector("RotationOffset", 0, 0, 7)}),
          Limb(2, "Scaled",
               {Vector("Lcl Scaling", 2, 2, 2), Vector("ScalingPivot", 1, 0, 0),
                Vector("ScalingOffset", 0, 5, 0)}),
          Limb(3, "Inactive", {Vector("PreRotation", 90, 0, 0), P("RotationOrder", "enum", "", {5})}),
          Limb(4, "Active", {Vector("PreRotation", 90, 0, 0), P("RotationActive", "bool", "", {1})})},
         {Child(1, 0), Child(2, 0), Child(3, 0), Child(4, 0)});
    ExpectRow(Global("Pivot"), 3, 1, -1, 7);
    ExpectRow(Global("Pivot"), 0, 0, 1, 0);
    ExpectRow(Global("Scaled"), 3, -1, 5, 0);
    ExpectRow(Global("Inactive"), 1, 0, 1, 0);
    ExpectRow(Global("Active"), 1, 0, 0, 1);
}

// Inches, Z up: at the top only; a camera's planes with it. Left-handed axes are mirrored.
TEST_F(FbxSceneTest, UnitAndAxes)
{
    const std::vector<Node> objects{
        Limb(1, "Top", {Vector("Lcl Translation", 1, 2, 3)}),
        Limb(2, "Child", {Vector("Lcl Translation", 0, 0, 1)}),
        Object("NodeAttribute", 10, "", "Camera", {P("NearPlane", "double", "", {10.0})}),
        Object("Model", 3, "Camera", "Camera", {})};
    const std::vector<Node> connections{Child(1, 0), Child(2, 1), Child(3, 0), Child(10, 3)};
    std::vector<Node> settings{P("UpAxis", "int", "", {2}), P("FrontAxis", "int", "", {1}),
                               P("FrontAxisSign", "int", "", {-1}), P("CoordAxis", "int", "", {0}),
                               P("UnitScaleFactor", "double", "", {2.54})};
    Open(objects, connections, settings);
    ExpectRow(Global("Top"), 3, 2.54, 7.62, -5.08);
    ExpectRow(Global("Child"), 3, 2.54, 10.16, -5.08);
    ExpectRow(Global("Child"), 2, 0, 2.54, 0);
    EXPECT_NEAR(static_cast<FBCamera&>(Model("Camera")).NearPlaneDistance, 25.4, 1e-9);

    settings[2] = P("FrontAxisSign", "int", "", {1});
    const auto notes = Open(objects, connections, settings);
    EXPECT_TRUE(Tells(notes, "left-handed"));
    ExpectRow(Global("Child"), 3, 2.54, 10.16, 5.08);
    ExpectRow(Global("Child"), 2, 0, -2.54, 0);
}

// Mirrored twice is not mirrored.
TEST_F(FbxSceneTest, MirroredModelsStayAndAreTold)
{
    const auto notes = Open({Limb(1, "Top", {Vector("Lcl Scaling", -1, 1, 1)}),
                             Limb(2, "Child", {Vector("Lcl Scaling", 1, -1, 1)}), Limb(3, "Straight", {})},
                            {Child(1, 0), Child(2, 1), Child(3, 0)});
    EXPECT_EQ(notes.Lines().size(), 1U);
    EXPECT_TRUE(Tells(notes, "1 model is mirrored (negative scale); its rotation is not valid: Top"));
    ExpectRow(Global("Top"), 0, -1, 0, 0);
    ExpectRow(Global("Child"), 1, 0, -1, 0);
}

TEST_F(FbxSceneTest, OddConnectionsLoseNoModel)
{
    auto notes =
        Open({Limb(1, "a", {}), Limb(2, "b", {}), Limb(3, "c", {}), Limb(4, "c", {}), Limb(5, "", {})},
             {Child(1, 2), Child(2, 1), Child(3, 0), Child(3, 1), Child(4, 3), Child(99, 1), Child(5, 0),
              Child(5, 5)});
    EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "c", "c 1", "Model", "a", "b"}));
    EXPECT_TRUE(Tells(notes, "1 model is its own ancestor and was taken off its parent: a"));
    EXPECT_TRUE(Tells(notes, "1 model with several parents stays below the first: c"));
    EXPECT_TRUE(Tells(notes, "numbered"));
}

TEST_F(FbxSceneTest, TreesHaveADepthAtMost)
{
    std::vector<Node> objects, connections;
    for (int i = 1; i <= 2500; ++i)
    {
        objects.push_back(Limb(i, "j", {}));
        connections.push_back(Child(i, i - 1));
    }
    EXPECT_NE(
        CauseOf(Binary(7400, fbx_writer::Scene({}, objects, connections))).find("nested more than 2000 deep"),
        std::string::npos);
}

TEST_F(FbxSceneTest, MutedAndSoloLayersCount)
{
    const auto open = [](const char* switch_name, std::int64_t layer)
    {
        std::vector<Node> objects{Limb(1, "m", {}), Object("AnimationStack", 20, "t", "", {})};
        std::vector<Node> connections{Child(1, 0)};
        for (const std::int64_t id : {30, 31})
        {
            const bool switched = id == layer;
            objects.push_back(
                Object("AnimationLayer", id, "l", "",
                       switched ? std::vector<Node>{P(switch_name, "bool", "", {1})} : std::vector<Node>()));
            objects.push_back(Object("AnimationCurveNode", id + 10, "T", "", {}));
            objects.push_back(CurveObject(id + 20, {{0.0, static_cast<float>(id), kHoldKey}}));
            connections.push_back(Child(id, 20));
            connections.push_back(Child(id + 10, id));
            connections.push_back(ToProperty(id + 10, 1, "Lcl Translation"));
            connections.push_back(ToProperty(id + 20, id + 10, "d|X"));
        }
        Open(objects, connections);
        Goto(0.0);
        return Global("m")(3, 0);
    };
    EXPECT_EQ(open("None", 30), 61.0);
    EXPECT_EQ(open("Mute", 31), 30.0);
    EXPECT_EQ(open("Mute", 30), 31.0);
    EXPECT_EQ(open("Solo", 31), 31.0);
}

TEST_F(FbxSceneTest, WhatIsReadOtherwiseIsTold)
{
    const Node curve = CurveObject(50, {{0.0, 0.0F}, {1.0, 90.0F}});
    const auto notes = Open(
        {Limb(1, "m", {P("QuaternionInterpolate", "enum", "", {1})}), Object("Material", 2, "red", "", {}),
         Object("AnimationStack", 20, "t", "", {}), Object("AnimationLayer", 30, "l", "", {}),
         Object("AnimationCurveNode", 40, "R", "", {}), Object("AnimationCurveNode", 41, "D", "", {}), curve},
        {Child(1, 0), Child(30, 20), Child(40, 30), Child(41, 30), ToProperty(40, 1, "Lcl Rotation"),
         ToProperty(41, 2, "Diffuse"), ToProperty(50, 40, "d|Z"), ToProperty(50, 41, "d|X")});
    for (const char* const what : {"interpolated as quaternions: m", "not a model is ignored: red.Diffuse"})
        EXPECT_TRUE(Tells(notes, what)) << what;
    EXPECT_EQ(notes.Lines().size(), 2U);
    EXPECT_EQ(StopOf(0), 1.0) << "without a stated span, to the last key";
}

// The frames of a take are counted by truncation, on both sides of zero.
TEST_F(FbxSceneTest, NoTakeLosesAFrame)
{
    const struct
    {
        int time_mode;
        double rate;
    } cases[] = {{3, 60.0}, {8, 30000.0 / 1001.0}, {10, 25.0}, {13, 24000.0 / 1001.0}};
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.rate);
        std::vector<Node> stacks;
        for (int frame = 0; frame <= 60; ++frame)
        {
            const auto ticks = static_cast<std::int64_t>(std::llround(frame / item.rate * 46186158000.0));
            stacks.push_back(
                Object("AnimationStack", 20 + frame, "t", "",
                       {P("LocalStart", "KTime", "", {-ticks}), P("LocalStop", "KTime", "", {ticks})}));
        }
        Open(stacks, {}, {P("TimeMode", "enum", "", {item.time_mode})});
        for (int frame = 0; frame <= 60; ++frame)
        {
            const FBTimeSpan span = Take(frame).LocalTimeSpan;
            const double rate = FBPlayerControl().GetTransportFpsValue();
            EXPECT_EQ(static_cast<int>(span.GetStart().GetSecondDouble() * rate), -frame);
            EXPECT_EQ(static_cast<int>(span.GetStop().GetSecondDouble() * rate), frame);
        }
    }
}

TEST_F(FbxSceneTest, ConstraintsAreToldWhileTheyAreActive)
{
    const struct
    {
        std::vector<Node> rows;
        bool active;
    } cases[] = {{{P("Active", "bool", "", {1})}, true}, {{P("Active", "bool", "", {0})}, false}, {{}, true}};
    for (const auto& item : cases)
    {
        const auto notes = Open({Object("Constraint", 6, "Hold", "Parent-Child", item.rows)}, {});
        ASSERT_EQ(mobu_host::Scene().Constraints.GetCount(), 1);
        EXPECT_EQ(mobu_host::Scene().Constraints[0]->Active, item.active);
        EXPECT_EQ(Tells(notes, "not solved; what it holds moves as it is keyed: Hold (Parent-Child)"),
                  item.active);
        EXPECT_EQ(notes.Lines().size(), item.active ? 1U : 0U);
    }
}

// The tree has the cameras the other way round; a switcher counts them as the file lists them.
TEST_F(FbxSceneTest, CamerasAreListedInTheFilesOrder)
{
    Open({Object("Model", 1, "Front", "Camera", {}), Limb(2, "m", {}),
          Object("Model", 3, "Back", "Camera", {}), Object("Model", 4, "Root", "Camera", {})},
         {Child(4, 0), Child(2, 4), Child(3, 2), Child(1, 2)});
    EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "Root", "m", "Back", "Front"}));
    std::vector<std::string> cameras;
    FBPropertyListCamera& list = mobu_host::Scene().Cameras;
    for (int i = 0; i < list.GetCount(); ++i)
        if (!list[i]->SystemCamera)
            cameras.emplace_back(static_cast<const char*>(list[i]->Name));
    EXPECT_EQ(cameras, (std::vector<std::string>{"Front", "Back", "Root"}));
}

TEST_F(FbxSceneTest, NumbersThatAreNoneAreRefusedAndNothingChanges)
{
    mobu_host::NewScene();
    mobu_host::AddModel("Here before");
    const double nan = std::nan("");
    const std::vector<Node> bad[] = {
        {Limb(1, "m", {Vector("Lcl Translation", 0, nan, 0)})},
        {Limb(1, "m", {P("u", "Number", "AU", {nan})})},
        {Object("AnimationStack", 20, "t", "", {P("LocalStop", "KTime", "", {std::int64_t{1} << 62})})},
    };
    for (const std::vector<Node>& objects : bad)
        EXPECT_NE(CauseOf(Binary(7400, fbx_writer::Scene({}, objects, {}))).find("(byte "),
                  std::string::npos);
    EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "Here before"}));
}

// What an exported file cannot hold is refused, by name and place; what is too small is 0.
TEST_F(FbxSceneTest, NumbersOfTextFilesThatAreNotFinite)
{
    const auto file = [](const std::string& place, const std::string& key)
    {
        return "; FBX 7.4.0\nObjects: {\nModel: 1, \"Model::a\", \"Null\" {\nProperties70: {\n"
               "P: \"Lcl Translation\",\"Lcl Translation\",\"\",\"A\"," +
               place +
               ",0,0\n}\n}\nAnimationStack: 2, \"AnimStack::t\", \"\" {\n}\n"
               "AnimationLayer: 3, \"AnimLayer::l\", \"\" {\n}\nAnimationCurveNode: 4, \"AnimCurveNode::R\", "
               "\"\" "
               "{\n}\nAnimationCurve: 5, \"AnimCurve::\", \"\" {\nKeyTime: 0,1\nKeyValueFloat: 0," +
               key +
               "\nKeyAttrFlags: 4\nKeyAttrDataFloat: 0,0,0,0\nKeyAttrRefCount: 2\n}\n}\nConnections: {\n"
               "C: \"OO\",1,0\nC: \"OO\",3,2\nC: \"OO\",4,3\nC: \"OP\",4,1,\"Lcl Rotation\"\n"
               "C: \"OP\",5,4,\"d|X\"\n}\n";
    };
    for (const char* const number : {"1e400", "-1e400", "1e39", "nan", "-nan", "inf", "1.#INF", "-1.#IND"})
    {
        SCOPED_TRACE(number);
        const std::string still = CauseOf(file(number, "1"));
        EXPECT_NE(still.find("model \"a\": property \"Lcl Translation\" is not a finite number (byte "),
                  std::string::npos)
            << still;
        const std::string moving = CauseOf(file("0", number));
        EXPECT_NE(moving.find("a.Lcl Rotation: a key at "), std::string::npos) << moving;
    }
    for (const char* const number : {"1e-400", "0.5", "3e38"})
        OpenFile(file(number, number));

    // Of an object that is no model the name comes as it is in the file.
    std::string other = file("0", "nan");
    other.replace(other.find("Model: 1, \"Model::a"), 18, std::string("Other: 1, \"Other::\0", 19));
    EXPECT_NE(CauseOf(other).find("\\x00a.Lcl Rotation: a key at "), std::string::npos) << CauseOf(other);
}

} // namespace
