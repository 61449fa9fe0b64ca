#include "exporter/export_dialog.h"

#include "exporter/base/clamped_cast.h"
#include "exporter/base/version.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tev2_exporter
{
namespace
{

constexpr int kWidth = 282; // pixels
constexpr int kCheckBoxPitch = 36;
constexpr int kCheckBoxesHeight = 14 + kCheckBoxPitch * static_cast<int>(kCheckBoxCount);
constexpr int kHeight = 418 + kCheckBoxesHeight;

constexpr double kPalRate = 50.0; // samples a second
constexpr double kNtscRate = 59.94;

constexpr const char* kLayout = "";
constexpr const char* kSampling = "SAMPLING_GROUP_BOX_REGION_NAME";
constexpr const char* kKeyFrames = "KEYFRAMES_GROUP_BOX_REGION_NAME";
constexpr const char* kTakes = "TAKES_GROUP_BOX_REGION_NAME";
constexpr const char* kMiscellaneous = "MISC_GROUP_BOX_REGION_NAME";

constexpr FBAttachType kInLeft = kFBAttachLeft;   // from the left edge of the relative region
constexpr FBAttachType kInTop = kFBAttachTop;     // from its top edge
constexpr FBAttachType kBelow = kFBAttachBottom;  // from its bottom edge
constexpr FBAttachType kAbsolute = kFBAttachNone; // in the layout

struct Place
{
    int offset;
    FBAttachType attach;
    const char* relative;
};

void SetUpChoice(FBButton& button, FBButtonStyle style, const char* caption, bool set)
{
    button.Caption = caption;
    button.Style = style;
    button.State = set;
}

void SetUpNumber(FBEditNumber& box, double minimum, double maximum, double precision, double value,
                 bool enabled)
{
    box.Min = minimum;
    box.Max = maximum;
    box.Precision = precision;
    box.LargeStep = 5.0;
    box.SmallStep = 1.0;
    box.Value = value;
    box.Enabled = enabled;
}

void SetUpLabel(FBLabel& label, const char* caption)
{
    label.Caption = caption;
    label.Justify = kFBTextJustifyRight;
    label.WordWrap = true;
}

/// The SDK may hold on to a parent for longer than the popup lives, so one serves all popups and is never freed.
FBVisualComponent* EmptyParent()
{
    static FBVisualComponent* const parent = new FBVisualComponent(nullptr);
    return parent;
}

bool IsSet(FBButton& button)
{
    return button.State == 1;
}

} // namespace

FBClassImplementation(TEV2_EXPORTER_DIALOG);

TEV2_EXPORTER_DIALOG::TEV2_EXPORTER_DIALOG()
{
    FBClassInit;
}

void TEV2_EXPORTER_DIALOG::ShowFor(ExportOptions& options)
{
    options_ = &options;
    options.Cancelled = 1; // until "Export" says otherwise
    RefreshFromScene(context_, settings_);
    LoadSettings(settings_);
    Show(EmptyParent());
    if (options.Cancelled == 0)
        SaveSettings(settings_);
}

bool TEV2_EXPORTER_DIALOG::Show(FBVisualComponent* parent)
{
    char caption[128];
    std::snprintf(caption, sizeof caption, "TEV2 Exporter %s, QN 2014", kExporterVersion);
    Caption = caption;
    Modal = true;
    Left = settings_.dialog_x;
    Top = settings_.dialog_y;
    Width = kWidth;
    Height = kHeight;

    AddRegions();
    SetUpSampling();
    SetUpKeyFrames();
    SetUpTakes();
    SetUpCheckBoxes();
    SetUpButtons();
    return FBPopup::Show(parent);
}

void TEV2_EXPORTER_DIALOG::AddRegions()
{
    struct Row
    {
        const char* name;
        const char* title;
        FBVisualComponent* control; // none: a group box
        Place x;
        Place y;
        int width;
        int height;
    };
    const auto add = [this](const Row& row)
    {
        AddRegion(row.name, row.title, row.x.offset, row.x.attach, row.x.relative, 1.0f, row.y.offset,
                  row.y.attach, row.y.relative, 1.0f, row.width, kAbsolute, kLayout, 1.0f, row.height,
                  kAbsolute, kLayout, 1.0f);
        if (row.control)
            SetControl(row.name, row.control);
        else
            SetBorder(row.name, kFBEmbossSmoothEdgeBorder, true, false, 2, 2, 90.0f, 10);
    };
    // clang-format off
    const Row rows[] = {
        {kSampling, "Sampling", nullptr, {10, kAbsolute, kLayout}, {20, kAbsolute, kLayout}, 260, 100},
        {regions::kPal, "", &pal_, {50, kInLeft, kSampling}, {10, kInTop, kSampling}, 70, 26},
        {regions::kNtsc, "", &ntsc_, {150, kInLeft, kSampling}, {10, kInTop, kSampling}, 60, 26},
        {regions::kCustomRate, "", &custom_rate_, {40, kInLeft, kSampling}, {56, kInTop, kSampling}, 80, 26},
        {regions::kRate, "", &rate_, {140, kInLeft, kSampling}, {54, kInTop, kSampling}, 60, 30},
        {kKeyFrames, "Key-frames", nullptr, {0, kInLeft, kSampling}, {20, kBelow, kSampling}, 260, 134},
        {regions::kExportAll, "", &export_all_, {50, kInLeft, kKeyFrames}, {10, kInTop, kKeyFrames}, 70, 26},
        {regions::kCustomKeys, "", &custom_keys_, {150, kInLeft, kKeyFrames}, {10, kInTop, kKeyFrames}, 60, 26},
        {regions::kStartLabel, "", &start_label_, {30, kInLeft, kKeyFrames}, {46, kInTop, kKeyFrames}, 60, 30},
        {regions::kStartKey, "", &start_key_, {100, kInLeft, kKeyFrames}, {46, kInTop, kKeyFrames}, 70, 30},
        {regions::kEndLabel, "", &end_label_, {30, kInLeft, kKeyFrames}, {86, kInTop, kKeyFrames}, 60, 30},
        {regions::kEndKey, "", &end_key_, {100, kInLeft, kKeyFrames}, {86, kInTop, kKeyFrames}, 70, 30},
        {kTakes, "Takes", nullptr, {0, kInLeft, kKeyFrames}, {20, kBelow, kKeyFrames}, 260, 70},
        {regions::kCurrentTake, "", &current_take_, {14, kInLeft, kTakes}, {10, kInTop, kTakes}, 210, 26},
        {regions::kAllTakes, "", &all_takes_, {14, kInLeft, kTakes}, {36, kInTop, kTakes}, 210, 26},
        {kMiscellaneous, "Miscellaneous", nullptr, {0, kInLeft, kTakes}, {20, kBelow, kTakes}, 260, kCheckBoxesHeight},
    };
    // clang-format on
    std::ranges::for_each(rows, add);
    int top = 10;
    for (std::size_t i = 0; i < kCheckBoxCount; ++i)
    {
        add({kCheckBoxes[i].region,
             "",
             &check_boxes_[i],
             {20, kInLeft, kMiscellaneous},
             {top, kInTop, kMiscellaneous},
             220,
             26});
        top += kCheckBoxPitch;
    }
    add({regions::kExport, "", &export_, {88, kAbsolute, kLayout}, {10, kBelow, kMiscellaneous}, 50, 24});
    add({regions::kCancel, "", &cancel_, {144, kAbsolute, kLayout}, {10, kBelow, kMiscellaneous}, 50, 24});
}

void TEV2_EXPORTER_DIALOG::Connect(FBButton& button, ClickHandler handler)
{
    button.OnClick.Add(this, static_cast<FBCallback>(handler));
}

void TEV2_EXPORTER_DIALOG::SetUpSampling()
{
    const std::int32_t choice = settings_.sampling_choice;
    SetUpChoice(pal_, kFBRadioButton, "PAL", choice == kSamplingPal);
    SetUpChoice(ntsc_, kFBRadioButton, "NTSC", choice == kSamplingNtsc);
    SetUpChoice(custom_rate_, kFBRadioButton, "Custom FPS", choice == kSamplingCustom);
    const double rate = choice == kSamplingPal    ? kPalRate
                        : choice == kSamplingNtsc ? kNtscRate
                                                  : static_cast<double>(settings_.frame_rate);
    SetUpNumber(rate_, 0.0, 240.0, 3.2, rate, choice == kSamplingCustom);
    Connect(pal_, &TEV2_EXPORTER_DIALOG::OnPal);
    Connect(ntsc_, &TEV2_EXPORTER_DIALOG::OnNtsc);
    Connect(custom_rate_, &TEV2_EXPORTER_DIALOG::OnCustomRate);
}

void TEV2_EXPORTER_DIALOG::SetUpKeyFrames()
{
    const int first = settings_.take_start_frame;
    const int last = settings_.take_end_frame;
    const bool custom = settings_.key_frame_choice == kCustomKeys;
    const auto within_take = [&](int key, int otherwise)
    { return key >= first && key <= last ? key : otherwise; };

    SetUpChoice(export_all_, kFBRadioButton, "Export All", settings_.key_frame_choice == kExportAllKeys);
    SetUpChoice(custom_keys_, kFBRadioButton, "Custom", custom);
    SetUpLabel(start_label_, "Start Key");
    SetUpNumber(start_key_, first, last, 1.0, within_take(settings_.start_key, first), custom);
    SetUpLabel(end_label_, "End Key");
    SetUpNumber(end_key_, first, last, 1.0, within_take(settings_.end_key, last), custom);
    Connect(export_all_, &TEV2_EXPORTER_DIALOG::OnExportAll);
    Connect(custom_keys_, &TEV2_EXPORTER_DIALOG::OnCustomKeys);
}

void TEV2_EXPORTER_DIALOG::SetUpTakes()
{
    const bool several = context_.system.Scene->Takes.GetCount() > 1;
    if (!several)
        settings_.takes_choice = kCurrentTakeOnly;
    SetUpChoice(current_take_, kFBRadioButton, "Current Take Only",
                settings_.takes_choice == kCurrentTakeOnly);
    SetUpChoice(all_takes_, kFBRadioButton, Option("all_takes").caption, settings_.takes_choice == kAllTakes);
    current_take_.Enabled = several;
    all_takes_.Enabled = several;
    Connect(current_take_, &TEV2_EXPORTER_DIALOG::OnCurrentTake);
    Connect(all_takes_, &TEV2_EXPORTER_DIALOG::OnAllTakes);
}

void TEV2_EXPORTER_DIALOG::SetUpCheckBoxes()
{
    for (std::size_t i = 0; i < kCheckBoxCount; ++i)
    {
        SetUpChoice(check_boxes_[i], kFBCheckbox, kCheckBoxes[i].caption,
                    settings_.flags.*kCheckBoxes[i].flag);
    }
}

void TEV2_EXPORTER_DIALOG::SetUpButtons()
{
    export_.Caption = "Export";
    cancel_.Caption = "Cancel";
    Connect(export_, &TEV2_EXPORTER_DIALOG::OnExport);
    Connect(cancel_, &TEV2_EXPORTER_DIALOG::OnCancel);
}

/// A group with nothing set counts as its last choice.
void TEV2_EXPORTER_DIALOG::ReadControls()
{
    settings_.sampling_choice = IsSet(pal_) ? kSamplingPal : IsSet(ntsc_) ? kSamplingNtsc : kSamplingCustom;
    settings_.key_frame_choice = IsSet(export_all_) ? kExportAllKeys : kCustomKeys;
    settings_.takes_choice = IsSet(current_take_) ? kCurrentTakeOnly : kAllTakes;
    settings_.start_key = ToInt32(std::round(start_key_.Value));
    settings_.end_key = ToInt32(std::round(end_key_.Value));
    settings_.frame_rate = static_cast<float>(static_cast<double>(rate_.Value));
    for (std::size_t i = 0; i < kCheckBoxCount; ++i)
        settings_.flags.*kCheckBoxes[i].flag = IsSet(check_boxes_[i]);
}

void TEV2_EXPORTER_DIALOG::ReadPosition()
{
    settings_.dialog_x = Left;
    settings_.dialog_y = Top;
}

// A clicked radio button sets itself; its handler clears the others of its group.

void TEV2_EXPORTER_DIALOG::OnPal(HISender, HKEvent)
{
    rate_.Value = kPalRate;
    rate_.Enabled = false;
    ntsc_.State = 0;
    custom_rate_.State = 0;
}

void TEV2_EXPORTER_DIALOG::OnNtsc(HISender, HKEvent)
{
    rate_.Value = kNtscRate;
    rate_.Enabled = false;
    pal_.State = 0;
    custom_rate_.State = 0;
}

void TEV2_EXPORTER_DIALOG::OnCustomRate(HISender, HKEvent)
{
    pal_.State = 0;
    ntsc_.State = 0;
    rate_.Enabled = true;
}

void TEV2_EXPORTER_DIALOG::OnExportAll(HISender, HKEvent)
{
    start_key_.Value = settings_.take_start_frame;
    end_key_.Value = settings_.take_end_frame;
    start_key_.Enabled = false;
    end_key_.Enabled = false;
    custom_keys_.State = 0;
}

void TEV2_EXPORTER_DIALOG::OnCustomKeys(HISender, HKEvent)
{
    start_key_.Enabled = true;
    end_key_.Enabled = true;
    export_all_.State = 0;
}

void TEV2_EXPORTER_DIALOG::OnCurrentTake(HISender, HKEvent)
{
    all_takes_.State = 0;
}

void TEV2_EXPORTER_DIALOG::OnAllTakes(HISender, HKEvent)
{
    current_take_.State = 0;
}

void TEV2_EXPORTER_DIALOG::OnExport(HISender, HKEvent)
{
    ReadControls();
    *options_ = FillOptionsFromSettings(settings_);
    ReadPosition();
    Close(true);
}

void TEV2_EXPORTER_DIALOG::OnCancel(HISender, HKEvent)
{
    options_->Cancelled = 1;
    Close(false);
}

} // namespace tev2_exporter
