// Exports from the command line: what is written, what is refused, and what is noticed when it went wrong.

#include "tests/support/scene_texts.h"
#include "tests/tools/export/export_fixture.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{

class ExportVerbTest : public ExportCommandTest
{
protected:
    static std::u16string NodeName(const TEV2_LOADER::TEV2& scene, std::size_t node)
    {
        return scene.matrixHierarchy.nodes.at(node).name.Text();
    }

    std::set<std::string> Files() const { return NamesIn(""); }
};

TEST_F(ExportVerbTest, WritesTheTakeAndTellsWhatItWrote)
{
    const CommandResult run = ExportWalk("out.tv2", {"--json", "--start-frame", "-7"});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    const auto scene = Load("out.tv2");
    EXPECT_EQ(NodeName(*scene, 2), u"Leg");
    std::uint64_t keys = 0;
    for (const auto& node : scene->matrixHierarchy.nodes)
        keys += node.translation->m_times.size() + node.rotation->m_times.size();
    // clang-format off
    ExpectValues(run.Json().at("files").at(0),
                 {{"/output", Path("out.tv2")}, {"/take", "Motion"}, {"/ok", true}, {"/rate", 25}, {"/nodes", 4},
                  {"/cameras", 0}, {"/samples", 3}, {"/keysSampled", 24}, {"/keysKept", keys},
                  {"/bytes", fs::file_size(Path("out.tv2"))}});
    // clang-format on
    EXPECT_EQ(run.Json().at("notes").back(),
              "the range is cut to the take: \"Motion\" has frames 0 to 2 (0 to 0.08 s)");

    const CommandResult text = ExportWalk("out.tv2");
    EXPECT_EQ(text.exit_code, 0);
    EXPECT_EQ(text.err, ""); // no progress bar where there is no terminal
    EXPECT_TRUE(text.out.starts_with(
        Path("out.tv2") + ": take \"Motion\", 4 nodes, 0 cameras, 3 samples (25 a second), 24 keys"))
        << text.out;
    const CommandResult quiet = ExportWalk("out.tv2", {"--quiet"});
    EXPECT_EQ(quiet.out + quiet.err, "");
}

TEST_F(ExportVerbTest, OptionsReachTheExporter)
{
    EXPECT_EQ(ExportWalk("a.tv2", {"--no-remove-namespace"}).exit_code, 0);
    EXPECT_EQ(NodeName(*Load("a.tv2"), 2), u"ns:Leg");
    const CommandResult rate = ExportWalk("a.tv2", {"--json", "--fps", "40"});
    EXPECT_EQ(rate.Json().at("files").at(0).at("samples"), 5) << rate.err;

    EXPECT_EQ(ExportWalk("b.tv2", {"--select", "ns:Leg"}).exit_code, 0);
    const auto selected = Load("b.tv2");
    EXPECT_EQ(selected->matrixHierarchy.nodes.size(), 3u);
    EXPECT_EQ(NodeName(*selected, 0), u"Exporter Inserted Root");

    EXPECT_EQ(ExportWalk("c.tv2", {"--start-frame", "1"}).exit_code, 0);
    EXPECT_EQ(Load("c.tv2")->environment.timeRange.minimum, 0.04f);
    EXPECT_EQ(Load("c.tv2")->environment.timeRange.maximum, 0.08f);
    EXPECT_EQ(ExportWalk("d.tv2", {"--end-frame", "1", "--start-frame", "-7"}).exit_code, 0);
    EXPECT_EQ(Load("d.tv2")->environment.timeRange.minimum, 0.0f);
    EXPECT_EQ(Load("d.tv2")->environment.timeRange.maximum, 0.04f);

    EXPECT_EQ(ExportWalk("z.tv2").exit_code, 0);
    EXPECT_EQ(ExportWalk("y.tv2", {"--no-keep-positive-z"}).exit_code, 0);
    EXPECT_FALSE(Load("z.tv2")->matrixHierarchy.nodes[0].rotation->IsEqual(
        *Load("y.tv2")->matrixHierarchy.nodes[0].rotation));
}

TEST_F(ExportVerbTest, TakesAndNames)
{
    EXPECT_EQ(
        Export({"--all-takes", "--no-spaces-to-underscores", Path("takes.gltf"), Path("run.tv2")}).exit_code,
        0);
    EXPECT_EQ(Export({"--take", "A b", Path("takes.gltf"), Path(".tv2")}).exit_code, 0);
    EXPECT_EQ(Export({"--take", "C", Path("takes.gltf"), Path("h\xC3\xA9.tv2")}).exit_code, 0);
    EXPECT_EQ(Files(), (std::set<std::string>{"walk.bvh", "takes.gltf", "run_A b.tv2", "run_A_b.tv2",
                                              "run_C.tv2", "A_b.tv2", "h\xC3\xA9.tv2"}));
    const auto scene = Load("run_C.tv2");
    ASSERT_EQ(scene->cameras.size(), 1u);
    EXPECT_EQ(scene->cameras[0]->properties.floatValues.size(), 1u);
}

// With the same paths everywhere, since they are in the files.
TEST_F(ExportVerbTest, TakesByWildcardAreThoseOfAllTakes)
{
    std::string text = tv2_tests::kThreeTakes; // "A b", "A_b", "C"
    text.replace(text.find("A_b"), 3, "A*");
    Write("takes.gltf", text);
    setenv("SOURCE_DATE_EPOCH", "1", 1);
    struct Case
    {
        Arguments takes;
        std::set<std::string> files;
    };
    const Case cases[] = {
        {{"A?b", "C"}, {"o_A_b.tv2", "o_C.tv2"}},
        {{"[AC]*"}, {"o_A_b.tv2", "o_A*.tv2", "o_C.tv2"}},
        {{"A*", "none"}, {"o_A*.tv2"}}, // a take of just that name comes first
        {{"A[*]"}, {"o_A*.tv2"}},
        {{"C", "C"}, {"o_C.tv2"}},
        {{"A*"}, {"o.tv2"}}, // one take by its name
    };
    for (const std::string rate : {"24", "29.97"}) // through both entries of the plug-in
    {
        EXPECT_EQ(Export({"--all-takes", "--fps", rate, Path("takes.gltf"), Path("o.tv2")}).exit_code, 0);
        std::map<std::string, std::string> all;
        for (const char* name : {"o_A_b.tv2", "o_A*.tv2", "o_C.tv2"})
        {
            all[name] = Content(name);
            fs::remove(Path(name));
        }
        for (const Case& c : cases)
        {
            Arguments arguments = {"--fps", rate, Path("takes.gltf"), Path("o.tv2")};
            for (const std::string& take : c.takes)
                arguments.insert(arguments.end(), {"--take", take});
            const CommandResult run = Export(arguments);
            EXPECT_EQ(run.exit_code, 0) << run.err;
            EXPECT_EQ(run.out.find("there is no take \"none\"") != std::string::npos,
                      c.takes.back() == "none");
            std::set<std::string> written = Files();
            written.erase("walk.bvh");
            written.erase("takes.gltf");
            EXPECT_EQ(written, c.files) << c.takes.front();
            for (const std::string& name : written)
            {
                EXPECT_TRUE(name == "o.tv2" || Content(name) == all[name]) << name;
                fs::remove(Path(name));
            }
        }
    }
    unsetenv("SOURCE_DATE_EPOCH");
    const CommandResult none =
        Export({"--json", "--take", "walk*", "--take", "B", Path("takes.gltf"), Path("o.tv2")});
    EXPECT_EQ(none.exit_code, 2);
    EXPECT_EQ(none.Json()["code"], "no-such-take");
    EXPECT_NE(none.err.find("there is no take \"walk*\"; the scene has \"A b\", \"A*\", \"C\""),
              std::string::npos);
}

TEST_F(ExportVerbTest, NoClobberKeepsWhatIsThere)
{
    std::string text = tv2_tests::kThreeTakes;
    text.replace(text.find("A_b"), 3, "B");
    Write("takes.gltf", text);
    Write("o_B.tv2", "old");
    const Arguments arguments = {"--all-takes", "--no-clobber", "--json", Path("takes.gltf"), Path("o.tv2")};
    const CommandResult run = Export(arguments);
    EXPECT_EQ(run.exit_code, 0) << run.err;
    EXPECT_EQ(Content("o_B.tv2"), "old");
    EXPECT_NE(Content("o_A_b.tv2"), Content("o_C.tv2"));
    const nlohmann::json files = run.Json()["files"];
    EXPECT_EQ(files[1]["reason"], "it exists (--no-clobber)");
    EXPECT_FALSE(files[0].contains("reason") || files[2].contains("reason"));
    const std::string first = Content("o_A_b.tv2");
    EXPECT_EQ(Export(arguments).exit_code, 0); // all are there now
    EXPECT_EQ(Content("o_A_b.tv2"), first);
}

TEST_F(ExportVerbTest, DryRunsWriteNothing)
{
    Write("read_only.tv2", "old");
    fs::permissions(Path("read_only.tv2"), fs::perms::owner_read);
    const std::set<std::string> before = Files();
    struct Case
    {
        Arguments arguments;
        int exit_code;
        std::string said;
    };
    const std::string walk = Path("walk.bvh"), takes = Path("takes.gltf");
    const Case cases[] = {
        {{walk, Path("o.tv2")}, 0, Path("o.tv2") + ": would be written: take \"Motion\"\n"},
        {{walk, Path("new/er/o.tv2"), "--make-folders"}, 0, "er/o.tv2: would be written"},
        {{walk, Path("new/er/o.tv2")}, 1, "No such file or directory"},
        {{walk, Path("walk.bvh/o.tv2"), "--make-folders"}, 1, "Not a directory"},
        {{walk, Path("read_only.tv2")}, 1, "would be skipped: it is read-only (--yes overwrites it)"},
        {{walk, Path("read_only.tv2"), "--yes"}, 0, "read_only.tv2: would be written"},
        {{walk, Path("read_only.tv2"), "--no-clobber"}, 0, "would be kept, it exists (--no-clobber)"},
        {{takes, Path("o.tv2"), "--all-takes"}, 1, "would both be written to"},
        {{takes, Path("o.tv2"), "--take", "x*"}, 1, "there is no take \"x*\""},
        {{Path("gone.bvh"), Path("o.tv2")}, 1, "there is no such file"},
    };
    for (const Case& c : cases)
    {
        Arguments arguments = c.arguments;
        arguments.insert(arguments.begin(), "--dry-run");
        const CommandResult run = Export(arguments);
        EXPECT_EQ(run.exit_code, c.exit_code) << c.said;
        EXPECT_NE((run.out + run.err).find(c.said), std::string::npos) << c.said << run.out << run.err;
        EXPECT_EQ(Files(), before);
        EXPECT_EQ(Content("read_only.tv2"), "old");
    }
    const nlohmann::json json =
        Export({"--dry-run", "--json", "--end-frame", "1", walk, Path("o.tv2")}).Json();
    EXPECT_EQ(json["dryRun"], true);
    EXPECT_EQ(json["files"][0]["wouldWrite"], true);
    EXPECT_EQ(json["files"][0]["samples"], 2); // frames 0 and 1, one sample each
    EXPECT_EQ(json["sources"][0]["bytes"], std::string(tv2_tests::kTwoJoints).size());
    EXPECT_EQ(ExportWalk("new/er/o.tv2", {"--make-folders"}).exit_code, 0);
    EXPECT_TRUE(fs::exists(Path("new/er/o.tv2")));
}

struct Refusal
{
    Arguments arguments;
    std::string reason;
};

/// `at` gives the path of a name in the folder of the test.
template <typename PathOf>
std::vector<Refusal> Refusals(const PathOf& at)
{
    const std::string bvh = at("walk.bvh"), gltf = at("takes.gltf"), out = at("out.tv2"),
                      self = at("self.tv2");
    return {
        {{at("gone.bvh"), out}, "there is no such file"},
        {{"-", out}, "SCENE: a scene cannot be read from standard input, since its name and folder go"},
        {{at("empty.bvh"), out}, "is empty"},
        {{at("old.fbx"), out}, "the file ends inside its header"},
        {{at("nothing.gltf"), out}, at("nothing.gltf") + ": the scene has no models"},
        {{"--fps", "-30", bvh, out}, "--fps takes numbers above 0"},
        {{"--fps", "fast", bvh, out}, "--fps: \"fast\" is not a rate: give a number (50, 29.97)"},
        {{"--scene-rate", "0", bvh, out}, "--scene-rate: needs a rate above 0"},
        {{"--fps", "", bvh, out}, "--fps: is empty"},
        {{"--take", "", bvh, out}, "--take: is empty"},
        {{"--fps=", bvh, out}, "--fps needs a value: there is none after its \"=\""},
        {{bvh, out, "--settings="}, "--settings needs a value: there is none after its \"=\""},
        {{self, self}, "it is the scene file itself"},
        {{"--start-frame", "2", "--end-frame", "1", bvh, out}, "start frame 2 is after the end frame 1"},
        {{"--start-frame", "0010", "--end-frame", "+01", bvh, out},
         "start frame 10 is after the end frame 1"},
        {{"--start-frame", "0x2", bvh, out}, "--start-frame: \"0x2\" is not a whole number"},
        {{"--end-frame", "-", bvh, out}, "--end-frame: \"-\" is not a whole number"},
        {{"--end-frame", "-1", bvh, out}, "the end frame -1 is before the start of take \"Motion\""},
        {{"--take", "motoin", bvh, out}, "there is no take \"motoin\" (did you mean \"Motion\"?)\n"},
        {{"--select", "Hpis", bvh, out}, "there is no model \"Hpis\" (did you mean \"Hips\"?)\n"},
        {{"--take", "Dance", bvh, out}, bvh + ": there is no take \"Dance\"; the scene has \"Motion\""},
        {{"--take", "C", "--all-takes", gltf, out}, "excludes"},
        {{"--select", "Leg", bvh, out},
         bvh + ": there is no model \"Leg\"; models of that short name: \"ns:Leg\", \"EndSite_ns:Leg\"\n"},
        {{"--select", "Producer Front", bvh, out}, "there is no model"}, // a camera of the system
        {{bvh, at("out.fbx")}, "does not end in .tv2"},
        {{"--all-takes", gltf, out}, "takes \"A b\" and \"A_b\" would both be written to"},
        {{bvh, at("gone/out.tv2")}, "No such file or directory"},
        {{bvh, at("device.tv2")}, "it is a device or a pipe, not a file"},
        {{at("buffer.gltf"), at("keys.tv2")}, "the scene was read from it"},
        {{"--plugin", at("gone.so"), bvh, out}, "gone.so"},
        {{"--plugin", bvh, bvh, out}, "the exporter cannot be loaded"},
        {{bvh}, "OUTPUT"},
    };
}

TEST_F(ExportVerbTest, WhatCannotWorkIsRefusedBeforeAnythingIsWritten)
{
    Write("empty.bvh", "");
    Write("old.fbx", "Kaydara FBX Binary  ");
    Write("nothing.gltf", R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[]}]})");
    Write("keys.tv2", std::string(32, '\0'));
    Write("buffer.gltf", tv2_tests::kKeysInAFile);
    fs::create_symlink("/dev/full", Path("device.tv2"));
    Write("self.tv2", tv2_tests::kTwoJoints);
    const std::set<std::string> before = Files();
    for (const Refusal& refusal : Refusals([this](const std::string& name) { return Path(name); }))
    {
        const CommandResult run = Export(refusal.arguments);
        ExpectComplaint(run, 2, refusal.reason);
        EXPECT_EQ(run.out, "") << refusal.reason;
        EXPECT_EQ(Files(), before) << refusal.reason;
    }
    EXPECT_EQ(Content("self.tv2"), tv2_tests::kTwoJoints);
    const CommandResult json = Export({"--json", Path("gone.bvh"), Path("out.tv2")});
    EXPECT_NE(json.Json().at("error").get<std::string>().find("no such file"), std::string::npos);
    EXPECT_TRUE(json.Json().at("files").empty());
}

TEST_F(ExportVerbTest, ReadOnlyFilesAreSkippedOrOverwrittenAsAsked)
{
    const std::string precious = Path("run_A_b.tv2");
    Write("run_A_b.tv2", "precious");
    ASSERT_EQ(chmod(precious.c_str(), 0444), 0);
    const Arguments all = {"--json", "--all-takes", "--no-spaces-to-underscores", Path("takes.gltf"),
                           Path("run.tv2")};
    const CommandResult skipped = Export(all);
    ExpectComplaint(skipped, 1, precious + ": skipped: it is read-only");
    EXPECT_EQ(Content("run_A_b.tv2"), "precious");
    const auto files = skipped.Json().at("files");
    EXPECT_EQ(files.at(0).at("ok"), true);
    EXPECT_EQ(files.at(1).at("skipped"), true);
    EXPECT_EQ(files.at(2).at("ok"), true);

    Arguments agreed = all;
    agreed.insert(agreed.begin(), "--yes");
    EXPECT_EQ(Export(agreed).exit_code, 0);
    EXPECT_EQ(Load("run_A_b.tv2")->matrixHierarchy.nodes.size(), 2u);
}

// 29.97 is between the scene's rates and those that the exporter's script entry takes.
TEST_F(ExportVerbTest, FractionalRatesNeitherReadNorStoreSettings)
{
    fs::create_directories(Path("config/Tev2_Exporter_MB"));
    Write("config/Tev2_Exporter_MB/settings",
          "KEEP_POSITIVE_Z_KEY_NAME=0\nKEYFRAME_RADIO_CHOICE_KEY_NAME=1\n");
    setenv("XDG_CONFIG_HOME", Path("config").c_str(), 1);
    const struct
    {
        Arguments options;
        const char* file;
        double rate;
        float start;
        float end;
        std::size_t samples; // start, start + 1 / rate ... below the end, end
    } cases[] = {
        {{"--fps", "29.97"}, "out.tv2", 29.97, 0.0f, 0.08f, 4},
        {{"--fps", "30000/1001"}, "out.tv2", 29.97003, 0.0f, 0.08f, 4},
        {{"--fps", "ntsc", "--start-frame", "1"}, "out.tv2", 59.94, 0.04f, 0.08f, 4},
        {{"--fps", "12.5", "--end-frame", "1", "--all-takes"}, "out_Motion.tv2", 12.5, 0.0f, 0.04f, 2},
        {{"--fps", "500.5"}, "out.tv2", 500.5, 0.0f, 0.08f, 42},
        // The last key is at 2.3976 frames of this rate; the take lasts until the third.
        {{"--scene-rate", "29.97"}, "out.tv2", 29.97, 0.0f, static_cast<float>(3.0 / 29.97), 4},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.options.back());
        Arguments options = c.options;
        options.push_back("--json");
        const CommandResult run = ExportWalk("out.tv2", options);
        ASSERT_EQ(run.exit_code, 0) << run.err;
        const auto file = run.Json().at("files").at(0);
        EXPECT_EQ(file.at("rate"), c.rate);
        EXPECT_EQ(file.at("start").get<float>(), c.start);
        EXPECT_EQ(file.at("end").get<float>(), c.end);
        EXPECT_EQ(file.at("samples"), c.samples);
        fs::rename(Path(c.file), Path("fractional"));
    }
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(Content("config/Tev2_Exporter_MB/settings"),
              "KEEP_POSITIVE_Z_KEY_NAME=0\nKEYFRAME_RADIO_CHOICE_KEY_NAME=1\n");
}

// Both where the parent ignores the signal for files that are too large, and where it would end the command.
TEST_F(ExportVerbTest, AFailedExportKeepsTheOldFileAndSaysWhy)
{
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{700, before.rlim_max};
    const auto export_with_little_room = [&](const Arguments& options)
    {
        setrlimit(RLIMIT_FSIZE, &small);
        const CommandResult run = ExportWalk("cut.tv2", options);
        setrlimit(RLIMIT_FSIZE, &before);
        return run;
    };
    for (const bool ignored : {true, false})
    {
        fs::remove(Path("cut.tv2"));
        const std::set<std::string> files = Files();
        const auto handler = std::signal(SIGXFSZ, ignored ? SIG_IGN : SIG_DFL);
        const CommandResult first = export_with_little_room({});
        ExpectComplaint(first, 1, "cut.tv2: was not written: File too large");
        EXPECT_EQ(Files(), files);

        EXPECT_EQ(ExportWalk("cut.tv2").exit_code, 0);
        const std::string good = Content("cut.tv2");
        const CommandResult again = export_with_little_room({"--json"});
        ExpectComplaint(again, 1, "cut.tv2: was not written, kept the old file: File too large");
        EXPECT_EQ(again.Json().at("files").at(0).at("kept"), true);
        EXPECT_EQ(Content("cut.tv2"), good);
        std::signal(SIGXFSZ, handler);
    }
}

// Replacing gives another inode; the time alone may be the same on file systems that round it.
TEST_F(ExportVerbTest, AFileOfTheSameTimeAndSizeIsNoticed)
{
    for (int run = 0; run < 2; ++run)
    {
        const CommandResult result = ExportWalk("out.tv2");
        EXPECT_EQ(result.exit_code, 0) << result.err;
        const timespec rounded[] = {{1'700'000'000, 0}, {1'700'000'000, 0}};
        utimensat(AT_FDCWD, Path("out.tv2").c_str(), rounded, 0);
    }
}

TEST_F(ExportVerbTest, InformationNamesWholePaths)
{
    const fs::path here = fs::current_path();
    fs::current_path(Path(""));
    const std::string folder = fs::current_path().string();
    EXPECT_EQ(Export({"walk.bvh", "out.tv2"}).exit_code, 0);
    fs::current_path(here);
    const std::u16string text = Load("out.tv2")->information.infoText.Text();
    for (const std::string& line :
         {"TEV_NAME:\t" + folder + "/out.tv2\r\n", "FBX_FILE:\t" + folder + "/walk.bvh\r\n"})
    {
        EXPECT_NE(text.find(std::u16string(line.begin(), line.end())), std::u16string::npos) << line;
    }
}

// Success is what stands on disk afterwards, whatever the exporter says.
TEST_F(ExportVerbTest, NothingIsTakenOnTrust)
{
    const auto lie = [this](const char* source)
    {
        const std::string path = Path(source);
        setenv("LIE_SOURCE", path.c_str(), 1);
        const CommandResult run = ExportWalk("out.tv2", {"--plugin", LYING_EXPORTER});
        unsetenv("LIE_SOURCE");
        return run;
    };
    const auto keep_as = [this](const char* name, const Arguments& options)
    {
        EXPECT_EQ(ExportWalk("out.tv2", options).exit_code, 0);
        fs::rename(Path("out.tv2"), Path(name));
    };
    keep_as("true", {});
    keep_as("selected", {"--select", "Hips", "--select", "ns:Leg"});
    keep_as("short", {"--end-frame", "1"});
    keep_as("dense", {"--fps", "500"});
    EXPECT_EQ(ExportWalk("elsewhere.tv2").exit_code, 0);
    fs::rename(Path("elsewhere.tv2"), Path("elsewhere"));
    Write("junk", "junk");
    Write("cut", Content("true").substr(0, Content("true").size() - 1));

    EXPECT_EQ(lie("true").exit_code, 0); // a good file is accepted, whichever program wrote it
    fs::remove(Path("out.tv2"));
    const std::pair<const char*, const char*> lies[] = {
        {"gone", "was not written"},
        {"junk", "is incomplete (bad-magic at byte 0)"},
        {"cut", "is incomplete"},
        {"elsewhere", "its information does not name it"},
        {"short", "it spans 0.0 to 0.04 s instead of 0.0 to 0.08 s"},
        {"dense", "which was not sampled"},
    };
    for (const auto& [source, reason] : lies)
        ExpectComplaint(lie(source), 1, reason);
    ExpectComplaint(lie("gone"), 1,
                    "was not written, kept the old file"); // what the last lie left is still there
    const CommandResult nodes = ExportWalk("out.tv2", {"--plugin", LYING_EXPORTER, "--select", "Hips"});
    EXPECT_EQ(nodes.exit_code, 1);
}

} // namespace
