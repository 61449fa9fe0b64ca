#include "host/import/base/parse_error.h"
#include "host/import/formats.h"
#include "host/import/host_scene.h"
#include "tests/host/import/builders/collada_text.h"
#include "tests/host/import/import_fixture.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/scene_texts.h"

// What reading takes of memory at most, as SECURITY.md states it.

namespace
{

using namespace mobu_host;

constexpr std::size_t kPerByte = 64;       // of the file, for the reader
constexpr std::size_t kBesides = 16 << 20; // for the reader
constexpr std::size_t kPerModel = 8 << 10; // for the host's scene, takes counted as models
constexpr std::size_t kPerKey = 64;        // for the host's scene
constexpr std::size_t kOfAnEmptyScene = 1 << 20;

const std::string kNode = ",\"nodes\":[{}]";

std::string Gltf(const std::string& rest, const std::string& shown = "0")
{
    return "{\"asset\":{\"version\":\"2.0\"},\"scenes\":[{\"nodes\":[" + shown + "]}]" + rest + "}";
}

std::string GltfNodes(std::size_t count, const std::string& rest = "")
{
    return Gltf(",\"nodes\":[{}" + tv2_tests::Repeated(",{}", count - 1) + "]" + rest,
                tv2_tests::Numbered(count));
}

// Accessor 0 of floats and accessor 1 of vectors, all zero, in one buffer.
std::string Accessors(int count)
{
    const std::string bytes = std::to_string(12 * count), elements = std::to_string(count);
    return ",\"buffers\":[{\"byteLength\":" + bytes + ",\"uri\":\"data:;base64," +
           std::string(16 * static_cast<std::size_t>(count), 'A') +
           "\"}],\"bufferViews\":[{\"buffer\":0,\"byteLength\":" + bytes +
           "}],\"accessors\":[{\"bufferView\":0,\"componentType\":5126,\"type\":\"SCALAR\",\"count\":" +
           elements + "},{\"bufferView\":0,\"componentType\":5126,\"type\":\"VEC3\",\"count\":" + elements +
           "}]";
}

// The file that asks for the most memory by one thing that the format repeats.
struct HungryFile
{
    const char* what;
    const char* format;
    std::string (*bytes)();
};

const HungryFile kFiles[] = {
    {"joints", "BVH",
     [] { return tv2_tests::BvhText(tv2_tests::Repeated("JOINT{}", 65'537), "Frames:0\nFrame Time:1"); }},
    {"end sites", "BVH",
     [] { return tv2_tests::BvhText(tv2_tests::Repeated("End Site{}", 65'537), "Frames:0\nFrame Time:1"); }},
    {"end sites of a long name", "BVH",
     []
     {
         return tv2_tests::BvhText("JOINT " + std::string(256, 'x') + "\n{" +
                                       tv2_tests::Repeated("End Site{}", 65'537) + "}",
                                   "Frames:0\nFrame Time:1");
     }},
    {"joints that move", "BVH",
     []
     {
         return tv2_tests::BvhText(tv2_tests::Repeated("JOINT\n{CHANNELS 1 Xposition}", 30'000),
                                   "Frames:1\nFrame Time:1\n" + tv2_tests::Repeated("0 ", 30'000));
     }},
    {"channels", "BVH",
     []
     {
         return tv2_tests::BvhText(
             tv2_tests::Repeated("JOINT\n{CHANNELS 100" + tv2_tests::Repeated(" Xposition", 100) + "}", 500),
             "Frames:1\nFrame Time:1\n" + tv2_tests::Repeated("0 ", 50'000));
     }},
    {"frames", "BVH",
     []
     {
         return tv2_tests::BvhText("CHANNELS 1 Xposition",
                                   "Frames:500000\nFrame Time:.01\n" + tv2_tests::Repeated("0\n", 500'000));
     }},
    {"nodes that the scene shows", "glTF", [] { return GltfNodes(200'000); }},
    {"nodes that the scene does not show", "glTF",
     [] { return Gltf(",\"nodes\":[" + tv2_tests::Repeated("{},", 1'000'000) + "{}]"); }},
    {"numbers", "glTF",
     [] { return Gltf(kNode + ",\"extras\":[" + tv2_tests::Repeated("0,", 2'000'000) + "0]"); }},
    {"objects of one member", "glTF",
     [] { return Gltf(kNode + ",\"extras\":[" + tv2_tests::Repeated("{\"\":0},", 500'000) + "0]"); }},
    {"members of one object", "glTF",
     [] { return Gltf(kNode + ",\"extras\":{" + tv2_tests::Repeated("\"\":0,", 700'000) + "\"\":0}"); }},
    {"properties", "glTF",
     [] {
         return Gltf(",\"nodes\":[{\"extras\":{" + tv2_tests::Repeated("\"a\":0,", 500'000) +
                     "\"a\":\"\"}}]");
     }},
    {"animations", "glTF",
     [] { return Gltf(kNode + ",\"animations\":[" + tv2_tests::Repeated("{},", 500'000) + "{}]"); }},
    {"one accessor in many channels", "glTF",
     []
     {
         const std::string channels =
             tv2_tests::Numbered(2'000, "{\"sampler\":0,\"target\":{\"path\":\"scale\",\"node\":", "}}");
         return GltfNodes(2'000,
                          Accessors(40'000) +
                              ",\"animations\":[{\"samplers\":[{\"input\":0,\"output\":1}],\"channels\":[" +
                              channels + "]}]");
     }},
    {"nodes", "Collada", [] { return collada_text::Document("", tv2_tests::Repeated("<node/>", 200'000)); }},
    {"elements and texts", "Collada",
     []
     {
         return collada_text::Document("<extra>" + tv2_tests::Repeated("x<a/>", 200'000) + "</extra>",
                                       "<node/>");
     }},
    {"instances of a long name", "Collada",
     []
     {
         return collada_text::Document(
             "<library_nodes><node id=\"l\" name=\"" + std::string(200, 'x') + "\"/></library_nodes>",
             "<node>" + tv2_tests::Repeated("<instance_node url=\"#l\"/>", 19'000) + "</node>");
     }},
    {"user properties", "Collada",
     []
     {
         return collada_text::Document("", "<node><extra><technique><user_properties>" +
                                               tv2_tests::Repeated("a=\n", 200'000) +
                                               "</user_properties></technique></extra></node>");
     }},
    {"keys", "Collada",
     []
     {
         const std::string numbers = tv2_tests::Repeated("0 ", 500'000);
         return collada_text::Document(
             collada_text::Animations(collada_text::Animation("a", {"n/t.X", numbers, numbers})),
             R"(<node id="n"><translate sid="t">0 0 0</translate></node>)");
     }},
    {"clips that repeat an animation", "Collada",
     []
     {
         std::string nodes, channels;
         for (int i = 0; i < 100; ++i)
         {
             const std::string id = "n" + std::to_string(i);
             nodes += "<node id=\"" + id + "\"><translate sid=\"t\">0 0 0</translate></node>";
             channels += "<channel source=\"#as\" target=\"" + id + "/t.X\"/>";
         }
         const std::string animation = "<animation id=\"a\">" +
                                       collada_text::Sampler("a", {"n0/t.X", "0", "0"}) + channels +
                                       "</animation>";
         return collada_text::Document(
             collada_text::Animations(animation) + "<library_animation_clips>" +
                 tv2_tests::Repeated("<animation_clip><instance_animation url=\"#a\"/></animation_clip>",
                                     900) +
                 "</library_animation_clips>",
             nodes);
     }},
};

TEST(SceneCost, AReaderTakesInProportionToItsFile)
{
    for (const HungryFile& file : kFiles)
    {
        const SceneFile in_memory{"hungry", file.bytes()};
        ImportNotes notes;
        const tv2_tests::AllocationPeak peak;
        const SceneDescription scene = FormatNamed(file.format)->read(in_memory, {}, notes);
        EXPECT_LE(peak.Bytes(), kPerByte * in_memory.bytes.size() + kBesides)
            << file.format << ": " << file.what;
        EXPECT_GT(scene.models.size(), 0U);
    }
}

SceneDescription Models(std::size_t count, bool cameras, std::size_t takes)
{
    SceneDescription scene;
    scene.axes.linear = EulerTurn({-90, 0, 0}, 0);
    scene.models.resize(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        scene.models[i].name = "a name of usual length";
        if (i > 0 && i % 2 == 0)
            scene.models[i].parent = static_cast<std::uint32_t>(i - 1);
        if (cameras)
            scene.models[i].lens = LensDescription();
        scene.models[i].rest.linear.at[0][0] = i % 3 == 0 ? -1.0 : 1.0;
    }
    scene.takes.resize(takes);
    for (TakeDescription& take : scene.takes)
        for (std::size_t i = 0; i < count; ++i)
            take.models.push_back({static_cast<std::uint32_t>(i), [i](double seconds) {
                                       return Affine{{}, {seconds, static_cast<double>(i), 0.0}};
                                   }});
    return scene;
}

TEST(SceneCost, TheHostTakesEightKilobytesForAModelAndSixtyFourBytesForAKey)
{
    struct Case
    {
        const char* what;
        std::size_t models;
        bool cameras;
        std::size_t takes;
    };
    for (const Case& item :
         {Case{"models", 4'000, false, 1}, Case{"cameras", 4'000, true, 1},
          Case{"models in several takes", 2'000, false, 10}, Case{"takes", 1, false, 4'000}})
    {
        NewScene();
        SceneDescription scene = Models(item.models, item.cameras, item.takes);
        ImportNotes notes;
        const tv2_tests::AllocationPeak peak;
        BuildHostScene(std::move(scene), {}, notes);
        EXPECT_LE(peak.Bytes(), kPerModel * (item.models + item.takes) + kPerKey * item.models * item.takes +
                                    kOfAnEmptyScene)
            << item.what;
    }
    NewScene();
}

// Readers stop there: what they made of the file until then is small.
TEST(SceneCost, ACallerCanLimitTheModels)
{
    const std::pair<const char*, std::string> files[] = {
        {"BVH", tv2_tests::BvhText(tv2_tests::Repeated("JOINT\n{}", 999), "Frames:0\nFrame Time:1")},
        {"glTF", GltfNodes(1000)},
        {"Collada", collada_text::Document("", tv2_tests::Repeated("<node/>", 1000))},
    };
    for (const auto& [format, bytes] : files)
    {
        ImportOptions options;
        options.most_models = 999;
        ImportNotes notes;
        const SceneFile file{"many", bytes};
        try
        {
            FormatNamed(format)->read(file, options, notes);
            ADD_FAILURE() << format;
        }
        catch (const ParseError& error)
        {
            EXPECT_STREQ(error.what(), "it has more than 999 models, which is the limit") << format;
        }
        options.most_models = 1000;
        BuildHostScene(FormatNamed(format)->read(file, options, notes), options, notes);
    }
    NewScene();
}

} // namespace
