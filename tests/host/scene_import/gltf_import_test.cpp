#include "tests/host/scene_import/import_fixture.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <numbers>

namespace
{

using Json = nlohmann::ordered_json;
using Names = std::vector<std::string>;

std::string Base64(const std::string& bytes)
{
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            text.push_back(i + k > bytes.size() ? '=' : kDigits[group >> (18 - 6 * k) & 63]);
    }
    return text;
}

// Puts a glTF document together, its key values in one buffer.
class Document
{
public:
    Json json = {{"asset", {{"version", "2.0"}}},
                 {"scene", 0},
                 {"scenes", {{{"nodes", Json::array()}}}},
                 {"nodes", Json::array()}};

    Document& Node(Json node, bool on_top = true)
    {
        if (on_top)
            json["scenes"][0]["nodes"].push_back(json["nodes"].size());
        json["nodes"].push_back(std::move(node));
        return *this;
    }

    Document& Animation(Json animation)
    {
        animation["channels"] = Json::array();
        animation["samplers"] = Json::array();
        json["animations"].push_back(std::move(animation));
        return *this;
    }

    // A channel of the last animation, with one key a second.
    Document& Channel(int node, const char* path, const std::vector<float>& values,
                      const char* interpolation = "LINEAR")
    {
        const std::size_t width = std::strcmp(path, "rotation") == 0 ? 4 : 3;
        const std::size_t per_key = width * (std::strcmp(interpolation, "CUBICSPLINE") == 0 ? 3 : 1);
        std::vector<float> times(values.size() / per_key);
        for (std::size_t i = 0; i < times.size(); ++i)
            times[i] = static_cast<float>(i);
        const int input = Accessor(times, 1);
        const int output = Accessor(values, width);
        Json& animation = json["animations"].back();
        animation["channels"].push_back(
            {{"sampler", animation["samplers"].size()}, {"target", {{"node", node}, {"path", path}}}});
        animation["samplers"].push_back(
            {{"input", input}, {"output", output}, {"interpolation", interpolation}});
        return *this;
    }

    std::string Text()
    {
        json["buffers"] = {{{"byteLength", buffer_.size()},
                            {"uri", "data:application/octet-stream;base64," + Base64(buffer_)}}};
        return json.dump();
    }

    std::string Binary()
    {
        json["buffers"] = {{{"byteLength", buffer_.size()}}};
        std::string text = json.dump();
        text.resize((text.size() + 3) / 4 * 4, ' ');
        return "glTF" + Word(2) + Word(28 + text.size() + buffer_.size()) + Word(text.size()) + "JSON" +
               text + Word(buffer_.size()) + std::string("BIN\0", 4) + buffer_;
    }

    std::string TextBesideBuffer(const std::string& name)
    {
        json["buffers"] = {{{"byteLength", buffer_.size()}, {"uri", name}}};
        return json.dump();
    }

    const std::string& Buffer() const { return buffer_; }

private:
    static std::string Word(std::size_t value)
    {
        std::string bytes;
        for (int i = 0; i < 4; ++i)
            bytes.push_back(static_cast<char>(static_cast<unsigned char>(value >> (8 * i))));
        return bytes;
    }

    int Accessor(const std::vector<float>& values, std::size_t width)
    {
        const std::size_t offset = buffer_.size();
        const std::size_t size = values.size() * sizeof(float);
        buffer_.resize(offset + size);
        std::memcpy(buffer_.data() + offset, values.data(), size);
        json["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", offset}, {"byteLength", size}});
        json["accessors"].push_back({{"bufferView", json["bufferViews"].size() - 1},
                                     {"componentType", 5126},
                                     {"count", values.size() / width},
                                     {"type", width == 1   ? "SCALAR"
                                              : width == 3 ? "VEC3"
                                                           : "VEC4"}});
        return static_cast<int>(json["accessors"].size()) - 1;
    }

    std::string buffer_;
};

using GltfImportTest = SceneImportTest;

constexpr float kHalf = std::numbers::sqrt2_v<float> / 2;

TEST_F(GltfImportTest, TakeNamesHaveNoSeparators)
{
    const auto result = Open("takes.gltf", R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],)"
                                           R"("nodes":[{"name":"a"}],"animations":[)"
                                           R"({"name":"x:Run","channels":[],"samplers":[]},)"
                                           R"({"name":"x/Run","channels":[],"samplers":[]},)"
                                           R"({"name":"a\\b:c","channels":[],"samplers":[]},)"
                                           R"({"name":"Stop","channels":[],"samplers":[]}]})");
    EXPECT_EQ(TakeNames(), (Names{"x_Run", "x_Run 1", "a_b_c", "Stop"}));
    ASSERT_EQ(result.notes.size(), 2u);
    EXPECT_EQ(result.notes[0], "3 take names with ':', '/' or '\\' were changed: x:Run -> \"x_Run\", "
                               "x/Run -> \"x_Run\", a\\b:c -> \"a_b_c\"");
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

TEST_F(GltfImportTest, AJointKeepsItsNameBesideTheMeshOnIt)
{
    Document document;
    document.Node({{"name", "Torso"}, {"mesh", 0}}).Node({{"name", "Torso"}});
    Open("a.gltf", document.Text());
    EXPECT_EQ(ModelNames(), (Names{"Scene", "Torso 1", "Torso"}));
}

TEST_F(GltfImportTest, MirroredNodesGetAFrameThatIsARotation)
{
    Document document;
    document.Node({{"name", "Mirror"}, {"scale", {1, 1, -2}}, {"children", {1, 2}}})
        .Node({{"name", "Below"}, {"translation", {1, 2, 3}}, {"rotation", {0, 0, kHalf, kHalf}}}, false)
        .Node({{"name", "Back"}, {"scale", {-1, 1, 1}}}, false)
        .Animation({{"name", "Go"}})
        .Channel(1, "translation", {1, 2, 3, 5, 6, 7});
    const auto result = Open("a.gltf", document.Text());
    ASSERT_EQ(result.notes.size(), 1u);
    EXPECT_EQ(result.notes[0], "1 mirrored model had one of its axes reversed: Mirror");
    ExpectRow(Global("Mirror"), 0, 1, 0, 0);
    ExpectRow(Global("Mirror"), 1, 0, 1, 0);
    ExpectRow(Global("Mirror"), 2, 0, 0, 2);
    ExpectRow(Global("Below"), 3, 100, 200, -600);
    Goto(1.0);
    FBMatrix below = Global("Below");
    ExpectRow(below, 3, 500, 600, -1400);
    const double determinant =
        below(0, 0) * below(1, 1) * below(2, 2) - below(0, 1) * below(1, 0) * below(2, 2);
    EXPECT_NEAR(determinant, 2.0, 1e-4);
    ExpectRow(Global("Back"), 0, -1, 0, 0); // mirrored twice is a rotation as it stands
    ExpectRow(Global("Back"), 2, 0, 0, -2);
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

    Goto(0.0); // looks along -Z, up Y, right X
    ExpectRow(Global("Eye"), 0, 0, 0, -1);
    ExpectRow(Global("Eye"), 1, 0, 1, 0);
    ExpectRow(Global("Eye"), 2, 1, 0, 0);
    ExpectRow(Global("Held"), 3, 100, 100, -200);
    ExpectRow(Global("Held"), 0, 1, 0, 0);
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
              "3 extras are passed over, being neither truth values, texts, numbers nor 3 or 4 numbers: "
              "pair, nested, nothing");

    std::vector<FBProperty*> properties;
    FBModel& model = Model("A");
    for (int i = 0; i < model.PropertyList.GetCount(); ++i)
    {
        if (model.PropertyList[i]->IsUserProperty())
            properties.push_back(model.PropertyList[i]);
    }
    const std::vector<std::pair<std::string, FBPropertyType>> expected{
        {"on", kFBPT_bool},     {"count", kFBPT_int},      {"much", kFBPT_double},   {"weight", kFBPT_double},
        {"tag", kFBPT_charptr}, {"place", kFBPT_Vector3D}, {"tint", kFBPT_ColorRGBA}};
    ASSERT_EQ(properties.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
        EXPECT_EQ(properties[i]->GetName(), expected[i].first);
        EXPECT_EQ(properties[i]->GetPropertyType(), expected[i].second) << expected[i].first;
    }
    EXPECT_EQ(properties[0]->AsInt(), 1);
    EXPECT_EQ(properties[1]->AsInt(), -3);
    double number = 0.0;
    properties[2]->GetData(&number, sizeof number);
    EXPECT_EQ(number, 5.0e9);
    EXPECT_STREQ(properties[4]->AsString(), "h\xC3\xA9");
    FBVector3d place;
    properties[5]->GetData(&place, sizeof place);
    EXPECT_EQ(place[1], 2.5);
    FBColorAndAlpha tint;
    properties[6]->GetData(&tint, sizeof tint);
    EXPECT_EQ(tint[3], 0.4);

    FBModel& root = *static_cast<FBModel*>(mobu_host::Scene().RootModel);
    FBProperty* last = root.PropertyList[root.PropertyList.GetCount() - 1];
    EXPECT_STREQ(last->GetName(), "shot");
    EXPECT_TRUE(last->IsUserProperty());
}

TEST_F(GltfImportTest, TextBinaryAndSeparateBufferGiveTheSame)
{
    Document document;
    document.Node({{"name", "A"}}).Animation({{"name", "Go"}}).Channel(0, "translation", {0, 0, 0, 1, 0, 0});
    Write("keys.bin", document.Buffer());
    const std::pair<const char*, std::string> files[] = {{"a.gltf", document.Text()},
                                                         {"a.glb", document.Binary()},
                                                         {"b.gltf", document.TextBesideBuffer("keys.bin")}};
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
    document.Node({{"name", "A"}, {"mesh", 7}, {"skin", 9}});
    document.json["meshes"] = {{{"primitives", {{{"attributes", {{"POSITION", 99}}}}}}}};
    document.json["images"] = {{{"uri", "not_there.png"}}};
    document.json["extensionsRequired"] = {"KHR_draco_mesh_compression"};
    document.Animation({{"name", "Blend"}}).Channel(0, "translation", {0, 0, 0, 1, 0, 0});
    document.Channel(0, "weights", {0, 0, 0});
    const auto result = Open("a.gltf", document.Text());
    EXPECT_EQ(result.notes, Names{"1 blend shape channel is passed over: A"});
    Goto(1.0);
    ExpectRow(Global("A"), 3, 100, 0, 0);
}

} // namespace
