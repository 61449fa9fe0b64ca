#include "tests/gltf/converted.h"

#include "gltf/error.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/up_axis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <span>

// What the conversion from glTF reports and refuses, and values that a round trip cannot see.

using namespace tv2_tests;
using namespace TEV2_LOADER;

namespace
{

/// One node with one triangle.
RawGltf Triangle()
{
    RawGltf document;
    Json& root = document.root;
    const std::size_t positions = document.Add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3");
    root["meshes"] = Json::array({{{"name", "Wall"}}});
    root["meshes"][0]["primitives"] = Json::array({{{"attributes", {{"POSITION", positions}}}}});
    root["nodes"] = Json::array({{{"name", "Node"}, {"mesh", 0}}});
    root["scenes"] = Json::array({{{"nodes", {0}}}});
    return document;
}

void AddMoves(RawGltf& document, const std::vector<float>& values, const char* interpolation,
              const std::vector<float>& times = {0.0f, 1.0f})
{
    document.root["animations"] = Json::array({{{"name", "Go"}}});
    Json& animation = document.root["animations"][0];
    animation["channels"] =
        Json::array({{{"sampler", 0}, {"target", {{"node", 0}, {"path", "translation"}}}}});
    animation["samplers"] = Json::array({{{"input", document.Add(times, "SCALAR")},
                                          {"output", document.Add(values, "VEC3")},
                                          {"interpolation", interpolation}}});
}

struct Case
{
    const char* code; // the only one; empty: none
    std::function<void(RawGltf&)> change;
};

void ExpectReports(std::span<const Case> cases)
{
    for (const Case& item : cases)
    {
        RawGltf document = Triangle();
        item.change(document);
        SCOPED_TRACE(document.root.dump());
        const FromDocument from(document.Glb());
        EXPECT_EQ(CodesOf(from.report),
                  *item.code ? std::set<std::string>{item.code} : std::set<std::string>{});
        EXPECT_EQ(UpAxis(*Reloaded(*from.scenes[0])), TEV2_UP_AXIS::PlusY);
    }
}

TEST(FromGltf, ReportsEachLossOfNodesAndMeshes)
{
    const auto primitive = [](RawGltf& d) -> Json& { return d.root["meshes"][0]["primitives"][0]; };
    const Case cases[] = {
        {"", [](RawGltf&) {}},
        {"", [&](RawGltf& d) { primitive(d)["mode"] = 5; }},
        {"scene-lost", [](RawGltf& d) { d.root["scenes"].push_back(Json::object()); }},
        {"scene-lost", [](RawGltf& d) { d.root["nodes"].push_back(Json::object()); }},
        {"unused-lost", [](RawGltf& d) { d.root["meshes"].push_back(d.root["meshes"][0]); }},
        {"shear-dropped", [](RawGltf& d)
         { d.root["nodes"][0]["matrix"] = {1, 0, 0, 0, 0.5, 1, 0, 0, 0, 0, 1, 0, 4, 5, 6, 1}; }},
        {"", [](RawGltf& d)
         { d.root["nodes"][0]["matrix"] = {0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 4, 0, 4, 5, 6, 1}; }},
        {"primitive-lost", [&](RawGltf& d) { primitive(d)["mode"] = 1; }},
        {"attribute-lost", [&](RawGltf& d) { primitive(d)["attributes"]["_HEAT"] = 0; }},
        {"attribute-filled",
         [](RawGltf& d)
         {
             Json other = d.root["meshes"][0]["primitives"][0];
             other["attributes"]["NORMAL"] = 0;
             d.root["meshes"][0]["primitives"].push_back(other);
         }},
    };
    ExpectReports(cases);
}

TEST(FromGltf, ReportsEachLossOfOtherThings)
{
    const auto image = [](RawGltf& d, const Json& what)
    {
        d.root["images"] = Json::array({what});
        d.root["textures"] = Json::array({{{"source", 0}}});
        d.root["materials"] = Json::array({{{"emissiveTexture", {{"index", 0}}}}});
    };
    const Case cases[] = {
        {"camera-lost",
         [](RawGltf& d)
         {
             d.root["cameras"] = Json::array({{{"type", "orthographic"}}});
             d.root["nodes"][0]["camera"] = 0;
         }},
        {"aspect-assumed",
         [](RawGltf& d)
         {
             d.root["cameras"] = Json::array({{{"type", "perspective"}, {"perspective", {{"yfov", 0.5}}}}});
             d.root["nodes"][0]["camera"] = 0;
         }},
        {"extras-lost", [](RawGltf& d) { d.root["nodes"][0]["extras"]["deep"]["er"] = 1; }},
        {"number-rounded", [](RawGltf& d) { d.root["nodes"][0]["extras"]["big"] = 3000000001; }},
        {"number-rounded", [](RawGltf& d) { d.root["nodes"][0]["extras"]["fine"] = 0.12345678901234; }},
        {"extension-lost", [](RawGltf& d) { d.root["nodes"][0]["extensions"]["EXT_x"] = Json::object(); }},
        {"resampled",
         [](RawGltf& d) {
             AddMoves(d, {0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0}, "CUBICSPLINE");
         }},
        {"",
         [](RawGltf& d) {
             AddMoves(d, {0, 0, 0, 1, 2, 3}, "STEP");
         }},
        {"key-dropped",
         [](RawGltf& d) {
             AddMoves(d, {0, 0, 0, 1, 2, 3, 4, 5, 6}, "LINEAR", {0.0f, 1.0f, 1.0f});
         }},
        {"rotation-normalised",
         [](RawGltf& d) {
             d.root["nodes"][0]["rotation"] = {0, 0, 0, 2};
         }},
        {"image-renamed",
         [&](RawGltf& d) {
             image(d, {{"uri", "../../secret/skin.png"}});
         }},
        {"image-written",
         [&](RawGltf& d) {
             image(d, {{"uri", "data:image/png;base64,iVBORw=="}});
         }},
    };
    ExpectReports(cases);
}

TEST(FromGltf, RefusesWithThePlace)
{
    const std::pair<std::function<void(RawGltf&)>, const char*> cases[] = {
        {[](RawGltf& d) { d.root["extensionsRequired"] = {"KHR_draco_mesh_compression"}; },
         "it requires the extension \"KHR_draco_mesh_compression\", which is not read"},
        {[](RawGltf& d) { d.root["nodes"][0]["mesh"] = 7; }, "nodes[0] \"Node\": mesh is none of the file"},
        {[](RawGltf& d) {
             d.root["meshes"][0]["primitives"][0]["indices"] = d.Add<std::uint16_t>({0, 1, 9}, "SCALAR");
         },
         "accessors[1]: element 2 leads to none of the 3 vertices"},
        {[](RawGltf& d) {
             d.root["nodes"][0]["translation"] = {1e300, 0, 0};
         },
         "nodes[0] \"Node\": has a number that is too large for single precision"},
        {[](RawGltf& d) { d.root["nodes"][0]["skin"] = 0; }, "nodes[0] \"Node\": skin is none of the file"},
    };
    for (const auto& [change, cause] : cases)
    {
        RawGltf document = Triangle();
        change(document);
        try
        {
            const FromDocument from(document.Glb());
            ADD_FAILURE() << cause;
        }
        catch (const gltf::Error& error)
        {
            EXPECT_TRUE(std::string(error.what()).starts_with(std::string(cause).substr(0, 12)) &&
                        std::string(error.what()).find(std::string(cause).substr(12)) != std::string::npos)
                << error.what() << " instead of " << cause;
        }
    }
}

// The parts of a document can be shown any number of times in a few bytes each.
TEST(FromGltf, RefusesWhatWouldTakeFarMoreMemoryThanTheFile)
{
    RawGltf document = Triangle();
    document.root["meshes"][0]["primitives"][0]["attributes"]["POSITION"] =
        document.Add(std::vector<float>(30'000, 1.0f), "VEC3");
    for (int i = 1; i < 4000; ++i)
    {
        Json mesh = document.root["meshes"][0];
        mesh["primitives"][0]["attributes"]["NORMAL"] = i % 2;
        mesh["extras"]["targetNames"] = {i};
        mesh["primitives"][0]["targets"] = Json::array({Json::object()});
        mesh["primitives"][0]["attributes"].erase("NORMAL");
        document.root["meshes"].push_back(mesh);
        document.root["nodes"].push_back({{"mesh", i}});
        document.root["scenes"][0]["nodes"].push_back(i);
    }
    try
    {
        const FromDocument from(document.Glb());
        ADD_FAILURE() << "480 MB from 1 MB";
    }
    catch (const gltf::Error& error)
    {
        EXPECT_NE(std::string(error.what()).find("far more memory"), std::string::npos) << error.what();
    }
}

// Within 0.0001 of the curve, a cubic Hermite spline worked out here, with no more keys than that takes.
TEST(FromGltf, ReplacesCurvesByLinesThatAreClose)
{
    RawGltf document = Triangle();
    const float out = 4.0f, in = -3.0f, to = 2.0f;
    AddMoves(document, {0, 0, 0, 0, 0, 0, out, 0, 0, in, 0, 0, to, 0, 0, 0, 0, 0}, "CUBICSPLINE");
    const FromDocument from(document.Glb());
    const auto& track =
        static_cast<TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(*from.scenes[0]->matrixHierarchy.nodes[0].translation);
    double worst = 0.0;
    for (int i = 0; i <= 4000; ++i)
    {
        const float time = static_cast<float>(i) / 4000.0f;
        from.scenes[0]->SetTime(time);
        const double t = static_cast<double>(time);
        const double expected = (t * t * t - 2 * t * t + t) * static_cast<double>(out) +
                                (3 * t * t - 2 * t * t * t) * static_cast<double>(to) +
                                (t * t * t - t * t) * static_cast<double>(in);
        worst = std::max(worst, std::abs(expected - static_cast<double>(track.GetValue().x)));
    }
    EXPECT_LE(worst, 0.0001);
    EXPECT_LE(track.m_times.size(), 200u);
}

TEST(FromGltf, MakesStandardMaterialsOnRequest)
{
    RawGltf document = Triangle();
    document.root["materials"] = Json::array({{{"name", "Steel"},
                                               {"pbrMetallicRoughness",
                                                {{"baseColorFactor", {0.5, 0.25, 1.0, 1.0}},
                                                 {"metallicFactor", 0.5},
                                                 {"roughnessFactor", 0.5}}}}});
    const FromDocument from(document.Glb(), {.standard_materials = true});
    ASSERT_EQ(from.scenes[0]->materials[0]->GetType(), TEV2_STANDARD_MATERIAL::kType);
    const auto& material = static_cast<TEV2_STANDARD_MATERIAL&>(*from.scenes[0]->materials[0]);
    EXPECT_EQ(material.diffuse->GetValue().red, 0.25f);
    EXPECT_NEAR(material.specular->GetValue().red, 0.27f, 1e-6f);
    EXPECT_NEAR(std::exp2(10.0f * material.shininess->GetValue()), 2.0f / 0.0625f - 2.0f, 1e-3f);
    EXPECT_EQ(CodesOf(from.report), std::set<std::string>{"material-approximated"});
}

TEST(FromGltf, TheCameraSwitcherComesBackAndItsNodeDoesNot)
{
    RawGltf document;
    Json& root = document.root;
    root["cameras"] = Json::array(
        {{{"name", "Left"}, {"type", "perspective"}, {"perspective", {{"yfov", 1}, {"aspectRatio", 1}}}},
         {{"name", "Right"}, {"type", "perspective"}, {"perspective", {{"yfov", 1}, {"aspectRatio", 1}}}}});
    root["nodes"] = {{{"camera", 0}},
                     {{"camera", 1}},
                     {{"name", "Camera Switcher"}, {"camera", 0}, {"extras", {{"cameraSwitcher", true}}}}};
    root["scenes"] = Json::array({{{"nodes", {0, 1, 2}}}});
    root["scenes"][0]["extras"]["cameraSwitcher"] =
        Json::array({{{"animation", ""}, {"times", {0.0, 0.5, 2.0}}, {"cameras", {"Right", "Left", ""}}}});
    const FromDocument from(document.Glb());
    EXPECT_EQ(from.scenes[0]->matrixHierarchy.nodes.size(), 2u);
    ASSERT_TRUE(from.scenes[0]->cameraMan.cameraIndex);
    EXPECT_TRUE(from.report.IsEmpty());
    const std::pair<float, int> expected[] = {{0.25f, 1}, {0.75f, 0}, {2.0f, -1}};
    for (const auto& [time, camera] : expected)
    {
        from.scenes[0]->SetTime(time);
        EXPECT_EQ(from.scenes[0]->cameraMan.cameraIndex->GetValue(), camera) << time;
    }
}

} // namespace
