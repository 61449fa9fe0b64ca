#include "exporter/export_dialog.h"
#include "exporter/export_tool.h"
#include "exporter/platform/settings_store.h"
#include "mobu_host/ui.h"
#include "tests/exporter/export_fixture.h"
#include "tests/support/dialog_regions.h"

#include <array>
#include <map>
#include <sstream>

namespace tev2_exporter
{
namespace
{

using namespace tv2_tests::regions;

using Stored = std::map<std::string, std::string>;

// A scene of two takes at 25 frames a second, empty settings, and a user who presses what a test tells him.
class ExportDialog : public ExportTest
{
protected:
    void SetUp() override
    {
        ExportTest::SetUp();
        platform::TestPlatform::Get().ClearSettings();
        mobu_host::ClearTakes();
        mobu_host::SetTransportRate(25.0);
        mobu_host::AddTake("A", 0.4, 4.0); // frames 10 to 100
        mobu_host::AddTake("B", 0.0, 1.0);
    }

    void TearDown() override
    {
        mobu_host::SetPopupPlayer({});
        ExportTest::TearDown();
    }

    // Shows the dialog to a user who acts as `user` says, and returns what it filled in.
    ExportOptions Show(const std::function<void(FBPopup&)>& user)
    {
        ExportOptions options;
        mobu_host::SetPopupPlayer(user);
        TEV2_EXPORTER_DIALOG dialog;
        dialog.ShowFor(options);
        return options;
    }

    template <typename Control>
    static Control& At(FBPopup& popup, const char* region)
    {
        return *static_cast<Control*>(mobu_host::FindRegion(popup, region)->control);
    }

    static bool IsSet(FBPopup& popup, const char* region) { return At<FBButton>(popup, region).State == 1; }
    static double Number(FBPopup& popup, const char* region) { return At<FBEditNumber>(popup, region).Value; }
    static bool IsEnabled(FBPopup& popup, const char* region)
    {
        return mobu_host::FindRegion(popup, region)->control->Enabled;
    }
};

// All that a user sees of a region before the first click, less its place; enumerators as their numbers.
std::string Looks(const mobu_host::Region& region)
{
    std::ostringstream text;
    text << '"' << region.title << "\"";
    if (FBVisualComponent* const control = region.control)
    {
        text << ' ' << (control->Enabled ? "enabled" : "disabled") << " \"" << control->Caption.AsString()
             << "\"";
        if (auto* button = dynamic_cast<FBButton*>(control))
            text << " button " << button->Style.AsInt() << (button->State == 1 ? " set" : "");
        else if (auto* label = dynamic_cast<FBLabel*>(control))
            text << " label " << label->Justify.AsInt() << (label->WordWrap ? " wrapped" : "");
        else if (auto* box = dynamic_cast<FBEditNumber*>(control))
            text << " number " << double{box->Value} << " in " << double{box->Min} << ".." << double{box->Max}
                 << " precision " << double{box->Precision} << " steps " << double{box->LargeStep} << ' '
                 << double{box->SmallStep};
    }
    const mobu_host::RegionBorder& border = region.border;
    if (border.style != kFBNoBorder)
        text << " border " << border.style << (border.show_title ? " titled" : "")
             << (border.in_set ? " in-set" : "") << ' ' << border.width << ' ' << border.spacing << ' '
             << border.max_angle << ' ' << border.corner_radius;
    return text.str();
}

TEST_F(ExportDialog, ShowsItsRegionsOnTheFirstRun)
{
    const struct
    {
        const char* region;
        std::array<int, 4> place; // left, top, right, bottom
        const char* looks;
    } expected[] = {
        // clang-format off
        {"SAMPLING_GROUP_BOX_REGION_NAME", {10, 20, 270, 120}, R"("Sampling" border 5 titled 2 2 90 10)"},
        {kPal, {60, 30, 130, 56}, R"("" enabled "PAL" button 2 set)"},
        {kNtsc, {160, 30, 220, 56}, R"("" enabled "NTSC" button 2)"},
        {kCustomRate, {50, 76, 130, 102}, R"("" enabled "Custom FPS" button 2)"},
        {kRate, {150, 74, 210, 104}, R"("" disabled "" number 50 in 0..240 precision 3.2 steps 5 1)"},
        {"KEYFRAMES_GROUP_BOX_REGION_NAME", {10, 140, 270, 274}, R"("Key-frames" border 5 titled 2 2 90 10)"},
        {kExportAll, {60, 150, 130, 176}, R"("" enabled "Export All" button 2 set)"},
        {kCustomRange, {160, 150, 220, 176}, R"("" enabled "Custom" button 2)"},
        {"KEYFRAMES_START_KEY_EDITBOX_LABEL_REGION_NAME", {40, 186, 100, 216},
         R"("" enabled "Start Key" label 1 wrapped)"},
        {kStartKey, {110, 186, 180, 216}, R"("" disabled "" number 10 in 10..100 precision 1 steps 5 1)"},
        {"KEYFRAMES_END_KEY_EDITBOX_LABEL_REGION_NAME", {40, 226, 100, 256}, R"("" enabled "End Key" label 1 wrapped)"},
        {kEndKey, {110, 226, 180, 256}, R"("" disabled "" number 100 in 10..100 precision 1 steps 5 1)"},
        {"TAKES_GROUP_BOX_REGION_NAME", {10, 294, 270, 364}, R"("Takes" border 5 titled 2 2 90 10)"},
        {kCurrentTake, {24, 304, 234, 330}, R"("" enabled "Current Take Only" button 2 set)"},
        {kAllTakesRadio, {24, 330, 234, 356}, R"("" enabled "All Takes As Separate Files" button 2)"},
        {"MISC_GROUP_BOX_REGION_NAME", {10, 384, 270, 578}, R"("Miscellaneous" border 5 titled 2 2 90 10)"},
        {kUnderscores, {30, 394, 250, 420}, R"("" enabled "Change filename spaces to underscores?" button 3 set)"},
        {kPositiveZ, {30, 430, 250, 456}, R"("" enabled "Keep positive Z?" button 3 set)"},
        {kNamespaces, {30, 466, 250, 492}, R"("" enabled "Remove namespace from names?" button 3 set)"},
        {kAsterisk, {30, 502, 250, 528}, R"("" enabled "Use *.tv2 in save filename dialog?" button 3 set)"},
        {kConstraints, {30, 538, 250, 564}, R"("" enabled "Disable constraints?" button 3)"},
        {kExport, {88, 588, 138, 612}, R"("" enabled "Export" button 0)"},
        {kCancel, {144, 588, 194, 612}, R"("" enabled "Cancel" button 0)"},
        // clang-format on
    };
    Show(
        [&](FBPopup& popup)
        {
            EXPECT_STREQ(popup.Caption, "TEV2 Exporter v1.14, QN 2014");
            EXPECT_TRUE(popup.Modal);
            EXPECT_EQ((std::array<int, 4>{popup.Left, popup.Top, popup.Width, popup.Height}),
                      (std::array{100, 100, 282, 612}));
            const std::vector<mobu_host::Region>& shown = mobu_host::Regions(popup);
            ASSERT_EQ(shown.size(), std::size(expected));
            for (std::size_t i = 0; i < shown.size(); ++i)
            {
                std::array<int, 4> place = {};
                auto& [left, top, right, bottom] = place;
                EXPECT_EQ(shown[i].name, expected[i].region);
                EXPECT_TRUE(popup.GetRegionPositions(expected[i].region, true, &left, &top, &right, &bottom));
                EXPECT_EQ(place, expected[i].place) << expected[i].region;
                EXPECT_EQ(Looks(shown[i]), expected[i].looks) << expected[i].region;
            }
        });
}

TEST_F(ExportDialog, FillsOptionsAndStoresSettings)
{
    const ExportOptions options = Show(
        [](FBPopup& popup)
        {
            EXPECT_FALSE(mobu_host::Edit(popup, kRate, 12.0)) << "disabled until a custom rate is chosen";
            EXPECT_TRUE(mobu_host::Click(popup, kNtsc));
            EXPECT_FALSE(IsSet(popup, kPal));
            EXPECT_EQ(Number(popup, kRate), 59.94);
            EXPECT_TRUE(mobu_host::Click(popup, kCustomRate));
            EXPECT_FALSE(IsSet(popup, kNtsc));
            EXPECT_TRUE(mobu_host::Edit(popup, kRate, 12.5));
            EXPECT_TRUE(mobu_host::Click(popup, kCustomRange));
            EXPECT_FALSE(IsSet(popup, kExportAll));
            EXPECT_TRUE(mobu_host::Edit(popup, kStartKey, 20.4));
            EXPECT_TRUE(mobu_host::Edit(popup, kEndKey, 500.0)); // clamped to the take's last frame
            EXPECT_TRUE(mobu_host::Click(popup, kAllTakesRadio));
            EXPECT_FALSE(IsSet(popup, kCurrentTake));
            EXPECT_TRUE(mobu_host::Click(popup, kUnderscores));
            EXPECT_TRUE(mobu_host::Click(popup, kAsterisk));
            EXPECT_TRUE(mobu_host::Click(popup, kConstraints));
            EXPECT_TRUE(mobu_host::MoveTo(popup, 7, -3));
            EXPECT_TRUE(mobu_host::Click(popup, kExport));
        });
    ExpectOptions(options, {.CustomStart = static_cast<float>(20 / 25.0),
                            .CustomEnd = 4.0f,
                            .SamplingRate = 12.5f,
                            .FilenameSpacesToUnderscores = 0,
                            .DisableConstraints = 1,
                            .UseCustomRange = 1,
                            .AllTakes = 1});
    // clang-format off
    const Stored expected = {
        {"SAMPLING_RADIO_CHOICE_KEY_NAME", "2"}, {"KEYFRAME_RADIO_CHOICE_KEY_NAME", "1"},
        {"TAKES_RADIO_CHOICE_KEY_NAME", "1"},
        {"START_KEY_KEY_NAME", "20"}, {"END_KEY_KEY_NAME", "100"}, {"FPS_KEY_NAME", "12.500000"},
        {"FILENAME_SPACES_KEY_NAME", "0"}, {"KEEP_POSITIVE_Z_KEY_NAME", "1"},
        {"REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME", "1"},
        {"ASTERIX_TV2_EXTENSION_KEY_NAME", "0"}, {"DISABLE_CONSTRAINTS_KEY_NAME", "1"},
        {"DIALOG_POS_X_KEY_NAME", "7"}, {"DIALOG_POS_Y_KEY_NAME", "-3"},
    };
    // clang-format on
    EXPECT_EQ(platform::TestPlatform::Get().settings, expected);

    // The next run shows what was stored, and a take that the start key does not lie in its own first frame.
    FBSystem().CurrentTake = mobu_host::Scene().Takes[1];
    Show(
        [](FBPopup& popup)
        {
            EXPECT_TRUE(IsSet(popup, kCustomRate));
            EXPECT_EQ(Number(popup, kRate), 12.5);
            EXPECT_EQ(Number(popup, kStartKey), 20.0);
            EXPECT_EQ(Number(popup, kEndKey), 25.0);
            EXPECT_EQ(popup.Left, 7);
            EXPECT_TRUE(IsSet(popup, kAllTakesRadio));
            EXPECT_TRUE(IsSet(popup, kConstraints));
        });
}

TEST_F(ExportDialog, GoesBackToWhatItOfferedFirst)
{
    const ExportOptions options = Show(
        [](FBPopup& popup)
        {
            for (const char* const button : {kCustomRate, kCustomRange, kAllTakesRadio})
                EXPECT_TRUE(mobu_host::Click(popup, button));
            EXPECT_TRUE(mobu_host::Edit(popup, kRate, 12.5));
            EXPECT_TRUE(mobu_host::Edit(popup, kStartKey, 20.0));
            EXPECT_TRUE(mobu_host::Edit(popup, kEndKey, 30.0));
            for (const char* const button : {kPal, kExportAll, kCurrentTake})
                EXPECT_TRUE(mobu_host::Click(popup, button));
            for (const char* const button : {kNtsc, kCustomRate, kCustomRange, kAllTakesRadio})
                EXPECT_FALSE(IsSet(popup, button)) << button;
            EXPECT_EQ(Number(popup, kRate), 50.0);
            EXPECT_EQ(Number(popup, kStartKey), 10.0);
            EXPECT_EQ(Number(popup, kEndKey), 100.0);
            for (const char* const field : {kRate, kStartKey, kEndKey})
                EXPECT_FALSE(IsEnabled(popup, field)) << field;
            mobu_host::Click(popup, kExport);
        });
    ExpectOptions(options, {.CustomStart = 0.4f, .CustomEnd = 4.0f, .SamplingRate = 50.0f});
}

TEST_F(ExportDialog, EndsSilentlyWhereThereIsNothingToExport)
{
    for (const bool by_range : {true, false})
    {
        const auto user = [by_range](FBPopup& popup)
        {
            mobu_host::Click(popup, by_range ? kCustomRange : kCustomRate);
            mobu_host::Edit(popup, kStartKey, 50.0);
            mobu_host::Edit(popup, kEndKey, 49.0);
            mobu_host::Edit(popup, kRate, 0.0);
            mobu_host::Click(popup, kExport);
        };
        EXPECT_EQ(Show(user).Cancelled, 1) << by_range;
        EXPECT_TRUE(platform::TestPlatform::Get().settings.empty()) << by_range;
    }
}

TEST_F(ExportDialog, LeavesTheSceneAloneWhenCancelled)
{
    FBConstraint* const constraint = mobu_host::AddConstraint("Aim", true);
    FBSystem().CurrentTake = mobu_host::Scene().Takes[1];
    FBTime time;
    time.SetSecondDouble(0.52);
    FBPlayerControl().Goto(time);
    mobu_host::Scene().Evaluate();
    const auto evaluations = mobu_host::EvaluationCount();

    mobu_host::SetPopupPlayer(
        [](FBPopup& popup)
        {
            mobu_host::Click(popup, kConstraints);
            mobu_host::Click(popup, kAllTakesRadio);
            mobu_host::Click(popup, kCancel);
        });
    Tev2MotionBuilderExportTool tool;
    EXPECT_TRUE(tool.Execute((folder_ / "run.tv2").string().c_str()));
    EXPECT_TRUE(constraint->Active);
    FBTake* const current = FBSystem().CurrentTake;
    EXPECT_EQ(current, mobu_host::Scene().Takes[1]);
    EXPECT_EQ(FBTime(FBSystem().LocalTime), time);
    EXPECT_EQ(mobu_host::EvaluationCount(), evaluations);
    EXPECT_TRUE(std::filesystem::is_empty(folder_));
}

TEST_F(ExportDialog, ChecksTheStoredRangeWhateverTheChoice)
{
    for (const auto& [end_key, cancelled] : {std::pair{"20", 1}, {"59", 1}, {"60", 0}})
    {
        SCOPED_TRACE(end_key);
        platform::TestPlatform::Get().ClearSettings();
        const Stored stored = {{"KEYFRAME_RADIO_CHOICE_KEY_NAME", "0"},
                               {"START_KEY_KEY_NAME", "60"},
                               {"END_KEY_KEY_NAME", end_key}};
        platform::TestPlatform::Get().settings = stored;
        const ExportOptions options = Show(
            [](FBPopup& popup)
            {
                EXPECT_TRUE(IsSet(popup, kExportAll));
                EXPECT_TRUE(mobu_host::Click(popup, kExport));
            });
        EXPECT_EQ(options.Cancelled, cancelled);
        EXPECT_EQ(platform::TestPlatform::Get().settings == stored, cancelled == 1);
    }
}

TEST_F(ExportDialog, OffersAllTakesOnlyWhereThereAreSeveral)
{
    mobu_host::RemoveTake(mobu_host::Scene().Takes[1]);
    platform::SettingsWriter().Write("TAKES_RADIO_CHOICE_KEY_NAME", "1");
    const ExportOptions options = Show(
        [](FBPopup& popup)
        {
            EXPECT_TRUE(IsSet(popup, kCurrentTake));
            EXPECT_FALSE(IsSet(popup, kAllTakesRadio));
            EXPECT_FALSE(IsEnabled(popup, kCurrentTake));
            EXPECT_FALSE(mobu_host::Click(popup, kAllTakesRadio));
            mobu_host::Click(popup, kExport);
        });
    EXPECT_EQ(options.AllTakes, 0u);
}

TEST_F(ExportDialog, ReadsStoredTextsAsTheyAre)
{
    const struct
    {
        const char* name;
        const char* text;
        bool (*read)(const ExporterSettings&);
    } cases[] = {
        {"KEEP_POSITIVE_Z_KEY_NAME", "2", [](const auto& s) { return !s.flags.keep_positive_z; }},
        {"DISABLE_CONSTRAINTS_KEY_NAME", " 1 ", [](const auto& s) { return s.flags.disable_constraints; }},
        {"START_KEY_KEY_NAME", "not a number", [](const auto& s) { return s.start_key == 0; }},
        {"START_KEY_KEY_NAME", "12abc", [](const auto& s) { return s.start_key == 12; }},
        {"START_KEY_KEY_NAME", "-99999999999", [](const auto& s) { return s.start_key == INT32_MIN; }},
        {"FPS_KEY_NAME", "not a number", [](const auto& s) { return s.frame_rate == 0.0f; }},
        {"FPS_KEY_NAME", "29.97", [](const auto& s) { return s.frame_rate == 29.97f; }},
        {"SAMPLING_RADIO_CHOICE_KEY_NAME", "7", [](const auto& s) { return s.sampling_choice == 7; }},
    };
    for (const auto& c : cases)
    {
        platform::TestPlatform::Get().ClearSettings();
        platform::SettingsWriter().Write(c.name, c.text);
        ExporterSettings settings;
        ExportContext context;
        RefreshFromScene(context, settings);
        LoadSettings(settings);
        SCOPED_TRACE(std::string(c.name) + "=" + c.text);
        EXPECT_TRUE(c.read(settings));
        EXPECT_EQ(settings.end_key, 100) << "what is missing comes from the scene";
    }
    platform::TestPlatform::Get().ClearSettings();
    ExporterSettings settings;
    settings.transport_rate = 25.0;
    LoadSettings(settings);
    EXPECT_EQ(settings.frame_rate, 25.0f);
}

TEST_F(ExportDialog, ShowsItsOwnFramesWithoutACurrentTake)
{
    mobu_host::ClearTakes();
    ExporterSettings settings;
    ExportContext context;
    RefreshFromScene(context, settings);
    EXPECT_EQ(settings.take_start_frame, -10);
    EXPECT_EQ(settings.take_end_frame, 120);
    EXPECT_EQ(settings.transport_rate, context.player.GetTransportFpsValue());
}

TEST_F(ExportDialog, RunsFromTheMenuEntry)
{
    Tev2MotionBuilderExportTool tool;
    EXPECT_EQ(tool.Type, kFBMenuItemMotionExport);
    EXPECT_STREQ(tool.Extension, "*.tv2");
    EXPECT_STREQ(tool.Label, "QN - TV2 Exporter");
    EXPECT_STREQ(tool.Description, "QN - TV2 Exporter Description");
    EXPECT_STREQ(tool.ClassName(), "Tev2MotionBuilderExportTool");
    EXPECT_TRUE(tool.Is(FBMenuItem::TypeInfo));
    EXPECT_TRUE(tool.Is(FBVisualComponent::TypeInfo));

    const std::string path = (folder_ / "run.tv2").string();
    mobu_host::SetPopupPlayer(
        [](FBPopup& popup)
        {
            mobu_host::Click(popup, kNtsc);
            mobu_host::Click(popup, kAsterisk);
            mobu_host::Click(popup, kExport);
        });
    mobu_host::AddCamera("Cam");
    EXPECT_TRUE(tool.Execute(path.c_str()));
    const auto scene = Load("run.tv2");
    ASSERT_TRUE(scene);
    ASSERT_EQ(scene->cameras.size(), 1u);
    EXPECT_EQ(scene->cameras[0]->distance->m_times[1], 0.4f + 1.0f / 59.94f);
    EXPECT_STREQ(tool.Extension, "*.tv2") << "the box takes effect from the next use";
    mobu_host::SetPopupPlayer({});
    tool.Execute(path.c_str());
    EXPECT_STREQ(tool.Extension, ".tv2");
}

} // namespace
} // namespace tev2_exporter
