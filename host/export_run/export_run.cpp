#include "host/export_run/export_run.h"

#include "exporter/base/dialog_regions.h"
#include "exporter/base/option_table.h"
#include "exporter/base/script_entry.h"
#include "exporter/rules/sampling_rate.h"

#include <mobu_host/private_settings.h>
#include <mobu_host/ui.h>

namespace mobu_host
{
namespace
{

namespace regions = tev2_exporter::regions;

using tev2_exporter::KeyReductionSwitch;
using tev2_exporter::ScriptEntry;

/// The dialog's buttons and their states for a call. States are assigned, not clicked: a click has no effect on a
/// button that the dialog disables, such as those for several takes in a scene with one take.
std::vector<std::pair<const char*, bool>> ButtonsOf(const ExportCall& call)
{
    std::vector<std::pair<const char*, bool>> buttons = {
        {regions::kPal, false},
        {regions::kNtsc, false},
        {regions::kCustomRate, true},
        {regions::kExportAll, call.whole_take},
        {regions::kCustomKeys, !call.whole_take},
        {regions::kCurrentTake, !call.flags.all_takes},
        {regions::kAllTakes, call.flags.all_takes},
    };
    for (const tev2_exporter::ExportOption& box : tev2_exporter::kCheckBoxes)
        buttons.emplace_back(box.region, call.flags.*box.flag);
    return buttons;
}

template <typename Control>
Control* ControlAt(FBPopup& popup, const char* region)
{
    const Region* const found = FindRegion(popup, region);
    return found != nullptr ? dynamic_cast<Control*>(found->control) : nullptr;
}

/// Fills in a dialog and presses "Export". False when it is not the exporter's dialog.
bool FillIn(FBPopup& popup, const ExportCall& call)
{
    for (const auto& [region, state] : ButtonsOf(call))
    {
        auto* const control = ControlAt<FBButton>(popup, region);
        if (control == nullptr)
            return false;
        control->State = state ? 1 : 0;
    }
    auto* const rate = ControlAt<FBEditNumber>(popup, regions::kRate);
    auto* const start = ControlAt<FBEditNumber>(popup, regions::kStartKey);
    auto* const end = ControlAt<FBEditNumber>(popup, regions::kEndKey);
    if (rate == nullptr || start == nullptr || end == nullptr)
        return false;
    // Assigned, not typed: the boxes clamp typed numbers to the current take and to the usual rates.
    rate->Value = call.rate;
    start->Value = call.whole_take ? 0 : call.start_frame;
    end->Value = call.whole_take ? 0 : call.end_frame;
    return Click(popup, regions::kExport);
}

bool RunThroughMenu(const ExportCall& call, std::string& error)
{
    FBMenuItem* const entry = ExportEntry();
    if (entry == nullptr)
    {
        error = "the plug-in has no entry in the export menu";
        return false;
    }
    bool filled_in = false;
    SetPopupPlayer([&](FBPopup& popup) { filled_in = FillIn(popup, call); });
    const bool completed = UseMenuItem(*entry, call.path);
    SetPopupPlayer({});
    if (!filled_in)
        error = "the plug-in's dialog cannot be filled in";
    return completed && filled_in;
}

} // namespace

struct Exporter::Parts
{
    std::unique_ptr<PrivateSettings> settings;
    std::unique_ptr<Plugin> plugin; // ends before the settings come back
    ScriptEntry* entry = nullptr;
    KeyReductionSwitch* reduce_keys = nullptr; ///< null in plug-ins that have none
};

std::unique_ptr<Exporter> Exporter::Load(const std::string& plugin, std::string& error)
{
    auto parts = std::make_unique<Parts>();
    parts->settings = PrivateSettings::Make(error);
    if (!parts->settings)
        return nullptr;
    parts->plugin = Plugin::Load(plugin, error);
    if (!parts->plugin)
    {
        error = "the exporter cannot be loaded: " + error;
        return nullptr;
    }
    parts->entry = parts->plugin->Symbol<ScriptEntry>(tev2_exporter::kScriptEntryName);
    if (parts->entry == nullptr)
    {
        error = plugin + " is no exporter: it has no " + tev2_exporter::kScriptEntryName;
        return nullptr;
    }
    parts->reduce_keys = parts->plugin->Symbol<KeyReductionSwitch>(tev2_exporter::kKeyReductionSwitchName);
    return std::unique_ptr<Exporter>(new Exporter(std::move(parts)));
}

Exporter::Exporter(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
Exporter::~Exporter() = default;

bool Exporter::Run(const ExportCall& call, std::string& error) const
{
    if (!tev2_exporter::IsWholeRate(call.rate))
        return RunThroughMenu(call, error);
    return parts_->entry(call.path.c_str(), call.start_frame, call.end_frame, static_cast<int>(call.rate),
                         call.flags.spaces_to_underscores, call.flags.keep_positive_z,
                         call.flags.remove_namespace, call.flags.disable_constraints, call.whole_take,
                         call.flags.all_takes) == 1;
}

bool Exporter::RunWithEveryKey(const ExportCall& call, std::string& error) const
{
    if (parts_->reduce_keys == nullptr)
    {
        error = "the exporter cannot leave out key reduction";
        return false;
    }
    const struct EveryKey
    {
        KeyReductionSwitch* reduce_keys;
        explicit EveryKey(KeyReductionSwitch* the_switch) : reduce_keys(the_switch) { reduce_keys(false); }
        ~EveryKey() { reduce_keys(true); }
    } every_key(parts_->reduce_keys);
    return Run(call, error);
}

FBMenuItem* ExportEntry()
{
    for (FBMenuItem* item : MenuItems())
    {
        const FBMenuItemType type = item->Type;
        if (type == kFBMenuItemMotionExport || type == kFBMenuItemSceneExport)
            return item;
    }
    return nullptr;
}

} // namespace mobu_host
