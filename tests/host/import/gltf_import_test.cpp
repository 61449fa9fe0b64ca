#include "tests/host/import/builders/gltf_writer.h"
#include "tests/host/import/import_fixture.h"

#include <cmath>
#include <cstdio>
#include <numbers>

namespace
{

using gltf_writer::Document;
using gltf_writer::Json;
using Names = std::vector<std::string>;

using GltfImportTest = SceneImportTest;

constexpr float kHalf = std::numbers::sqrt2_v<float> / 2;

// Node "A" goes along X.
Document OneMetreInASecond()
{
    Document document;
    document.Node({{"name", "A"}}).Animation({{"name", "Go"}}).Channel(0, "translation", {0, 0, 0, 1, 0, 0});
    return document;
}

TEST_F(GltfImportTest, MetresBecomeCentimetresAndScaleStaysScale)
{
    Document document;
    document.Node({{"name", "Top"}, {"translation", {1, 2, 3}}, {"scale", {2, 2, 2}}, {"children", {1}}})
        .Node({{"name", "Below"}, {"translation", {0, 0.5, 0}}}, false)
        .Node({{"translation", {0, 0, -1}}});
    Open("a.gltf", document.Text());
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Top", "Below", "Node"}));
    EXPECT_EQ(TakeNames(), Names{"Take 001"});
    EXPECT_EQ(StopOf(0), 0.0);
    EXPECT_EQ(FBPlayerControl().GetTransportFpsValue(), 30.0);
    ExpectRow(Global("Top"), 3, 100, 200, 300);
    ExpectRow(Global("Top"), 1, 0, 2, 0);
    ExpectRow(Global("Below"), 3, 100, 300, 300);
    ExpectRow(Global("Node"), 3, 0, 0, -100);
}

TEST_F(GltfImportTest, ChannelsReachTheirNodeWhateverItsName)
{
    Document document;
    document.Node({{"name", "Foot"}, {"children", {1}}, {"translation", {1, 0, 0}}})
        .Node({{"name", "Foot"}, {"translation", {0, 1, 0}}}, false)
        .Node({{"name", "Foot"}})
        .Animation({{"name", "Walk"}})
        .Channel(2, "translation", {0, 0, 0, 0, 0, 2})
        .Channel(1, "translation", {0, 1, 0, 0, 3, 0})
        .Channel(0, "scale", {1, 1, 1, 2, 1, 1});
    Open("a.gltf", document.Text());
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Foot", "Foot 1", "Foot 2"}));
    Goto(0.5);
    ExpectRow(Global("Foot"), 0, 1.5, 0, 0);
    ExpectRow(Global("Foot"), 3, 100, 0, 0);
    ExpectRow(Global("Foot 1"), 3, 100, 200, 0);
    ExpectRow(Global("Foot 2"), 3, 0, 0, 100);
}

TEST_F(GltfImportTest, StepsHoldAndSplinesCurve)
{
    Document document;
    document.Node({{"name", "Steps"}})
        .Node({{"name", "Spline"}})
        .Animation({{"name", "Move"}})
        .Channel(0, "translation", {0, 0, 0, 1, 0, 0, 2, 0, 0}, "STEP")
        .Channel(1, "translation", {9, 9, 9, 0, 0, 0, 9, 9, 9, 9, 9, 9, 4, 0, 0, 9, 9, 9}, "CUBICSPLINE");
    const auto result = Open("a.gltf", document.Text());
    Goto(0.75);
    ExpectRow(Global("Steps"), 3, 0, 0, 0);
    ExpectRow(Global("Spline"), 3, 253.125, -84.375, -84.375); // three quarters of a cubic Hermite curve
    Goto(1.0);
    ExpectRow(Global("Steps"), 3, 100, 0, 0);
    ExpectRow(Global("Spline"), 3, 400, 0, 0);
    Goto(2.0);
    ExpectRow(Global("Steps"), 3, 200, 0, 0);
    EXPECT_EQ(result.notes, Names{});
}

TEST_F(GltfImportTest, TakesComeInFileOrderWithNamesOfTheirOwn)
{
    Document document;
    document.Node({{"name", "A"}});
    for (const char* name : {"Run", "", "Run"})
        document.Animation(*name ? Json{{"name", name}} : Json::object())
            .Channel(0, "translation", {1, 0, 0, 1, 0, 0});
    document.Channel(0, "rotation", {0, 0, 0, 1, 0, 0, kHalf, kHalf, 0, 0, 1, 0});
    Open("a.gltf", document.Text());
    EXPECT_EQ(TakeNames(), (Names{"Run", "Take 002", "Run 1"}));
    EXPECT_EQ(StopOf(0), 1.0);
    EXPECT_EQ(StopOf(2), 2.0);
    EXPECT_EQ(LastFrame(2), 48);
    Goto(2.0); // the first take is current
    ExpectRow(Global("A"), 0, 1, 0, 0);
    FBSystem().CurrentTake = &Take(2);
    Goto(2.0);
    ExpectRow(Global("A"), 0, -1, 0, 0);
}

TEST_F(GltfImportTest, CamerasLookAlongXAndWhatHangsOnThemStaysWhereItIs)
{
    Document document;
    document.json["cameras"] = {
        {{"type", "perspective"},
         {"perspective", {{"yfov", 0.8}, {"aspectRatio", 1.5}, {"znear", 0.1}, {"zfar", 40}}}},
        {{"type", "orthographic"}, {"orthographic", {{"xmag", 4}, {"ymag", 2}, {"znear", 1}, {"zfar", 2}}}}};
    document.Node({{"name", "Eye"}, {"camera", 0}, {"translation", {0, 1, 0}}, {"children", {1}}})
        .Node({{"name", "Held"}, {"translation", {1, 0, -2}}}, false)
        .Node({{"name", "Plan"}, {"camera", 1}})
        .Animation({{"name", "Pan"}})
        .Channel(0, "rotation", {0, 0, 0, 1, 0, kHalf, 0, kHalf});
    Open("a.gltf", document.Text());
    ASSERT_TRUE(Model("Eye").Is(FBCamera::TypeInfo));
    auto& eye = static_cast<FBCamera&>(Model("Eye"));
    EXPECT_EQ(eye.ApertureMode, kFBApertureHorizontal);
    EXPECT_NEAR(eye.FieldOfView, 2 * std::atan(1.5 * std::tan(0.4)) * 180 / std::numbers::pi, 1e-6);
    EXPECT_NEAR(eye.FilmAspectRatio, 1.5, 1e-9);
    EXPECT_NEAR(eye.NearPlaneDistance, 10, 1e-6);
    EXPECT_NEAR(eye.FarPlaneDistance, 4000, 1e-6);
    EXPECT_EQ(static_cast<FBCamera&>(Model("Plan")).Type, kFBCameraTypeOrthogonal);

    Goto(1.0); // a quarter turn to the left: along -X
    ExpectRow(Global("Eye"), 3, 0, 100, 0);
    ExpectRow(Global("Eye"), 0, -1, 0, 0);
    ExpectRow(Global("Eye"), 2, 0, 0, -1);
    ExpectRow(Global("Held"), 3, -200, 100, -100);
}

TEST_F(GltfImportTest, ExtrasBecomeUserPropertiesOfTheirKind)
{
    Document document;
    document.json["scenes"][0]["extras"] = {{"shot", "12b"}};
    document.Node({{"name", "A"},
                   {"extras",
                    {{"on", true},
                     {"count", -3},
                     {"much", 5000000000},
                     {"weight", 1.5},
                     {"tag", "h\xC3\xA9"},
                     {"place", {1, 2.5, 3}},
                     {"tint", {0.1, 0.2, 0.3, 0.4}},
                     {"pair", {1, 2}},
                     {"nested", {{"k", 1}}},
                     {"nothing", nullptr}}}});
    const auto result = Open("a.gltf", document.Text());
    ASSERT_EQ(result.notes.size(), 1u);
    EXPECT_EQ(result.notes[0],
              "3 extras are ignored: they are neither booleans, texts, numbers nor 3 or 4 numbers: "
              "pair, nested, nothing");

    const struct
    {
        const char* name;
        FBPropertyType type;
        const char* value;
    } expected[] = {{"on", kFBPT_bool, "1"},
                    {"count", kFBPT_int, "-3"},
                    {"much", kFBPT_double, "5000000000"},
                    {"weight", kFBPT_double, "1.5"},
                    {"tag", kFBPT_charptr, "h\xC3\xA9"},
                    {"place", kFBPT_Vector3D, "1,2.5,3"},
                    {"tint", kFBPT_ColorRGBA, "0.1,0.2,0.3,0.4"}};
    FBPropertyManager& properties = Model("A").PropertyList;
    int index = properties.GetCount() - static_cast<int>(std::size(expected));
    EXPECT_FALSE(properties[index - 1]->IsUserProperty());
    for (const auto& item : expected)
    {
        FBProperty& property = *properties[index++];
        EXPECT_STREQ(property.GetName(), item.name);
        EXPECT_EQ(property.GetPropertyType(), item.type) << item.name;
        EXPECT_STREQ(property.AsString(), item.value) << item.name;
    }

    FBModel& root = *static_cast<FBModel*>(mobu_host::Scene().RootModel);
    FBProperty* last = root.PropertyList[root.PropertyList.GetCount() - 1];
    EXPECT_STREQ(last->GetName(), "shot");
    EXPECT_TRUE(last->IsUserProperty());
}

TEST_F(GltfImportTest, TextBinaryAndEveryBufferGiveTheSame)
{
    Document document = OneMetreInASecond();
    Write("keys.bin", document.Buffer());
    std::string escaped = "data:application/octet-stream,";
    for (const char byte : document.Buffer())
    {
        char code[4];
        std::snprintf(code, sizeof code, "%%%02x", static_cast<unsigned char>(byte));
        escaped += byte >= 'A' && byte <= 'Z' ? std::string(1, byte) : code;
    }
    const std::pair<const char*, std::string> files[] = {{"a.gltf", document.Text()},
                                                         {"a.glb", document.Binary()},
                                                         {"b.gltf", document.TextBesideBuffer("keys.bin")},
                                                         {"c.gltf", document.TextBesideBuffer(escaped)}};
    for (const auto& [name, content] : files)
    {
        Open(name, content);
        Goto(0.5);
        ExpectRow(Global("A"), 3, 50, 0, 0);
        EXPECT_EQ(TakeNames(), Names{"Go"}) << name;
    }
}

TEST_F(GltfImportTest, WhatIsNoHierarchyAndNoMotionIsPassedOver)
{
    Document document;
    document.Node({{"name", "A"}, {"mesh", 7}, {"skin", 9}}).Node({{"name", "A"}});
    document.json["meshes"] = {{{"primitives", {{{"attributes", {{"POSITION", 99}}}}}}}};
    document.json["images"] = {{{"uri", "not_there.png"}}};
    document.json["extensionsRequired"] = {"KHR_draco_mesh_compression"};
    document.Animation({{"name", "Blend"}}).Channel(0, "translation", {0, 0, 0, 1, 0, 0});
    document.Channel(0, "weights", {0, 0, 0}).Channel(0, "weights", {0, 0, 0});
    document.Animation({{"name", "Smile"}}).Channel(0, "weights", {0, 0, 0});
    const auto result = Open("a.gltf", document.Text());
    EXPECT_EQ(result.notes, (Names{"1 model has animated blend shapes, which are ignored: A",
                                   "1 duplicate name was numbered: A -> \"A 1\""}));
    EXPECT_EQ(ModelNames(), (Names{"Scene", "A 1", "A"})); // a joint keeps its name beside the mesh on it
    Goto(1.0);
    ExpectRow(Global("A 1"), 3, 100, 0, 0);
}

TEST_F(GltfImportTest, PlacesMustBeFiniteInCentimetres)
{
    for (const auto& [metres, ok] : {std::pair(3.0e36f, true), std::pair(4.0e36f, false)})
    {
        Document document;
        document.Node({{"name", "A"}})
            .Animation({{"name", "Go"}})
            .Channel(0, "translation", {0, 0, 0, 0, metres, 0});
        const auto result = mobu_host::ImportScene(Write("a.gltf", document.Text()));
        EXPECT_EQ(result.ok, ok);
        EXPECT_EQ(result.error.find("samplers[0].output (accessors[1]) has a place that is not finite in "
                                    "centimetres") != std::string::npos,
                  !ok)
            << result.error;
    }
}

// Cubic Hermite curves, their tangents scaled by the seconds between the keys; rotations component by component.
TEST_F(GltfImportTest, SplinesBetweenUnevenKeysAreExact)
{
    const std::array<double, 4> from{0, 0, 0, 1}, out{0.5, 0, 0, 0}, in{0, -2, 0, 0}, to{0, kHalf, 0, kHalf};
    const std::vector<float> keys{0, 0,  0, 0, 0, 0,     0, 1,     0.5, 0, 0, 0,
                                  0, -2, 0, 0, 0, kHalf, 0, kHalf, 0,   0, 0, 0};
    Document document;
    document.Node({{"name", "A"}})
        .Animation({{"name", "Go"}})
        .Channel(0, "rotation", keys, "CUBICSPLINE", 0.5f);
    Open("a.gltf", document.Text());
    for (const double t : {0.0, 0.2, 0.5, 0.9, 1.0})
    {
        std::array<double, 4> q{}; // x, y, z, w
        double square = 0.0;
        for (std::size_t i = 0; i < 4; ++i)
        {
            q[i] = (2 * t * t * t - 3 * t * t + 1) * from[i] + 0.5 * (t * t * t - 2 * t * t + t) * out[i] +
                   (3 * t * t - 2 * t * t * t) * to[i] + 0.5 * (t * t * t - t * t) * in[i];
            square += q[i] * q[i];
        }
        const auto [x, y, z, w] = q;
        Goto(0.5 * t);
        ExpectRow(Global("A"), 0, 1 - 2 * (y * y + z * z) / square, 2 * (x * y + w * z) / square,
                  2 * (x * z - w * y) / square);
    }
}

TEST_F(GltfImportTest, KeysOfWholeNumbersAreScaledToOne)
{
    Document document;
    document.Node({{"name", "A"}})
        .Animation({{"name", "Go"}})
        .Channel(0, "rotation", {0, 0, 0, 1, 0, 0, 0, 1});
    document.Bytes(document.json["animations"][0]["samplers"][0]["output"], 5120,
                   {0, 0, 0, 127, 0, -128, 0, 0});
    Open("a.gltf", document.Text());
    Goto(1.0);
    ExpectRow(Global("A"), 0, -1, 0, 0); // half a turn: -128 counts as -127
}

TEST_F(GltfImportTest, ASceneMayShowWhatIsBelowANodeOutsideOfIt)
{
    Document document;
    document.Node({{"name", "Outside"}, {"children", {1}}}, false).Node({{"name", "Shown"}});
    Open("a.gltf", document.Text());
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Shown"}));
}

TEST_F(GltfImportTest, WithoutScenesAllNodesAreShown)
{
    Document document;
    document.Node({{"name", "Below"}})
        .Node({{"name", "Top"}, {"children", {0, 3}}})
        .Node({{"name", "Beside"}})
        .Node({{"name", "Last"}});
    document.json.erase("scenes");
    document.json.erase("scene");
    Open("a.gltf", document.Text());
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Top", "Below", "Last", "Beside"}));
    document.json["nodes"][3]["children"] = {3};
    document.json["nodes"][1]["children"] = {0};
    const std::string error = mobu_host::ImportScene(Write("a.gltf", document.Text())).error;
    EXPECT_NE(error.find("nodes[3] \"Last\": is its own ancestor"), std::string::npos) << error;
}

TEST_F(GltfImportTest, KeysBeforeZeroAreLeftOutAndTold)
{
    Document document;
    document.Node({{"name", "A"}})
        .Animation({{"name", "Early"}})
        .Channel(0, "translation", {-1, 1, 0, 0, 0, 0});
    document.json["accessors"][1]["type"] = "SCALAR"; // -1, 1: the times of the next channel
    document.json["animations"].clear();
    for (const char* name : {"Early", "Late", ""})
    {
        document.Animation({{"name", name}}).Channel(0, "translation", {0, 0, 0, 1, 0, 0});
        if (*name != 'L')
            document.json["animations"].back()["samplers"][0]["input"] = 1;
    }
    EXPECT_EQ(Open("a.gltf", document.Text()).notes,
              Names{"2 takes have keys before 0, which are left out: Early, animation 3"});
    EXPECT_EQ(StopOf(0), 1.0);
    Goto(0.0);
    ExpectRow(Global("A"), 3, 50, 0, 0);
}

TEST_F(GltfImportTest, OnlyWhatMotionNeedsNotMayBeRequired)
{
    const std::pair<const char*, bool> extensions[] = {
        {"KHR_materials_unlit", true}, {"EXT_meshopt_compression", true}, {"VRMC_vrm", true},
        {"EXT_lights_ies", true},      {"KHR_animation_pointer", false},  {"ACME_skeleton", false},
        {"AGI_articulations", false},  {"VRMC_node_constraint", false}};
    for (const auto& [name, opens] : extensions)
    {
        Document document;
        document.Node({{"name", "A"}});
        document.json["extensionsRequired"] = {name};
        const auto result = mobu_host::ImportScene(Write("a.gltf", document.Text()));
        EXPECT_EQ(result.ok, opens) << name;
        EXPECT_EQ(result.error.find(name) == std::string::npos, opens) << result.error;
    }
}

TEST_F(GltfImportTest, BuffersOfOtherFoldersAndOtherFilesAreRefused)
{
    Document document = OneMetreInASecond();
    std::filesystem::create_directory(folder_ / "scene");
    std::filesystem::create_directory(folder_ / "scene" / "data");
    Write("keys.bin", document.Buffer());
    Write("scene/data/a b.bin", document.Buffer());
    std::filesystem::create_symlink("../keys.bin", folder_ / "scene" / "link.bin");
    const std::pair<std::string, const char*> uris[] = {
        {"data/a%20b.bin", ""},
        {"./data/a b.bin", ""},
        {"../keys.bin", "leads out of the scene's folder"},
        {"%2e%2e/keys.bin", "leads out of the scene's folder"},
        {"..\\keys.bin", "leads out of the scene's folder"},
        {(folder_ / "keys.bin").string(), "leads out of the scene's folder"},
        {"link.bin", "leads out of the scene's folder"},
        {"file:keys.bin", "is a URL"},
        {"http://a.b/keys.bin", "is a URL"},
        {"data", "is not a regular file"},
        {"gone.bin", "gone.bin"},
        {"data:AAAA", "without a comma"},
        {"data:,AA%4", "states 32 bytes and has 4"},
        {"data:;base64,AA?A", "character that base64 does not have"},
        {"data:;base64,AAAA", "states 32 bytes and has 3"}};
    for (const auto& [uri, cause] : uris)
    {
        const auto result = mobu_host::ImportScene(Write("scene/a.gltf", document.TextBesideBuffer(uri)));
        EXPECT_EQ(result.ok, *cause == '\0') << uri << result.error;
        EXPECT_NE(result.error.find(cause), std::string::npos) << result.error;
        if (result.ok)
        {
            ASSERT_EQ(result.source_files.size(), 1u) << uri;
            EXPECT_TRUE(std::filesystem::equivalent(result.source_files[0], folder_ / "scene/data/a b.bin"));
        }
    }
}

// Each bends one member of a document of one channel with two keys.
TEST_F(GltfImportTest, EachRefusalNamesItsPlace)
{
    struct Bend
    {
        const char* pointer;
        Json value;
        const char* error;
    };
    const Bend bends[] = {
        {"/accessors/1/count", 3,
         "animations[0] \"Go\": samplers[0].output (accessors[1]) has 3 values where 2 keys need 1 each"},
        {"/accessors/1/count", 4000000000, "has 4000000000 values"},
        {"/accessors/1/type", "VEC4", "samplers[0].output (accessors[1]) is not of type VEC3"},
        {"/accessors/1/type", "VEC5", "accessors[1].type is none of"},
        {"/accessors/1/componentType", 5124, "accessors[1].componentType is 5124"},
        {"/accessors/1/byteOffset", 4,
         "accessors[1]: its 2 elements reach beyond the 24 bytes of bufferViews[1]"},
        {"/accessors/1/byteOffset", -4, "accessors[1].byteOffset is not a whole number from 0 on"},
        {"/accessors/1/bufferView", 2, "accessors[1].bufferView is 2, out of 0 to 1"},
        {"/accessors/1/sparse",
         {{"count", 3}, {"indices", {{"bufferView", 0}, {"componentType", 5121}}}},
         "accessors[1].sparse.count"},
        {"/accessors/0/componentType", 5125, "samplers[0].input (accessors[0]) is not one float a key"},
        {"/bufferViews/1/byteStride", 13, "reach beyond"},
        {"/bufferViews/1/byteStride", 8, "bufferViews[1].byteStride"},
        {"/bufferViews/1/byteLength", 25, "bufferViews[1]: reaches beyond the 32 bytes of its buffer"},
        {"/bufferViews/0/byteOffset", 20,
         "animations[0] \"Go\": samplers[0].input (accessors[0]) has times that do not ascend at key 1"},
        {"/buffers/0/byteLength", 33, "buffers[0]: states 33 bytes and has 32"},
        {"/animations/0/samplers/0/interpolation", "WAVE", "samplers[0].interpolation is none of"},
        {"/animations/0/channels/0/target/node", 7,
         "animations[0] \"Go\": channels[0].node is 7, out of 0 to 0"},
        {"/animations/0/samplers", Json::array(), "channels[0].sampler is 0, where there are none"},
        {"/bufferViews/1/extensions", {{"EXT_meshopt_compression", Json::object()}}, ""},
        {"/nodes/0/translation", {1, 2}, "nodes[0] \"A\": translation is not 3 numbers"},
        {"/nodes/0/translation", {0, 1e37, 0}, "the transform of \"A\" is not finite in single precision"},
        {"/nodes/0/extras", {{"p", 1e39}}, "the property \"p\" of \"A\" is not finite in single precision"},
        {"/scene", 1, "its scene to show is none of its 1 scenes"}};
    for (const Bend& bend : bends)
    {
        Json bent = Json::parse(OneMetreInASecond().Text());
        bent[Json::json_pointer(bend.pointer)] = bend.value;
        const auto result = mobu_host::ImportScene(Write("a.gltf", bent.dump()));
        EXPECT_EQ(result.ok, *bend.error == '\0') << bend.pointer;
        EXPECT_NE(result.error.find(bend.error), std::string::npos) << result.error;
        if (std::string_view(bend.pointer).ends_with("extensions")) // the plain bytes are there
        {
            bent["extensionsRequired"] = {"EXT_meshopt_compression"};
            const std::string error = mobu_host::ImportScene(Write("a.gltf", bent.dump())).error;
            EXPECT_NE(error.find("bufferViews[1]: is compressed with the extension EXT_meshopt"),
                      std::string::npos)
                << error;
        }
    }
}

} // namespace
