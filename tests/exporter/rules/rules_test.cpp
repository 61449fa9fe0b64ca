// Each rule objects once, with its code; what passes names files, range and notes.

#include "exporter/rules/rules.h"

#include "exporter/rules/export_rules.h"
#include "exporter/rules/file_facts.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace tev2_exporter
{
namespace
{

namespace fs = std::filesystem;
using Change = std::function<void(ExportQuestion&, SceneFacts&)>;

// A with two dots in the 8-bit text of the system that the tests run on.
#if defined(_WIN32)
constexpr const char* kSmallUmlaut = "\xE4";
constexpr const char* kLargeUmlaut = "\xC4";
#else
constexpr const char* kSmallUmlaut = "\xC3\xA4";
constexpr const char* kLargeUmlaut = "\xC3\x84";
#endif

/// A change of the plan's question and scene, and what then objects.
struct RuleCase
{
    const char* code; // null: nothing objects
    Change change;
    const char* part_of_the_text;
};

class RulesTest : public testing::Test
{
protected:
    RulesTest()
    {
        for (const char* const name : {"scene.bvh", "scene.bin", "file"})
            Write(name);
        fs::create_directory(Path("folder.tv2"));
    }

    std::string Path(const std::string& name) const { return folder_.Path(name); }
    void Write(const std::string& name) const { folder_.Make(name, "content"); }

    /// A walk of 0 to 2 s at 25 frames a second: root, hips with a leg, a camera; and a second take of 1 s.
    ExportPlan Plan(const Change& change = {}) const
    {
        ExportQuestion question;
        question.path = Path("out.tv2");
        SceneFacts scene;
        scene.transport_rate = 25.0;
        scene.takes = {{"Walk", 0.0, 2.0}, {"Run", 0.0, 1.0}};
        scene.current_take = 0;
        scene.models = {{-1, false, false}, {0, false, false}, {1, false, false}, {0, false, true}};
        scene.files = {Path("scene.bvh"), Path("scene.bin")};
        if (change)
            change(question, scene);
        return PlanExport(question, &scene);
    }

    void Expect(const RuleCase& c) const
    {
        const ExportPlan plan = Plan(c.change);
        SCOPED_TRACE(c.part_of_the_text);
        EXPECT_STREQ(plan.objection.code, c.code) << plan.objection.text;
        EXPECT_NE(plan.objection.text.find(c.part_of_the_text), std::string::npos) << plan.objection.text;
    }

    tv2_tests::ScratchFolder folder_;
};

Change RateOf(const std::string& text)
{
    return [text](ExportQuestion& q, SceneFacts&) { q.rate = text; };
}

Change RangeOf(std::optional<int> start, std::optional<int> end)
{
    return [=](ExportQuestion& q, SceneFacts&)
    {
        q.start_frame = start;
        q.end_frame = end;
    };
}

// clang-format off
const RuleCase kRateAndRangeCases[] = {
    {nullptr, {}, ""},
    {"rate-unreadable", RateOf("fast"), "--fps \"fast\" is not a rate: give a number"},
    {"rate-unreadable", RateOf("1/0"), "\"1/0\""},
    {"rate-out-of-range", RateOf("0"), "a rate of 0 samples a second"},
    {"rate-out-of-range", RateOf("-25"), "above 0"},
    {"rate-out-of-range", RateOf("nan"), ""},
    {"rate-out-of-range", RateOf("100000000"), "up to 1,000,000"},
    {"rate-out-of-range", [](auto&, SceneFacts& s) { s.transport_rate = 0.0; }, "a rate of 0"},
    {"rate-fractional", [](auto& q, auto&)
     { q.rate = "29.97", q.whole_rates_only = true, q.wording = ExportQuestion::Wording::kPython; },
     "\"Custom FPS\" in the dialog of the export menu, or give fps a whole number"},
    {"range-reversed", RangeOf(3, 2), "start frame 3 is after the end frame 2"},
    {"no-scene", [](auto&, SceneFacts& s) { s.models.resize(1), s.files.clear(); }, "no scene is open"},
    {"no-models", [](auto&, SceneFacts& s) { s.models.resize(1); }, "the scene has no models"},
    {"no-take", [](auto&, SceneFacts& s) { s.current_take.reset(); }, "no take is current"},
    {"take-reversed", [](auto&, SceneFacts& s) { s.takes[0].start = 3.0; }, "ends before it starts"},
    {"range-outside", RangeOf(51, {}),
     "the start frame 51 is after the end of take \"Walk\", which has frames 0 to 50 (0 to 2 s)"},
    {"range-outside", RangeOf({}, -1), "the end frame -1 is before the start of take \"Walk\""},
    {nullptr, RangeOf(50, {}), ""},
    {nullptr, RangeOf(-9, 0), ""},
    // A step of 1e-6 s is less than half of what a single-precision number near 64 s can differ by (2^-18 s).
    {"time-stands-still", [](auto& q, SceneFacts& s) { q.rate = "1000000", s.takes[0] = {"Walk", 64.0, 65.0}; },
     "a step of 1e-06 s is lost in the single precision of 65 s; take \"Walk\""},
    // 2,000,001 x (64 x 36 + 20) bytes.
    {"too-many-samples", [](auto& q, SceneFacts& s) { q.rate = "1000000", s.models.resize(64, {0, false, false}); },
     "2,000,001 samples of 64 nodes and 1 camera are about 4,648,002,324 bytes"},
};
// clang-format on

TEST_F(RulesTest, ObjectOnceToRatesRangesAndScenes)
{
    for (const RuleCase& c : kRateAndRangeCases)
        Expect(c);
}

TEST_F(RulesTest, ObjectOnceToFiles)
{
    const std::string long_name = std::string(261 - Path(".tv2").size(), 'a') + ".tv2";
    const auto path = [this](const std::string& name)
    { return [this, name](ExportQuestion& q, SceneFacts&) { q.path = Path(name); }; };
    const auto names = [this](const std::string& first, const std::string& second, bool windows)
    {
        return [=, this](ExportQuestion& q, SceneFacts& s)
        {
            q.path = Path(".tv2");
            q.flags.all_takes = true;
            s.takes[0].name = first;
            s.takes[1].name = second;
            q.file_names = windows ? ExportQuestion::FileNames::kWindows : ExportQuestion::FileNames::kPosix;
        };
    };
    const auto scene_files = [](std::vector<std::string> files)
    { return [files = std::move(files)](ExportQuestion&, SceneFacts& s) { s.files = files; }; };
    Write("out.tv2");
    const RuleCase cases[] = {
        {"no-tv2-name", path("out.fbx"), "does not end in .tv2"},
        {"path-too-long", path(long_name), "has 261 bytes; at most 260"},
        {"path-too-long", names(std::string(250, 'a'), "b", false), "at most 260"},
        {"take-names-no-file", names("", "b", false), "no file can be named after take \"\""},
        {"take-names-no-file", names("a/b", "b", false), "take \"a/b\""},
        {"same-file", names("A b", "A_b", false), "takes \"A b\" and \"A_b\" would both be written to"},
        {"same-file", names("Walk", "WALK", true), "takes \"Walk\" and \"WALK\" would both be written to"},
        {"same-file", names(kSmallUmlaut, kLargeUmlaut, true), "which is the same file as"},
        {nullptr, names("Walk", "WALK", false), ""},
        {"device-name", names("COM1", "b", true), "\"COM1\" is the name of a device"},
        {"device-name", names("b", "nul.x", true), "\"NUL\" is the name of a device"},
#if !defined(_WIN32)
        {nullptr, names("COM1", "nul.x", false), ""},
#endif
        {nullptr, names("COM", "NULL", true), ""},
        {"bad-character", names("a*", "b", true), "no name of a file can have the character \"*\""},
        {"no-folder", path("gone/out.tv2"), "No such file or directory"},
        {"no-folder", path("file/out.tv2"), "Not a directory"},
        {"not-a-file", path("folder.tv2"), "Is a directory"},
        {"is-the-scene", scene_files({Path("out.tv2")}), "it is the scene file itself"},
        {"is-the-scene", scene_files({Path("scene.bvh"), Path("out.tv2")}), "the scene was read from it"},
    };
    for (const RuleCase& c : cases)
        Expect(c);
}

#if !defined(_WIN32)
TEST_F(RulesTest, OnlyFilesOfTheirOwnAreTargets)
{
    ASSERT_EQ(::mkfifo(Path("out.tv2").c_str(), 0600), 0);
    EXPECT_STREQ(Plan().objection.code, "not-a-file");
    fs::remove(Path("out.tv2"));
    fs::create_symlink("/dev/null", Path("out.tv2"));
    EXPECT_STREQ(Plan().objection.code, "not-a-file");
    fs::remove(Path("out.tv2"));
    fs::create_symlink(Path("scene.bvh"), Path("out.tv2"));
    EXPECT_STREQ(Plan().objection.code, "is-the-scene");

    Write("out_Walk.tv2");
    fs::create_hard_link(Path("out_Walk.tv2"), Path("out_Run.tv2"));
    const auto all = [](ExportQuestion& q, SceneFacts&) { q.flags.all_takes = true; };
    EXPECT_STREQ(Plan(all).objection.code, "same-file");
    fs::remove(Path("out_Run.tv2"));
    EXPECT_STREQ(Plan(all).objection.code, nullptr);

    // Links to a file that is not there yet, however they spell its name.
    fs::remove(Path("out_Walk.tv2"));
    fs::create_symlink("new.tv2", Path("out_Walk.tv2"));
    fs::create_symlink("folder.tv2/../new.tv2", Path("out_Run.tv2"));
    EXPECT_STREQ(Plan(all).objection.code, "same-file");
    fs::remove(Path("out_Run.tv2"));
    fs::create_symlink("folder.tv2/new.tv2", Path("out_Run.tv2"));
    EXPECT_STREQ(Plan(all).objection.code, nullptr);
}
#endif

TEST_F(RulesTest, RatesAreNumbersFractionsAndNames)
{
    const struct
    {
        const char* text;
        double rate;
        const char* note;
    } cases[] = {
        {"", 25.0, ""},
        {"scene", 25.0, ""},
        {"pal", 50.0, ""},
        {"NTSC", 59.94, ""},
        {"film", 24.0, ""},
        {"60", 60.0, ""},
        {"29.97", 29.97, ""},
        {"60/2", 30.0, ""},
        {"30000/1001", 30000.0 / 1001.0,
         "the rate 30000/1001 is rounded to single precision: 29.97002983093"},
    };
    for (const auto& c : cases)
    {
        const ExportPlan plan = Plan(
            [&c](ExportQuestion& q, SceneFacts& s)
            {
                q.rate = c.text;
                s.takes.resize(1);
            });
        EXPECT_EQ(plan.call.rate, c.rate) << c.text;
        EXPECT_EQ(plan.files.at(0).range.rate, static_cast<float>(c.rate)) << c.text;
        EXPECT_EQ(plan.notes.empty() ? "" : plan.notes[0].substr(0, std::string(c.note).size()), c.note);
        EXPECT_EQ(plan.notes.empty(), c.note[0] == '\0') << c.text;
    }
}

// 120.00048000192001 is a frame time of 0.0083333 s in a BVH file; single precision is 6.5e-7 samples a second off.
TEST_F(RulesTest, ADefaultRateIsNotedWhereRoundingMovesTheInstants)
{
    const std::string note = "the rate 120.00048000192001 is rounded to single precision: 120.00048065185547 "
                             "samples a second";
    const struct
    {
        const char* text;
        double seconds;
        bool noted;
    } cases[] = {
        {"", 10.0, false},
        {"scene", 1500.0, false},
        {"", 1600.0, true},
        {"120.00048000192001", 10.0, true},
    };
    for (const auto& c : cases)
    {
        const ExportPlan plan = Plan(
            [&c](ExportQuestion& q, SceneFacts& s)
            {
                q.rate = c.text;
                s.transport_rate = 120.00048000192001;
                s.takes = {{"Walk", 0.0, std::round(c.seconds * s.transport_rate) / s.transport_rate}};
            });
        ASSERT_EQ(plan.objection.code, nullptr) << plan.objection.text;
        EXPECT_EQ(std::count(plan.notes.begin(), plan.notes.end(), note), c.noted ? 1 : 0)
            << c.text << " " << c.seconds;
        EXPECT_TRUE(c.noted || plan.notes.empty()) << plan.notes.front();
    }
}

TEST_F(RulesTest, NotesSayWhatIsCutOrLeftOut)
{
    const ExportPlan plan = Plan(
        [](ExportQuestion& q, SceneFacts& s)
        {
            q.start_frame = -5;
            q.end_frame = 10;
            s.takes[0].stop = 2.03; // frame 50.75
            s.takes.push_back({"Jump", 0.0, 1.0});
        });
    const std::vector<std::string> expected = {
        "the range is cut to the take: \"Walk\" has frames 0 to 50 (0 to 2 s)",
        "the end of take \"Walk\" is between two frames, at 50.75: frame 50 is used",
        "2 other takes are not exported: \"Run\", \"Jump\" (--all-takes)"};
    EXPECT_EQ(plan.notes, expected);
    EXPECT_EQ(plan.files.at(0).range.start, 0.0f);
    EXPECT_EQ(plan.files.at(0).range.end, 0.4f);
}

TEST_F(RulesTest, CountsWhatIsSelected)
{
    const auto count = [this](std::vector<std::size_t> selected)
    {
        const ExportPlan plan = Plan(
            [&](ExportQuestion&, SceneFacts& s)
            {
                for (const std::size_t model : selected)
                    s.models[model].selected = true;
            });
        return std::pair(plan.nodes, plan.cameras);
    };
    using Counts = std::pair<std::size_t, std::size_t>;
    EXPECT_EQ(count({}), Counts(4, 1));
    EXPECT_EQ(count({0}), Counts(4, 1));
    EXPECT_EQ(count({1, 2}), Counts(3, 0)); // hips, leg and a root of the exporter's own
    EXPECT_EQ(count({3}), Counts(2, 1));
}

TEST_F(RulesTest, SpeaksC)
{
    const std::string path = Path(".tv2");
    const std::string scene = Path("scene.bvh");
    const tv2_rules_take takes[] = {{"Walk", 0.0, 2.0}, {"Run", 1.0, 2.0}};
    const tv2_rules_model models[] = {{-1, 0, 0}, {0, 0, 0}};
    const char* const files[] = {scene.c_str()};
    const int32_t start = 30;
    // clang-format off
    tv2_rules_request request = {
        .size = sizeof request, .path = path.c_str(), .rate = "48", .start_frame = &start, .end_frame = nullptr,
        .all_takes = 1, .spaces_to_underscores = 0, .whole_rates_only = 0, .python_wording = 1, .file_names = 0,
        .has_scene = 1, .transport_rate = 25.0, .takes = takes, .take_count = 2, .current_take = 0,
        .models = models, .model_count = 2, .files = files, .file_count = 1};
    // clang-format on
    tv2_rules_plan* plan = tv2_rules_check(&request);
    ASSERT_NE(plan, nullptr);
    tv2_rules_result result = tv2_rules_result_of(plan);
    EXPECT_EQ(result.objection, nullptr);
    EXPECT_EQ(result.code, nullptr);
    EXPECT_EQ(result.rate, 48.0);
    EXPECT_EQ(result.start_frame, 30);
    EXPECT_EQ(result.whole_take, 0);
    ASSERT_EQ(result.file_count, 2u);
    const tv2_rules_file file = tv2_rules_file_at(plan, 1);
    EXPECT_EQ(file.path, Path("Run.tv2"));
    EXPECT_EQ(file.take, 1u);
    EXPECT_EQ(file.start, static_cast<double>(1.2f));
    EXPECT_EQ(file.end, 2.0);
    EXPECT_EQ(tv2_rules_file_at(plan, 2).path, nullptr);
    EXPECT_EQ(result.note_count, 0u);
    EXPECT_EQ(tv2_rules_note(plan, 0), nullptr);
    tv2_rules_free(plan);

    request.rate = "0";
    plan = tv2_rules_check(&request);
    result = tv2_rules_result_of(plan);
    EXPECT_STREQ(result.code, "rate-out-of-range");
    EXPECT_NE(std::string(result.objection).find("; fps takes"), std::string::npos);
    tv2_rules_free(plan);

    request.size = 8;
    EXPECT_EQ(tv2_rules_check(&request), nullptr);
    EXPECT_EQ(tv2_rules_check(nullptr), nullptr);
    EXPECT_EQ(tv2_rules_frame_at(-0.99, 25.0), -24);
}

} // namespace
} // namespace tev2_exporter
