// tv2 export --report: what key reduction cost.

#include "tests/tools/export/export_fixture.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <sys/resource.h>

namespace
{

// A leg of 1 m below hips that rest until, in the last frame, they go by 0.09 mm and turn by 0.01 degrees. Both are too
// little for a key: a component may be off by 0.0001 (metres, or of the quaternion).
constexpr const char* kLateStep =
    R"(HIERARCHY ROOT Hips { OFFSET 0 0 0 CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
JOINT Leg { OFFSET 0 100 0 CHANNELS 3 Zrotation Xrotation Yrotation End Site { OFFSET 0 0 0 } } }
MOTION Frames: 5 Frame Time: 0.04
0 0 0 0 0 0 0 0 0
0 0 0 0 0 0 0 0 0
0 0 0 0 0 0 0 0 0
0 0 0 0 0 0 0 0 0
0.009 0 0 -0.01 0 0 0 0 0
)";

class KeyReductionTest : public ExportCommandTest
{
protected:
    KeyReductionTest()
    {
        Write("late.bvh", kLateStep);
        fs::create_directory(Path("temporary"));
        setenv("TEST_TMPDIR", testing::TempDir().c_str(), 1); // the tests' own folders stay where they are
        setenv("TMPDIR", Path("temporary").c_str(), 1);
    }

    ~KeyReductionTest() override
    {
        EXPECT_TRUE(fs::is_empty(Path("temporary"))) << "something is left of the export with every key";
        unsetenv("TMPDIR");
        unsetenv("TEST_TMPDIR");
    }

    CommandResult Report(const std::string& scene, const std::string& output, Arguments options = {}) const
    {
        options.insert(options.end(), {"--report", Path(scene), Path(output)});
        return Export(options);
    }

    std::string Hash(const std::string& file) const
    {
        return FileOf(RunTv2({"hash", "--json", Path(file)}))["contents"];
    }
};

TEST_F(KeyReductionTest, ErrorsAreThoseOfTheKeysThatWereDropped)
{
    const CommandResult run = Report("late.bvh", "late.tv2", {"--json"});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    const nlohmann::json cost = FileOf(run)["keyReduction"];
    const double turned = 0.01 * std::numbers::pi / 180.0;
    const double hips = 0.09;                            // mm
    const double leg = 0.09 + 1000.0 * std::sin(turned); // both go to the same side
    constexpr double kInstants = 5.0;
    const std::map<std::string, std::pair<double, double>> expected = {{"Hips", {hips, 0.01}},
                                                                       {"Leg", {leg, 0.01}}};
    EXPECT_EQ(cost["instants"], kInstants);
    std::size_t found = 0;
    std::uint64_t kept = 0;
    for (const auto& node : cost["nodes"])
    {
        kept += node["keysKept"].get<std::uint64_t>();
        EXPECT_EQ(node["keysSampled"], 10) << node;
        EXPECT_EQ(node["keysKept"], 2) << node; // of each track only the first key is left
        const auto error = expected.find(node["name"]);
        if (error == expected.end())
            continue;
        ++found;
        const auto [place, rotation] = error->second;
        EXPECT_NEAR(node["millimetres"]["worst"].get<double>(), place, 5e-4) << node;
        EXPECT_NEAR(node["millimetres"]["mean"].get<double>(), place / kInstants, 1e-4) << node;
        EXPECT_NEAR(node["degrees"]["worst"].get<double>(), rotation, 5e-5) << node;
        EXPECT_NEAR(node["degrees"]["mean"].get<double>(), rotation / kInstants, 1e-5) << node;
        EXPECT_EQ(node["millimetres"]["time"].get<float>(), 0.16f);
        EXPECT_EQ(node["degrees"]["time"].get<float>(), 0.16f);
    }
    EXPECT_EQ(found, expected.size());
    EXPECT_EQ(cost["keysKept"], kept);
    EXPECT_EQ(cost["millimetres"]["nodeName"], cost["nodes"][0]["name"]); // the worst comes first
    EXPECT_EQ(cost["millimetres"]["worst"], cost["nodes"][0]["millimetres"]["worst"]);
    EXPECT_NEAR(cost["millimetres"]["worst"].get<double>(), leg, 5e-4);
    EXPECT_EQ(cost["nodes"].back()["name"], "Scene"); // it does not move
    EXPECT_EQ(cost["nodes"].back()["millimetres"]["worst"], 0.0);
    EXPECT_EQ(cost["nodes"].back()["millimetres"]["time"], nullptr);
    ExpectParts(Report("late.bvh", "late.tv2").out,
                {"  What key reduction cost, in the world, at 5 instants:\n", "      0.265     0.160 ",
                 "       0.01     0.160 ", "  Hips\n", "all 4 nodes\n  1 node is exact\n  farthest off: \"",
                 "\", 0.265 mm at 0.160 s; turned most: \"", "\", 0.01 degrees at 0.160 s\n"});
}

TEST_F(KeyReductionTest, FilesAreThoseOfAnExportWithoutReport)
{
    for (const Arguments& options :
         {Arguments{}, Arguments{"--fps", "30000/1001"}, Arguments{"--start-frame", "1"}})
    {
        Arguments plain = options;
        plain.insert(plain.end(), {Path("late.bvh"), Path("plain.tv2")});
        EXPECT_EQ(Export(plain).exit_code, 0);
        Arguments with_json = options;
        with_json.push_back("--json");
        const CommandResult run = Report("late.bvh", "report.tv2", with_json);
        EXPECT_EQ(run.exit_code, 0) << run.err;
        EXPECT_EQ(Hash("report.tv2"), Hash("plain.tv2"));
        const nlohmann::json file = FileOf(run);
        EXPECT_EQ(file["keyReduction"].value("instants", 0), file["samples"]) << file;
        EXPECT_LT(file["keyReduction"]["keysKept"], file["keyReduction"]["keysSampled"]);
    }
    const CommandResult takes =
        Report("takes.gltf", "t.tv2", {"--json", "--all-takes", "--no-spaces-to-underscores"});
    EXPECT_EQ(takes.exit_code, 0) << takes.err;
    const nlohmann::json answer = takes.Json();
    for (const auto& file : answer["files"])
        EXPECT_EQ(file["keyReduction"].value("instants", 0), file["samples"]) << file;
    Write("steps.txt", "click \"EXPORT_BUTTON_REGION_NAME\"\n");
    const CommandResult dialog =
        Report("late.bvh", "d.tv2", {"--json", "--dialog-script", Path("steps.txt")});
    EXPECT_EQ(dialog.exit_code, 0) << dialog.err;
    EXPECT_EQ(FileOf(dialog)["keyReduction"].value("instants", 0), FileOf(dialog)["samples"]);
}

TEST_F(KeyReductionTest, AReportThatFailsLeavesTheExport)
{
    const auto expect_failure = [this](const CommandResult& run, const std::string& why)
    {
        ExpectComplaint(run, 1, "late.tv2: exported, but what key reduction cost was not measured: ");
        ExpectComplaint(run, 1, why);
        EXPECT_EQ(FileOf(run)["ok"], true);
        EXPECT_TRUE(FileOf(run)["keyReduction"].contains("error"));
        EXPECT_EQ(RunTv2({"check", Path("late.tv2")}).exit_code, 0);
    };
    ASSERT_EQ(Report("late.bvh", "late.tv2").exit_code, 0);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{fs::file_size(Path("late.tv2")) + 50,
                       before.rlim_max}; // the file with every key is larger
    setrlimit(RLIMIT_FSIZE, &small);
    const CommandResult full = Report("late.bvh", "late.tv2", {"--json"});
    setrlimit(RLIMIT_FSIZE, &before);
    expect_failure(full, "the file with every key cannot be read");

    setenv("TMPDIR", Path("nowhere").c_str(), 1);
    expect_failure(Report("late.bvh", "late.tv2", {"--json"}), "temporary folder");
    setenv("TMPDIR", Path("temporary").c_str(), 1);

    setenv("LIE_SOURCE", Path("late.tv2").c_str(), 1);
    const CommandResult liar =
        Export({"--report", "--plugin", LYING_EXPORTER, Path("late.bvh"), Path("late.tv2")});
    unsetenv("LIE_SOURCE");
    EXPECT_NE(liar.exit_code, 0);
}

} // namespace
