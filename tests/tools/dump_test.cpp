// tv2 dump: every value of a file, to the bit.

#include "tests/tools/tool_test.h"
#include "tests/tools/typed_scene.h"

#include <bit>
#include <limits>
#include <random>
#include <set>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// The bits that a number, or the string of a non-finite one, stands for. Numbers are read as f32 from their text.
std::uint32_t BitsOf(const nlohmann::json& value)
{
    if (value.is_number())
        return Bits(value.get<float>());
    const std::string text = value.get<std::string>();
    if (text.starts_with("NaN"))
        return text == "NaN" ? 0x7FC00000
                             : static_cast<std::uint32_t>(std::stoul(text.substr(4), nullptr, 16));
    EXPECT_TRUE(text == "Infinity" || text == "-Infinity") << text;
    return text[0] == '-' ? 0xFF800000 : 0x7F800000;
}

class DumpTest : public ToolTest
{
protected:
    nlohmann::json DumpJson(const TEV2& scene) const
    {
        const auto result = RunTv2({"dump", "--json", Save(scene)});
        EXPECT_EQ(result.exit_code, 0) << result.err;
        return result.Json();
    }
};

TEST_F(DumpTest, FloatsReadBackToTheSameBits)
{
    std::vector<std::uint32_t> patterns = {
        Bits(0.1f),   Bits(-0.0f), Bits(1.0f), Bits(1.0f / 3.0f), Bits(16777216.0f), Bits(1e20f),
        Bits(1e-45f), 0x00000001,  0x007FFFFF, 0x00800000,        0x7F7FFFFF,        0xFF7FFFFF,
        0x7F800000,   0xFF800000,  0x7FC00000, 0xFFC00000,        0x7FC12345,        0x7F800001,
    };
    std::mt19937 random(20240305);
    for (int i = 0; i < 3000; ++i)
        patterns.push_back(static_cast<std::uint32_t>(random()));
    TEV2 scene;
    auto track = std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>();
    for (const std::uint32_t pattern : patterns)
        track->Append(std::bit_cast<float>(pattern), std::bit_cast<float>(pattern));
    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->distance = std::move(track);
    scene.cameras.push_back(std::move(camera));

    const auto distance = DumpJson(scene)["cameras"][0]["distance"];
    ASSERT_EQ(distance["m_times"].size(), patterns.size());
    ASSERT_EQ(distance["m_values"].size(), patterns.size());
    for (std::size_t i = 0; i < patterns.size(); ++i)
    {
        EXPECT_EQ(BitsOf(distance["m_times"][i]), patterns[i]) << distance["m_times"][i];
        EXPECT_EQ(BitsOf(distance["m_values"][i]), patterns[i]) << distance["m_values"][i];
    }
}

TEST_F(DumpTest, FloatsAreAsShortAsTheyCanBe)
{
    TEV2 scene;
    scene.environment.timeRange = {0.1f, 16777216.0f};
    ExpectParts(RunTv2({"dump", Save(scene)}).out,
                {"minimum: 0.1\n", "maximum: 16777216.0\n", "version: 1.16\n"});
}

/// The sound scene with every kind of record that dump writes in its own way.
void FillDumpedScene(TEV2& scene)
{
    FillSoundScene(scene);
    scene.environment.environmentColour =
        MakeTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>({{0.0f, {0.1f, 0.2f, 0.3f, 0.4f}}});
    scene.environment.reserved = {1, 2, 3, 4, 5, 6, 7, 0xFF};
    scene.cameras[0]->bounds =
        MakeTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({{0.0f, {{-1.0f, -2.0f, -3.0f}, {1.0f, 2.0f, 3.0f}}}});
    auto blur = std::make_unique<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    blur->shutterTime = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 0.02f}});
    scene.cameras[0]->effects.push_back(std::move(blur));
    scene.cameras[0]->effects.push_back(nullptr);
    scene.matrixHierarchy.nodes[2].scale =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {2.0f, 3.0f, 4.0f}}});
    scene.matrixHierarchy.nodes[2].userText = TEV2_WIDE_STRING(u"kept");
    scene.ambientLight = std::make_unique<TEV2_AMBIENT_LIGHT>();
    scene.ambientLight->Keep({0xDE, 0xAD});
    scene.lights.push_back(TEV2_LIGHT::Create(2));
    scene.lights[0]->Keep({1});
    scene.helpers.push_back(std::make_unique<TEV2_HELPER>());
    scene.helpers[0]->Keep({0xBE, 0xEF});
    scene.instanceLists[4].push_back(TEV2_INSTANCE::Create(18));
    scene.instanceLists[4][0]->Keep({0x42});
}

/// What dump says of it, by JSON pointer.
const std::vector<std::pair<std::string, nlohmann::json>> kDumped = {
    {"/information/creatorText", "MotionBuilder v17.00  Tev2 Exporter v1.14"},
    {"/information/infoText", "USERNAME:\tann\r\nFBX_FILE:\twalk.bvh\r\n"},
    {"/arrayLengths/1", 1},
    {"/arrayLengths/7", 1},
    {"/environment/timeRange/maximum", 1.0},
    {"/environment/environmentColour/m_values/0/3", 0.4},
    {"/environment/reserved", "01020304050607ff"},
    {"/ambientLight/body", "dead"},
    {"/globalLightTint", nullptr},
    {"/lights/0/type", 2},
    {"/lights/0/body", "01"},
    {"/helpers/0/body", "beef"},
    {"/instanceLists/4/0/chunkId", 18},
    {"/instanceLists/4/0/body", "42"},
    {"/instanceLists/3", nlohmann::json::array()},
    {"/cameraMan/cameraIndex/class", "TEV2_ANIMATABLE_INT32_RLE"},
    {"/cameraMan/cameraIndex/m_values", {0, -1, 0}},
    {"/cameras/0/value", 2},
    {"/cameras/0/inverseAspect", 0.75},
    {"/cameras/0/bounds/m_values/0", {-1.0, -2.0, -3.0, 1.0, 2.0, 3.0}},
    {"/cameras/0/secondaryRange", nullptr},
    {"/cameras/0/clipRange/m_values/2", {0.1, 40.0}},
    {"/cameras/0/effects/0/shutterTime/m_values/0", 0.02},
    {"/cameras/0/effects/1", nullptr},
    {"/matrixHierarchy/nodes/0/parentIndex", -1},
    {"/matrixHierarchy/nodes/1/translation/m_times", {0.0, 0.5, 1.0}},
    {"/matrixHierarchy/nodes/1/translation/m_values/1", {1.0, 1.0, 0.0}},
    {"/matrixHierarchy/nodes/1/rotation/kind", 6},
    {"/matrixHierarchy/nodes/1/rotation/m_values/1", {0.0, 0.0, 0.6, 0.8}},
    {"/matrixHierarchy/nodes/1/properties/stringArrays/0/strings", {"Low", "High"}},
    {"/matrixHierarchy/nodes/1/properties/intValues/0/track/m_values", {1, -7}},
    {"/matrixHierarchy/nodes/1/properties/floatValues/0/name", "Blend"},
    {"/matrixHierarchy/nodes/1/properties/vector3Values/0/track/m_values/0", {1.0, 2.0, 3.0}},
    {"/matrixHierarchy/nodes/1/properties/vector4Values/0/track/m_values/0", {1.0, 0.5, 0.0, 1.0}},
    {"/matrixHierarchy/nodes/2/scale/m_values/0", {2.0, 3.0, 4.0}},
    {"/matrixHierarchy/nodes/2/userText", "kept"},
};

TEST_F(DumpTest, JsonHoldsEveryRecordOfAScene)
{
    TEV2 scene;
    FillDumpedScene(scene);
    const auto json = DumpJson(scene);
    ExpectValues(json, kDumped);
    // the chunks follow the magic without gaps
    std::size_t offset = 4;
    for (const auto& chunk : json["chunks"])
    {
        EXPECT_EQ(chunk["offset"], offset);
        offset += chunk["size"].get<std::size_t>();
    }
    EXPECT_EQ(json["bytes"], offset);
}

/// What dump says of the typed scene, by JSON pointer.
const std::vector<std::pair<std::string, nlohmann::json>> kDumpedTyped = {
    {"/environment/environmentMap/type", 0},
    {"/environment/environmentMap/coordinates/projection", "sphere"},
    {"/ambientLight/colour/m_values/1", {0.0, 0.0, 0.0, 1.0}},
    {"/globalLightTint/tint", nullptr},
    {"/lights/0/type", 2},
    {"/lights/0/name", "Key"},
    {"/lights/0/layout", "missing"},
    {"/lights/0/cone/m_values/0", {0.25, 0.5}},
    {"/lights/0/shadow/method", "traced"},
    {"/lights/0/shadow/object/usesLightColour", false},
    {"/lights/0/shadow/atmosphere/opacity", nullptr},
    {"/lights/0/shadow/map/size", 1024},
    {"/lights/0/max/affectsDiffuse", true},
    {"/lights/0/max/decay", "none"},
    {"/lights/0/max/attenuation/nearRange", nullptr},
    {"/lights/0/max/projector/params/fileName", "gobo.png"},
    {"/lights/1/shadow", nullptr},
    {"/materials/0/shading", "Phong"},
    {"/materials/0/maps/0/channel", "diffuse"},
    {"/materials/0/maps/0/map/params/minify", "nearest, mip linear"},
    {"/materials/0/maps/0/map/params/crop", nullptr},
    {"/materials/0/maps/0/map/coordinates/wrap", {{"u", "repeat"}, {"v", "clamp"}}},
    {"/materials/0/maps/1/map/direction/greenDown", true},
    {"/materials/0/maps/1/map/image/params/fileName", "maps/skin_normals.png"},
    {"/materials/1/twoSided", true},
    {"/materials/1/strings/0", {{"name", "alphaMode"}, {"value", "OPAQUE"}}},
    {"/materials/1/floats/0", {{"name", "metallicFactor"}, {"track", nullptr}}},
    {"/materials/1/lights/0/light", 0},
    {"/materials/1/maps/0/name", "baseColorTexture"},
    {"/rigids/0/lights", {0, 1}},
    {"/rigids/0/subObjects/0", {{"material", 1}, {"triangles", {{0, 1, 2}, {0, 2, 3}}}}},
    {"/rigids/0/vertices/colours", nlohmann::json::array()},
    {"/rigids/0/vertices/uvs/1", {{0.0, 1.0}, {1.0, 1.0}, {1.0, 0.0}, {0.0, 0.0}}},
    {"/rigids/0/vertices/positions/2", {1.0, 1.0, 0.0}},
    {"/rigids/0/vertices/frames", nullptr},
    {"/animMeshes/0/vertices/tracks/1/position/m_values", {{1.0, 0.0, 0.0}, {1.0, 1.0, 0.0}}},
    {"/animMeshes/0/vertices/tracks/1/normal", nullptr},
    {"/morphMeshes/0/targets/1/name", "Blink"},
    {"/morphMeshes/0/targets/1/offsets/vertices", {1, 3}},
    {"/weightedMeshes/0/value", 0xFFFFFFFF},
    {"/weightedMeshes/0/skin/influences", 2},
    {"/weightedMeshes/0/skin/weights", {0.75, 0.25, 0.5, 0.5, 1.0, 0.0, 1.0, 0.0}},
    {"/weightedMeshes/0/skin/bindMatrices/1", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}},
    {"/bezierSplines/0/splines/0/type", 0},
    {"/bezierSplines/0/splines/0/closed", true},
    {"/bezierSplines/0/splines/0/curves/0", {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3}},
    {"/bezierSplines/0/splines/1/curves/0/start", nullptr},
    {"/helpers/0/shape", "box"},
    {"/instanceLists/5/0/chunkId", 18},
    {"/instanceLists/5/0/source", 0},
    {"/instanceLists/5/0/materials", {1}},
    {"/instanceLists/5/1/subObjects/0/triangles", {{0, 1, 3}}},
    {"/xrefs15/0/timeOffset", 0.5},
    {"/xrefObjects/0/chunkId", 7},
    {"/xrefObjects/0/objectName", "Chair"},
    {"/speedTreeReferences/0/height", 0.0},
};

TEST_F(DumpTest, JsonHoldsEveryFieldOfTypedBodies)
{
    TEV2 scene;
    FillTypedScene(scene);
    const auto result = RunTv2({"dump", "--json", Save(scene)});
    ExpectValues(result.Json(), kDumpedTyped);

    std::vector<std::set<std::string>> keys; // of the open objects
    const auto look = [&keys](int /*depth*/, nlohmann::json::parse_event_t event, nlohmann::json& value)
    {
        if (event == nlohmann::json::parse_event_t::object_start)
            keys.emplace_back();
        else if (event == nlohmann::json::parse_event_t::object_end)
            keys.pop_back();
        else if (event == nlohmann::json::parse_event_t::key)
        {
            EXPECT_TRUE(keys.back().insert(value.get<std::string>()).second) << value << " is there twice";
        }
        return true;
    };
    EXPECT_FALSE(nlohmann::json::parse(result.out, look).is_discarded());
}

TEST_F(DumpTest, TreeHoldsEveryFieldOfTypedBodies)
{
    TEV2 scene;
    FillTypedScene(scene);
    const std::string whole = RunTv2({"dump", Save(scene)}).out;
    ExpectParts(whole, {"    shadow:\n        method: traced\n        object:\n", "castsShadow: yes\n",
                        "          triangles: 2 values\n            0 1 2\n            0 2 3\n",
                        "        positions: 4 values\n          0.0 0.0 0.0\n", "frames: absent\n",
                        "uvs: (2)\n          [0] 4 values\n            0.0 1.0\n", "shape: box\n"});
    EXPECT_EQ(whole.find("layout"), std::string::npos);
    ExpectParts(RunTv2({"dump", "--keys", "1", Save(scene)}).out,
                {"        positions: 4 values\n          0.0 0.0 0.0\n          ... 3 more values\n"});
}

TEST_F(DumpTest, KeptBodiesShowWhatWasReadInFrontOfThem)
{
    TEV2 scene;
    FillTypedScene(scene);
    scene.rigids[0]->KeepAfterPlaced({0xAB, 0xCD});
    const auto json = DumpJson(scene);
    ExpectValues(json, {{"/rigids/0/name", "Box"},
                        {"/rigids/0/value", 1},
                        {"/rigids/0/bounds/kind", 11},
                        {"/rigids/0/body", "abcd"},
                        {"/rigids/0/vertices", "missing"}});
}

TEST_F(DumpTest, NamesAreReadableAndTheirUnitsAreNotLost)
{
    const struct
    {
        std::u16string units;
        std::string text;
        bool tells_units;
    } cases[] = {
        {u"Hips", "Hips", true},
        {u"", "", true},
        {{u'H', 0xC3, 0xBC, u'p', u'f'}, "H\xC3\xBCpf", false}, // UTF-8, widened byte by byte
        {{0xE4, 0xB8, 0xAD}, "\xE4\xB8\xAD", false},
        {{0xF0, 0x9f, 0xA6, 0xB4}, "\xF0\x9f\xA6\xB4", false},
        {{u'H', 0xFC, u'p', u'f'}, "H\xC3\xBCpf", true}, // Latin-1, no UTF-8
        {{0xC3}, "\xC3\x83", true},
        {{0xE0, 0x80, 0x80}, "\xC3\xA0\xC2\x80\xC2\x80", true}, // an overlong form is no UTF-8
        {{0x4E2D, 0x6587}, "\xE4\xB8\xAD\xE6\x96\x87", true},
        {{0xD83E, 0xDDB4}, "\xF0\x9f\xA6\xB4", true},
        {{u'a', 0xD83E, u'z'}, "a\xEF\xBF\xBDz", false}, // a lone surrogate
        {{0xDDB4, 0xD83E}, "\xEF\xBF\xBD\xEF\xBF\xBD", false},
        {{u'a', u'\n', u'"', 1}, "a\n\"\x01", true},
    };
    TEV2 scene;
    auto& texts = scene.matrixHierarchy.nodes.emplace_back().properties.stringArrays.emplace_back();
    for (const auto& item : cases)
    {
        scene.matrixHierarchy.nodes.emplace_back().name = TEV2_WIDE_STRING(item.units);
        texts.strings.push_back(TEV2_WIDE_STRING(item.units));
    }
    const auto json = DumpJson(scene);
    const auto array = json["matrixHierarchy"]["nodes"][0]["properties"]["stringArrays"][0];
    for (std::size_t i = 0; i < std::size(cases); ++i)
    {
        const auto node = json["matrixHierarchy"]["nodes"][i + 1];
        const nlohmann::json units(std::vector<unsigned>(cases[i].units.begin(), cases[i].units.end()));
        EXPECT_EQ(node["name"], cases[i].text);
        EXPECT_EQ(node.contains("nameUnits"), !cases[i].tells_units) << i;
        EXPECT_EQ(array["strings"][i], cases[i].text);
        EXPECT_EQ(node.value("nameUnits", units), units);
        EXPECT_EQ(array["stringsUnits"][i], cases[i].tells_units ? nlohmann::json() : units);
    }
}

TEST_F(DumpTest, TreeCanBeLimited)
{
    const std::string name = "H\xC3\xBCpfen";
    const std::string path = SaveSound(
        [&](TEV2& scene)
        {
            scene.matrixHierarchy.nodes[1].name = TEV2_WIDE_STRING::FromBytes(name + "\t2");
            scene.helpers.push_back(std::make_unique<TEV2_HELPER>());
            scene.helpers[0]->Keep(std::vector<std::uint8_t>(100, 0xAB));
        });
    const std::string whole = RunTv2({"dump", path}).out;
    ExpectParts(whole, {"          0.5: 1.0 1.0 0.0\n          1.0: 0.0 1.0 -2.0\n        rotation: ",
                        "name: \"" + name + "\\t2\"\n"});
    EXPECT_EQ(whole.find(" more "), std::string::npos);

    const std::string limited = RunTv2({"dump", "--keys", "1", path}).out;
    ExpectParts(limited, {"          0.0: 0.0 1.0 0.0\n          ... 2 more keys\n", "body: 100 bytes\n",
                          "... 3 more lines\n"});
    EXPECT_EQ(limited.find("0.5: "), std::string::npos);
}

} // namespace
