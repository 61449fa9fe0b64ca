// tv2 convert: files, report and exit codes. What is in the results is tested beside the converter.

#include "tests/tools/tool_test.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

class ConvertTest : public ToolTest
{
protected:
    /// Nodes of which nothing is lost.
    std::string SavePlain(const std::string& name, const char16_t* node = u"Hips") const
    {
        TEV2 scene;
        scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
        scene.environment.timeRange = {0.0f, 1.0f};
        for (const char16_t* const each : {u"Scene", node})
        {
            TEV2_MATRIX_NODE& made = scene.matrixHierarchy.nodes.emplace_back();
            made.name = TEV2_WIDE_STRING(each);
            made.parentIndex = static_cast<std::int32_t>(scene.matrixHierarchy.nodes.size()) - 2;
            made.translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
            made.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({});
        }
        scene.matrixHierarchy.nodes[1].translation =
            MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {0, 0, 1}}, {1.0f, {2, 0, 1}}});
        return Save(scene, name);
    }

    /// The JSON of a GLB.
    static nlohmann::json JsonOf(const std::string& path)
    {
        const std::string bytes = ReadText(path);
        const auto size = static_cast<std::size_t>(static_cast<unsigned char>(bytes.at(12))) |
                          static_cast<std::size_t>(static_cast<unsigned char>(bytes.at(13))) << 8;
        return nlohmann::json::parse(bytes.substr(20, size));
    }
};

TEST_F(ConvertTest, WritesGlbAndGltfWithABufferBesideIt)
{
    const std::string walk = SavePlain("walk.tv2");
    const auto glb = RunTv2({"convert", walk, Path("walk.glb")});
    EXPECT_EQ(glb.exit_code, 0) << glb.err;
    EXPECT_EQ(glb.out, Path("walk.glb") + ": 2 nodes, 1 animation\n");
    const nlohmann::json json = JsonOf(Path("walk.glb"));
    EXPECT_EQ(json["asset"]["version"], "2.0");
    EXPECT_EQ(json["animations"][0]["name"], "walk");
    EXPECT_EQ(json["nodes"][1]["translation"], nlohmann::json({0.0, 1.0, 0.0})); // Z was up

    EXPECT_EQ(RunTv2({"convert", walk, Path("WALK.GLB")}).exit_code, 0);
    EXPECT_EQ(ReadText(Path("WALK.GLB")), ReadText(Path("walk.glb")));
    EXPECT_EQ(RunTv2({"convert", Path("WALK.GLB"), Path("BACK.TV2")}).exit_code, 0);
    EXPECT_EQ(RunTv2({"convert", walk, Path("a b.gltf")}).exit_code, 0);
    const nlohmann::json text = nlohmann::json::parse(ReadText(Path("a b.gltf")));
    EXPECT_EQ(text["buffers"][0]["uri"], "a%20b.bin");
    EXPECT_EQ(text["buffers"][0]["byteLength"], ReadText(Path("a b.bin")).size());
}

TEST_F(ConvertTest, OptionsDecideOnTimeAndWorldAndSeveralFilesAreAnimations)
{
    const std::string walk = SavePlain("walk.tv2");
    const std::string run = SavePlain("run.tv2");
    EXPECT_EQ(RunTv2({"convert", "--at", "0.5", walk, Path("pose.glb")}).exit_code, 0);
    EXPECT_EQ(JsonOf(Path("pose.glb"))["nodes"][1]["translation"], nlohmann::json({1.0, 1.0, 0.0}));
    EXPECT_FALSE(JsonOf(Path("pose.glb")).contains("animations"));
    ExpectParts(RunTv2({"convert", "--at", "2", walk, Path("pose.glb")}).out,
                {"note: 2.0 s is outside the file's time range, 0.0 to 1.0 s: "});
    EXPECT_EQ(RunTv2({"convert", "--world", "y-up", walk, Path("y.glb")}).exit_code, 0);
    EXPECT_TRUE(JsonOf(Path("y.glb"))["nodes"][0].contains("rotation")); // the world is another
    EXPECT_EQ(RunTv2({"convert", walk, run, Path("both.glb")}).exit_code, 0);
    EXPECT_EQ(JsonOf(Path("both.glb"))["animations"].size(), 2u);
    const auto unlike = RunTv2({"convert", walk, SavePlain("other.tv2", u"Hat"), Path("none.glb")});
    EXPECT_EQ(unlike.exit_code, 2);
    ExpectParts(unlike.err, {"\"Hips\" in walk is \"Hat\" in other"});
    EXPECT_FALSE(std::filesystem::exists(Path("none.glb")));
}

TEST_F(ConvertTest, ReportsLossesAndWritesNothingWhenStrict)
{
    const std::string file = Save(*[]
                                  {
                                      auto scene = std::make_unique<TEV2>();
                                      FillSoundScene(*scene);
                                      return scene;
                                  }());
    const auto lossy = RunTv2({"convert", file, Path("a.glb")});
    EXPECT_EQ(lossy.exit_code, 1);
    ExpectParts(lossy.out, {"4 nodes, 1 animation, 2 cameras", // one is the switcher's
                            "lost: property-animation-lost", "\"Hips\"", "assumed: world-assumed",
                            "changed: camera-reduced"});
    const auto strict = RunTv2({"convert", "--strict", file, Path("b.glb")});
    EXPECT_EQ(strict.exit_code, 2);
    ExpectParts(strict.err, {"property-animation-lost", "b.glb: not written"});
    EXPECT_FALSE(std::filesystem::exists(Path("b.glb")));
    EXPECT_EQ(RunTv2({"convert", "--strict", SavePlain("plain.tv2"), Path("c.glb")}).exit_code, 0);

    const nlohmann::json json = RunTv2({"convert", "--json", file, Path("a.glb")}).Json();
    EXPECT_EQ(json["files"][0]["output"], Path("a.glb"));
    EXPECT_EQ(json["lost"], true);
    EXPECT_EQ(json["worlds"], nlohmann::json({"y-up"}));
    EXPECT_EQ(json["report"][0]["code"], "camera-reduced");
    EXPECT_EQ(json["report"][0]["severity"], "changed");
}

TEST_F(ConvertTest, ListsItsCodes)
{
    const auto text = RunTv2({"convert", "--codes"});
    EXPECT_EQ(text.exit_code, 0);
    const nlohmann::json codes = RunTv2({"convert", "--codes", "--json"}).Json()["codes"];
    EXPECT_GT(codes.size(), 30u);
    for (const nlohmann::json& code : codes)
        ExpectParts(text.out, {code["code"], code["severity"], code["meaning"]});
}

TEST_F(ConvertTest, RefusesWhatItCannotConvert)
{
    const std::string walk = SavePlain("walk.tv2");
    const struct
    {
        std::vector<std::string> arguments;
        std::string why;
    } cases[] = {
        {{walk}, "two files are needed"},
        {{walk, Path("a.fbx")}, "the last one and ends in .glb, .gltf or .tv2"},
        {{walk, Path("a.tv2")}, "only .glb and .gltf files become .tv2"},
        {{Path("a.glb"), Path("b.glb")}, "only .tv2 files become glTF"},
        {{Path("a.glb"), Path("b.glb"), Path("a.tv2")}, "only one glTF file"},
        {{"--at", "1", Path("a.glb"), Path("a.tv2")}, "--at is for conversions to glTF"},
        {{"--standard-materials", walk, Path("a.glb")}, "--standard-materials is for conversions from glTF"},
        {{"--codes", walk}, "takes no files"},
        {{"--at", "1", walk, walk, Path("a.glb")}, "--at makes a pose of one .tv2 file"},
        {{"-", Path("a.tv2")}, "-: only .tv2 files are read from standard input"},
        {{"--world", "up", walk, Path("a.glb")}, "--world"},
    };
    for (const auto& c : cases)
    {
        std::vector<std::string> arguments = {"convert"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const auto run = RunTv2(arguments);
        EXPECT_EQ(run.exit_code, 2) << c.why;
        ExpectParts(run.err, {c.why});
    }
    std::filesystem::create_hard_link(walk, Path("walk.glb"));
    EXPECT_EQ(RunTv2({"convert", walk, Path("walk.glb")}).exit_code, 2); // it is the input
    EXPECT_EQ(RunTv2({"convert", walk, Path("none/a.glb")}).exit_code, 2);
}

} // namespace
