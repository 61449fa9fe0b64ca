// Exports by way of the exporter's dialog, played by a script: what is written, what is remembered, what is refused.

#include "tests/support/dialog_regions.h"
#include "tests/tools/export/export_fixture.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <sys/stat.h>

namespace
{

using Settings = std::map<std::string, std::string>;
namespace regions = tv2_tests::regions;

std::string Step(const std::string& what, const std::string& region, const std::string& value = "")
{
    return what + " \"" + region + "\" " + value + "\n";
}

const std::string kNtsc = Step("click", regions::kNtsc);
const std::string kCustomKeys = Step("click", regions::kCustomRange);
const std::string kAllTakes = Step("click", regions::kAllTakesRadio);
const std::string kSpaces = Step("click", regions::kUnderscores);
const std::string kExport = Step("click", regions::kExport);
const std::string kCancel = Step("click", regions::kCancel);

std::string Keys(const std::string& start, const std::string& end)
{
    return kCustomKeys + Step("edit", regions::kStartKey, start) + Step("edit", regions::kEndKey, end);
}

class DialogExportTest : public ExportCommandTest
{
protected:
    DialogExportTest()
    {
        setenv("XDG_CONFIG_HOME", Path("config").c_str(), 1);
        unsetenv("DISPLAY");
        fs::create_directory(Path("out"));
    }

    // Plays the steps to the dialog for a scene, with the stored settings unless told otherwise.
    CommandResult Play(const std::string& steps, const std::string& scene, const std::string& output,
                       Arguments options = {"--settings", "stored"}) const
    {
        Write("steps.txt", steps);
        options.insert(options.begin(), {"export", "--json", "--dialog-script", Path("steps.txt")});
        options.insert(options.end(), {Path(scene), Path("out/" + output)});
        return RunTv2(options);
    }

    std::set<std::string> Written() const { return NamesIn("out"); }

    // What the exporter remembers, less the defaults of a first export of a scene.
    Settings Remembered(int last_frame) const
    {
        // clang-format off
        const Settings defaults = {
            {"SAMPLING_RADIO_CHOICE_KEY_NAME", "0"}, {"KEYFRAME_RADIO_CHOICE_KEY_NAME", "0"},
            {"TAKES_RADIO_CHOICE_KEY_NAME", "0"}, {"START_KEY_KEY_NAME", "0"},
            {"END_KEY_KEY_NAME", std::to_string(last_frame)}, {"FPS_KEY_NAME", "50.000000"},
            {"FILENAME_SPACES_KEY_NAME", "1"}, {"KEEP_POSITIVE_Z_KEY_NAME", "1"},
            {"REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME", "1"}, {"ASTERIX_TV2_EXTENSION_KEY_NAME", "1"},
            {"DISABLE_CONSTRAINTS_KEY_NAME", "0"}, {"DIALOG_POS_X_KEY_NAME", "100"}, {"DIALOG_POS_Y_KEY_NAME", "100"}};
        // clang-format on
        std::ifstream file(Path("config/Tev2_Exporter_MB/settings"));
        Settings all, others;
        for (std::string line; std::getline(file, line);)
            all[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
        EXPECT_EQ(all.size(), all.empty() ? 0u : defaults.size());
        for (const auto& [name, text] : all)
            if (!defaults.contains(name) || defaults.at(name) != text)
                others[name] = text;
        return all.empty() ? Settings{{"nothing", ""}} : others;
    }
};

TEST_F(DialogExportTest, WritesAndRemembersWhatWasChosen)
{
    const struct
    {
        const char* what;
        std::string steps;
        const char* scene;
        const char* output;
        std::set<std::string> files;
        double rate; // of each file, samples a second
        int samples; // of the first file
        double end;  // of the first file, seconds
        Settings settings;
    } cases[] = {
        // clang-format off
        {"first run", kExport, "walk.bvh", "a.tv2", {"a.tv2"}, 50, 5, 0.08, {}},
        {"custom range", Keys("-5", "1") + kExport, "walk.bvh", "a.tv2", {"a.tv2"}, 50, 3, 0.04,
         {{"KEYFRAME_RADIO_CHOICE_KEY_NAME", "1"}, {"END_KEY_KEY_NAME", "1"}}},
        {"NTSC, moved", kNtsc + "move -7 40\n" + kExport, "walk.bvh", "b c.tv2", {"b_c.tv2"}, 59.94, 6, 0.08,
         {{"SAMPLING_RADIO_CHOICE_KEY_NAME", "1"}, {"FPS_KEY_NAME", "59.939999"},
          {"DIALOG_POS_X_KEY_NAME", "-7"}, {"DIALOG_POS_Y_KEY_NAME", "40"}}},
        {"all takes, spaces kept", kAllTakes + kSpaces + kExport, "takes.gltf", "r.tv2",
         {"r_A b.tv2", "r_A_b.tv2", "r_C.tv2"}, 50, 2, 0.0,
         {{"TAKES_RADIO_CHOICE_KEY_NAME", "1"}, {"FILENAME_SPACES_KEY_NAME", "0"}}},
        // clang-format on
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        fs::remove_all(Path("config"));
        fs::remove_all(Path("out"));
        fs::create_directory(Path("out"));
        const CommandResult run = Play(c.steps, c.scene, c.output);
        EXPECT_EQ(run.exit_code, 0) << run.err;
        EXPECT_EQ(Written(), c.files);
        const auto json = run.Json();
        EXPECT_EQ(json.at("cancelled"), false);
        ASSERT_EQ(json.at("files").size(), c.files.size());
        for (const auto& file : json.at("files"))
        {
            EXPECT_EQ(file.at("rate"), c.rate);
            EXPECT_TRUE(c.files.contains(fs::path(file.at("output").get<std::string>()).filename()));
        }
        EXPECT_EQ(json.at("files").at(0).at("samples"), c.samples);
        EXPECT_FLOAT_EQ(json.at("files").at(0).at("end").get<float>(), static_cast<float>(c.end));
        EXPECT_EQ(Remembered(c.scene == std::string("walk.bvh") ? 2 : 0), c.settings);
    }
}

TEST_F(DialogExportTest, AScriptStartsFromTheDefaultsAndStoresNothing)
{
    const std::string steps = kSpaces + kNtsc + kExport;
    for (const Arguments& options : {Arguments{}, Arguments{"--settings", "none"}})
        for (int run = 0; run < 2; ++run) // the box is turned over once in each
        {
            const CommandResult result = Play(steps, "walk.bvh", "a b.tv2", options);
            EXPECT_EQ(result.exit_code, 0) << result.err;
            EXPECT_EQ(Written(), std::set<std::string>{"a b.tv2"});
            EXPECT_EQ(Remembered(2), (Settings{{"nothing", ""}}));
        }
    Play(kSpaces + kExport, "walk.bvh", "a b.tv2");
    EXPECT_EQ(Remembered(2), (Settings{{"FILENAME_SPACES_KEY_NAME", "0"}}));
    EXPECT_EQ(Play(kExport, "walk.bvh", "c d.tv2", {}).exit_code, 0);
    EXPECT_EQ(Written(), (std::set<std::string>{"a b.tv2", "c_d.tv2"})) << "stored settings were read";
}

TEST_F(DialogExportTest, CancellationsWriteAndRememberNothing)
{
    const std::string by_user = "tv2 export: cancelled: nothing exported\n";
    const std::string no_rate = Step("click", regions::kCustomRate) + Step("edit", regions::kRate, "0");
    const std::string reversed = Keys("2", "1");
    const struct
    {
        std::string steps;
        std::string message;
        std::string reason; // in JSON
    } cases[] = {
        {kNtsc + kCancel, by_user, ""},
        {kNtsc + "close\n", by_user, ""},
        {kNtsc, by_user, ""},
        {reversed + kExport,
         "tv2 export: cancelled by the dialog: the start key 2 is after the end key 1: nothing exported\n",
         "the start key 2 is after the end key 1"},
        {no_rate + kExport, "tv2 export: cancelled by the dialog: the rate is 0: nothing exported\n",
         "the rate is 0"},
    };
    for (const auto& c : cases)
    {
        const CommandResult run = Play(c.steps, "walk.bvh", "a.tv2");
        EXPECT_EQ(run.exit_code, 1) << c.steps;
        EXPECT_EQ(run.err, c.message) << c.steps;
        EXPECT_EQ(run.Json().at("cancelled"), true);
        EXPECT_EQ(run.Json().value("reason", ""), c.reason);
        EXPECT_TRUE(run.Json().at("files").empty());
        EXPECT_EQ(Written(), std::set<std::string>{});
        EXPECT_EQ(Remembered(2), (Settings{{"nothing", ""}})) << c.steps;
    }
}

TEST_F(DialogExportTest, TakeAndModelsAreThoseOfTheCommandLine)
{
    const CommandResult take = Play(kExport, "takes.gltf", ".tv2", {"--take", "C"});
    EXPECT_EQ(take.exit_code, 0) << take.err;
    EXPECT_EQ(Written(), std::set<std::string>{"C.tv2"});
    EXPECT_EQ(take.Json().at("files").at(0).at("take"), "C");
    const CommandResult model = Play(kExport, "walk.bvh", "m.tv2", {"--select", "ns:Leg"});
    EXPECT_EQ(model.Json().at("files").at(0).at("nodes"), 3) << model.err;
}

TEST_F(DialogExportTest, WhatWentWrongIsToldFileByFile)
{
    const auto mode = [this](const char* name)
    {
        struct stat status = {};
        stat(Path(name).c_str(), &status);
        return status.st_mode & 0777;
    };
    Write("out/r_C.tv2", "precious");
    Write("out/r.tv2", "not asked for");
    chmod(Path("out/r_C.tv2").c_str(), 0444);
    chmod(Path("out/r.tv2").c_str(), 0444);
    const std::string steps = kAllTakes + kSpaces + kExport;
    const CommandResult skipped = Play(steps, "takes.gltf", "r.tv2");
    ExpectComplaint(skipped, 1, "out/r_C.tv2: skipped: it is read-only");
    ASSERT_EQ(skipped.Json().at("files").size(), 3u);
    EXPECT_EQ(skipped.Json().at("files").at(2).at("skipped"), true);

    fs::remove_all(Path("config"));
    const CommandResult agreed = Play(steps, "takes.gltf", "r.tv2", {"--yes"});
    EXPECT_EQ(agreed.exit_code, 0) << agreed.err;
    EXPECT_EQ(mode("out/r_C.tv2"), 0644u);
    EXPECT_EQ(mode("out/r.tv2"), 0444u) << "nothing was written to it";

    fs::remove(Path("out/r_C.tv2"));
    Write("out/r_C.tv2", "precious");
    chmod(Path("out/r_C.tv2").c_str(), 0440);
    EXPECT_EQ(Play(kCancel, "takes.gltf", "r.tv2", {"--yes"}).exit_code, 1);
    EXPECT_EQ(mode("out/r_C.tv2"), 0440u) << "a file that was not written is read-only again";

    fs::create_symlink("/proc/self/status", Path("out/q.tv2")); // nobody can make it writable
    ExpectComplaint(Play(kExport, "walk.bvh", "q.tv2", {"--yes"}), 2,
                    "tv2 export: cannot make \"" + Path("out/q.tv2") +
                        "\" writable: Operation not permitted\n");

    fs::remove_all(Path("config"));
    const CommandResult one_name = Play(kAllTakes + kExport, "takes.gltf", "x.tv2");
    ExpectComplaint(one_name, 1, "x_A_b.tv2: was overwritten by take \"A_b\"");

    fs::remove_all(Path("config"));
    const CommandResult late = Play(kExport + kNtsc, "walk.bvh", "late.tv2");
    ExpectComplaint(late, 1, "steps.txt:2: the popup has closed already");
    EXPECT_EQ(late.Json().at("files").at(0).at("ok"), true);
}

TEST_F(DialogExportTest, SaysWhyTheExporterRefusedARate)
{
    // A step of 1e-9 s is less than half of what a single-precision number near 0.08 s can differ by (2^-27 s).
    fs::create_directories(Path("config/Tev2_Exporter_MB"));
    Write("config/Tev2_Exporter_MB/settings",
          "SAMPLING_RADIO_CHOICE_KEY_NAME=2\nFPS_KEY_NAME=1000000000.0\n");
    ExpectComplaint(
        Play(kExport, "walk.bvh", "a.tv2"), 1,
        "tv2 export: the exporter refused: at 1000000000 samples a second the time does not advance");
    EXPECT_EQ(Written(), std::set<std::string>{});
}

TEST_F(DialogExportTest, RefusesBeforeAnythingIsWritten)
{
    const std::string bvh = Path("walk.bvh"), out = Path("out/a.tv2"), steps = Path("steps.txt");
    Write("steps.txt", kExport);
    Write("bad.txt", "\nfrob\n");
    Write("gone.txt", "click \"NOWHERE\"\n" + kExport);
    const std::string bad = Path("bad.txt"), lost = Path("gone.txt");
    const struct
    {
        Arguments arguments;
        std::string reason;
    } cases[] = {
        {{"--dialog", bvh, out},
         "there is no display: DISPLAY is not set; give its steps with --dialog-script"},
        {{"--dialog-script", steps, "--fps", "30", bvh, out}, "--fps is decided in the dialog"},
        {{"--settings", "none", bvh, out}, "--settings are the dialog's"},
        {{"--dialog", "--end-frame", "1", bvh, out}, "--end-frame is decided"},
        {{"--dialog", "--no-keep-positive-z", bvh, out}, "--keep-positive-z is decided"},
        {{"--dialog-script", Path("no.txt"), bvh, out}, "no.txt: cannot be read: No such file"},
        {{"--dialog-script", bad, bvh, out}, bad + ":2: there is no step \"frob\""},
        {{"--dialog-script", lost, bvh, out}, lost + ":1: there is no region \"NOWHERE\""},
        {{"--dialog-script", steps, Path("gone.bvh"), out}, "tv2 export: cannot read " + Path("gone.bvh")},
        {{"--dialog-script", steps, bvh, Path("gone/a.tv2")}, "No such file or directory"},
        {{"--dialog-script", steps, "--take", "Dance", bvh, out}, "there is no take \"Dance\""},
        {{"--dialog-script", steps, "--plugin", LYING_EXPORTER, bvh, out}, "no entry in the export menu"},
    };
    for (const auto& c : cases)
    {
        Arguments arguments = c.arguments;
        arguments.insert(arguments.begin(), "export");
        const CommandResult run = RunTv2(arguments);
        ExpectComplaint(run, 2, c.reason);
        EXPECT_EQ(run.out, "") << c.reason;
        EXPECT_EQ(Written(), std::set<std::string>{}) << c.reason;
        EXPECT_EQ(Remembered(2), (Settings{{"nothing", ""}})) << c.reason;
    }
    setenv("DISPLAY", ":nowhere", 1);
    ExpectComplaint(RunTv2({"export", "--dialog", bvh, out}), 2, "the display :nowhere cannot be reached");
}

TEST_F(DialogExportTest, TheMenuFollowsTheExtensionBox)
{
    EXPECT_EQ(RunTv2({"menu"}).out,
              "motion export: \"QN - TV2 Exporter\" (QN - TV2 Exporter Description), files: *.tv2\n");
    Play(Step("click", regions::kAsterisk) + kExport, "walk.bvh", "a.tv2");
    const auto entry = RunTv2({"menu", "--json"}).Json().at("entries").at(0);
    EXPECT_EQ(entry.at("extension"), ".tv2");
    EXPECT_EQ(entry.at("menu"), "motion export");
    ExpectComplaint(RunTv2({"menu", "--plugin", Path("gone.so")}), 2, "gone.so");
}

} // namespace
