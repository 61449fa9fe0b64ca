// tv2 tree: the hierarchy, and poses at a time.

#include "tests/tools/tool_test.h"
#include "tev2_loader/file.h"
#include "tev2_loader/math/quaternion.h"

#include <cmath>
#include <map>
#include <numbers>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using Arguments = std::vector<std::string>;

TEV2_MATRIX_NODE& AddNode(TEV2& scene, const std::string& name, std::int32_t parent)
{
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    node.name = TEV2_WIDE_STRING::FromBytes(name);
    node.parentIndex = parent;
    return node;
}

std::unique_ptr<TEV2_ANIMATABLE_QUATERNION> TurnAboutZ(float seconds, double degrees)
{
    const double half = degrees / 2.0 * std::numbers::pi / 180.0;
    return MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
        {{0.0f, {}},
         {seconds, {0.0f, 0.0f, static_cast<float>(std::sin(half)), static_cast<float>(std::cos(half))}}});
}

class TreeTest : public ToolTest
{
protected:
    /// An arm that turns by 90 degrees in a second, with a hand 1 m out, a lamp, and a node of its own.
    std::string SaveArm() const
    {
        TEV2 scene;
        scene.environment.timeRange = {0.0f, 1.0f};
        AddNode(scene, "Root", -1).translation =
            MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1.0f, 0.0f, 0.0f}}});
        TEV2_MATRIX_NODE& arm = AddNode(scene, "Arm", 0);
        arm.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {0.0f, 2.0f, 0.0f}}});
        arm.rotation = TurnAboutZ(1.0f, 90.0);
        arm.properties.floatValues.emplace_back().name = TEV2_WIDE_STRING::FromBytes("Speed");
        arm.properties.floatValues[0].track =
            MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 2.0f}, {1.0f, 3.0f}});
        arm.properties.floatValues[0].track->m_current_key = 7; // a file may have any cursor
        arm.properties.stringArrays.emplace_back().name = TEV2_WIDE_STRING::FromBytes("Side");
        arm.properties.stringArrays[0].strings = {TEV2_WIDE_STRING::FromBytes("left")};
        TEV2_MATRIX_NODE& hand = AddNode(scene, "Hand", 1);
        hand.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1.0f, 0.0f, 0.0f}}});
        hand.scale = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {2.0f, 2.0f, 2.0f}}});
        AddNode(scene, "Lamp", 0);
        AddNode(scene, "Other", -1);
        auto light = std::make_unique<TEV2_POINT_LIGHT>();
        light->name = TEV2_WIDE_STRING::FromBytes("Key");
        light->value = 3;
        scene.lights.push_back(std::move(light));
        auto mesh = std::make_unique<TEV2_WEIGHTED_MESH>();
        mesh->name = TEV2_WIDE_STRING::FromBytes("Body");
        mesh->value = 4;
        mesh->skin->bones = {1, 2, 99};
        scene.weightedMeshes.push_back(std::move(mesh));
        return Save(scene);
    }

    static nlohmann::json Tree(const std::string& path, Arguments options = {})
    {
        options.insert(options.begin(), {"tree", "--json", path});
        const auto run = RunTv2(options);
        EXPECT_EQ(run.exit_code, 0) << run.err;
        return run.Json();
    }

    static std::vector<std::string> NamesOf(const nlohmann::json& tree)
    {
        std::vector<std::string> names;
        for (const auto& node : tree["nodes"])
            names.push_back(node["name"]);
        return names;
    }
};

TEST_F(TreeTest, ShowsWhatIsAtEachNode)
{
    const std::string path = SaveArm();
    EXPECT_EQ(RunTv2({"tree", path}).out,
              path + ": 5 nodes, with keys of translation (T), rotation (R) and scale (S)\n"
                     "Root  T 1\n"
                     "├─ Arm (joint)  T 1  R 2\n"
                     "│  │     Side = \"left\"\n"
                     "│  │     Speed = 2 (2 keys)\n"
                     "│  └─ Hand (joint)  T 1  S 1\n"
                     "└─ Lamp (light \"Key\")\n"
                     "Other (mesh \"Body\")\n");
    EXPECT_EQ(RunTv2({"tree", "--node", "Root", "--depth", "1", path}).out,
              path + ": 5 nodes, with keys of translation (T), rotation (R) and scale (S)\n"
                     "Root  T 1\n"
                     "├─ Arm (joint)  T 1  R 2  (1 child not shown)\n"
                     "│        Side = \"left\"\n"
                     "│        Speed = 2 (2 keys)\n"
                     "└─ Lamp (light \"Key\")\n");
    const auto tree = Tree(path);
    EXPECT_FALSE(tree.contains("time"));
    ExpectValues(tree["nodes"][1],
                 {{"/node", 1},
                  {"/path", "matrixHierarchy.nodes[1]"},
                  {"/parent", 0},
                  {"/depth", 1},
                  {"/children", 1},
                  {"/kinds", {"joint"}},
                  {"/keys", {{"translation", 1}, {"rotation", 2}, {"scale", 0}}},
                  {"/properties",
                   {{{"name", "Side"}, {"kind", "texts"}, {"value", {"left"}}},
                    {{"name", "Speed"}, {"kind", "number"}, {"keys", 2}, {"value", 2.0}}}}});
    EXPECT_EQ(tree["nodes"][3]["objects"],
              (nlohmann::json{{{"path", "lights[0]"}, {"name", "Key"}, {"kind", "light"}}}));
}

TEST_F(TreeTest, PosesAreThoseOfTheFormula)
{
    const std::string path = SaveArm();
    const auto tree = Tree(path, {"--at", "0.5"});
    const double half = std::sqrt(0.5); // sine and cosine of 45 degrees
    const double world[] = {2 * half, -2 * half, 0, 1 + half, 2 * half, 2 * half, 0, 2 + half, 0, 0, 2, 0};
    for (std::size_t i = 0; i < std::size(world); ++i)
        EXPECT_NEAR(tree["nodes"][2]["world"][i].get<double>(), world[i], 1e-6) << i;
    ExpectValues(tree["nodes"][1], {{"/local/degrees", {0.0, 0.0, 45.0}},
                                    {"/local/translation", {0.0, 2.0, 0.0}},
                                    {"/local/scale", {1.0, 1.0, 1.0}},
                                    {"/properties/1/value", 2.5}});
    EXPECT_NEAR(tree["nodes"][1]["local"]["rotation"][2].get<double>(), std::sin(std::numbers::pi / 8), 1e-7);
    ExpectParts(RunTv2({"tree", "--at", "0.5", path}).out,
                {"), at 0.5 s\n",
                 "│  └─ Hand (joint)  T 1  S 1\n"
                 "│           local  1, 0, 0 m;  0, 0, 0 degrees, quaternion 0, 0, 0, 1;  scale 2, 2, 2\n"
                 "│           world  1.70711, 2.70711, 0 m;  0, 0, 45 degrees;  scale 2, 2, 2\n"});
}

TEST_F(TreeTest, PosesAreThoseOfSetTimeToTheLastBit)
{
    const std::string path = Write(SoundImage());
    for (const std::string time : {"-3", "0", "0.1", "0.5", "0.7654321", "1", "1e9"})
    {
        TEV2 scene;
        ASSERT_TRUE(LoadFile(path, scene, {.applyStartTime = false}));
        scene.SetTime(std::stof(time));
        const auto tree = Tree(path, {"--at", time});
        for (std::size_t i = 0; i < scene.matrixHierarchy.nodes.size(); ++i)
        {
            const auto& world = scene.matrixHierarchy.nodes[i].worldMatrix.m;
            for (std::size_t at = 0; at < 12; ++at)
                EXPECT_EQ(tree["nodes"][i]["world"][at].get<float>(), world[at / 4][at % 4]) << time;
        }
        const TEV2_CAMERA& camera = *scene.cameras[0];
        EXPECT_EQ(tree["activeCamera"], scene.cameraMan.cameraIndex->GetValue()) << time;
        EXPECT_EQ(tree["cameras"][0]["distance"].get<float>(), camera.distance->GetValue()) << time;
        EXPECT_EQ(tree["cameras"][0]["fieldOfView"].get<float>(), 0.7f);
        EXPECT_EQ(tree["cameras"][0]["clipRange"][0].get<float>(), 0.1f);
        const bool outside = time == "-3" || time == "1e9";
        EXPECT_EQ(tree["outsideRange"], outside) << time;
        EXPECT_EQ(tree["notes"].size(), outside ? 1U : 0U) << time;
    }
    ExpectParts(
        RunTv2({"tree", "--at", "0.75", path}).out,
        {"camera \"Camera\": field of view 40.107 degrees, height 0.75 of the width, from 0.1 to 40 m\n",
         "active camera: none\n"});
    ExpectParts(
        RunTv2({"tree", "--at", "2", path}).out,
        {"note: 2.0 s is outside the file's time range, 0.0 to 1.0 s: ", "active camera: \"Camera\"\n"});
}

TEST_F(TreeTest, DegreesAreRotationsAboutXThenYThenZ)
{
    const auto about = [](int axis, double degrees)
    {
        const auto half = static_cast<float>(degrees / 2.0 * std::numbers::pi / 180.0);
        TEV2_QUATERNION turn{0.0f, 0.0f, 0.0f, std::cos(half)};
        (axis == 0 ? turn.x : axis == 1 ? turn.y : turn.z) = std::sin(half);
        return turn;
    };
    const std::array<double, 3> cases[] = {{30.0, 40.0, 50.0},
                                           {-170.0, -80.0, 179.0},
                                           {0.0, 90.0, 25.0},
                                           {0.0, -90.0, -60.0},
                                           {0.0, 0.0, -90.0}};
    TEV2 scene;
    for (const auto& [x, y, z] : cases)
    {
        const TEV2_QUATERNION turn = Product(about(2, z), Product(about(1, y), about(0, x)));
        const TEV2_QUATERNION longer{turn.x * 3.0f, turn.y * 3.0f, turn.z * 3.0f, turn.w * 3.0f};
        AddNode(scene, "n", -1).rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0f, longer}});
    }
    const auto tree = Tree(Save(scene), {"--at", "0"});
    for (std::size_t i = 0; i < std::size(cases); ++i)
        for (std::size_t axis = 0; axis < 3; ++axis)
            EXPECT_NEAR(tree["nodes"][i]["local"]["degrees"][axis].get<double>(), cases[i][axis], 0.05) << i;
}

TEST_F(TreeTest, NodesAreChosenByName)
{
    TEV2 scene;
    const char* names[] = {"A", "B", "C", "B", "D", "B"};
    const std::int32_t parents[] = {-1, 0, 1, 2, 0, 4}; // the second B is below the first, the third is not
    for (std::size_t i = 0; i < std::size(names); ++i)
        AddNode(scene, names[i], parents[i]);
    const std::string path = Save(scene);
    const auto tree = Tree(path, {"--node", "B"});
    EXPECT_EQ(NamesOf(tree), (Arguments{"B", "C", "B", "B"}));
    EXPECT_EQ(tree["nodes"][3]["node"], 5);
    EXPECT_EQ(tree["nodes"][2]["depth"], 2);
    EXPECT_EQ(NamesOf(Tree(path, {"--node", "B", "--depth", "0"})), (Arguments{"B", "B"}));
    EXPECT_EQ(NamesOf(Tree(path, {"--depth", "1"})), (Arguments{"A", "B", "D"}));

    const auto run = RunTv2({"tree", "--node", "Hipz", Write(SoundImage())});
    EXPECT_EQ(run.exit_code, 2);
    ExpectParts(run.err, {"a.tv2: there is no node \"Hipz\" (did you mean \"Hips\"?)\n"});
}

// Circles, parents after their children and parents that are no nodes: every node is shown once, at once.
TEST_F(TreeTest, AnyParentsGiveATreeOfAllNodes)
{
    TEV2 scene;
    const std::int32_t parents[] = {1, 0, 2, 99, 3, 0, 7, -1};
    for (std::size_t i = 0; i < std::size(parents); ++i)
        AddNode(scene, std::string(1, static_cast<char>('a' + i)), parents[i]);
    const std::string path = Save(scene);
    const auto tree = Tree(path, {"--at", "0"});
    EXPECT_EQ(NamesOf(tree), (Arguments{"a", "b", "f", "c", "d", "e", "h", "g"}));
    EXPECT_EQ(tree["notes"],
              (nlohmann::json{"parents form circles, which are shown from their first nodes: \"a\", \"c\"",
                              "parents are no nodes, so these are at top level: \"d\"",
                              "nodes come before their parents, whose pose does not reach them in time: "
                              "\"a\", \"c\", \"g\""}));
    ExpectParts(RunTv2({"tree", path}).out, {"a  (its parents form a circle)\n├─ b\n└─ f\nc  (its parents"});
}

TEST_F(TreeTest, DepthCostsNoMoreThanNodes)
{
    TEV2 scene;
    constexpr std::int32_t kNodes = 20'000;
    for (std::int32_t i = 0; i < kNodes; ++i)
        AddNode(scene, "n", i - 1);
    const std::string path = Save(scene);
    const std::string text = RunTv2({"tree", "--at", "0", path}).out;
    EXPECT_LT(text.size(), std::size_t{kNodes} * 1000);
    ExpectParts(text, {"(41) n\n", "(19999) n\n"});
    EXPECT_EQ(Tree(path)["nodes"].size(), std::size_t{kNodes});
}

} // namespace
