#include "tools/tv2/dialog_choices.h"

#include "exporter/base/clamped_cast.h"
#include "exporter/base/option_table.h"
#include "tools/tv2/text.h"

#include <cmath>
#include <string>
#include <vector>

namespace tv2
{

namespace regions = tev2_exporter::regions;
using tev2_exporter::ExportCall;
using TEV2_LOADER::Status;

namespace
{

bool IsSet(FBPopup& popup, const char* region)
{
    return static_cast<FBButton*>(popup.GetControl(region))->State != 0;
}

double Number(FBPopup& popup, const char* region)
{
    return static_cast<FBEditNumber*>(popup.GetControl(region))->Value;
}

int Key(FBPopup& popup, const char* region)
{
    return tev2_exporter::ToInt32(std::round(Number(popup, region)));
}

} // namespace

Status CheckChoices(const ExportCall& choices)
{
    if (choices.start_frame > choices.end_frame)
    {
        return Status::Failure("the start key " + std::to_string(choices.start_frame) +
                               " is after the end key " + std::to_string(choices.end_frame));
    }
    return choices.rate > 0.0 ? Status() : Status::Failure("the rate is 0");
}

Status DialogWatch::Watch(FBPopup& popup)
{
    std::vector<const char*> buttons = {regions::kExport, regions::kExportAll, regions::kCurrentTake};
    for (const tev2_exporter::ExportOption& box : tev2_exporter::kCheckBoxes)
        buttons.push_back(box.region);
    for (const char* const button : buttons)
        if (!FBIS(popup.GetControl(button), FBButton))
            return Status::Failure(std::string("the exporter's dialog has no button \"") + button + '"');
    for (const char* const box : {regions::kRate, regions::kStartKey, regions::kEndKey})
        if (!FBIS(popup.GetControl(box), FBEditNumber))
            return Status::Failure(std::string("the exporter's dialog has no box \"") + box + '"');
    popup_ = &popup;
    auto* const button = static_cast<FBButton*>(popup.GetControl(regions::kExport));
    button->OnClick.Add(this, static_cast<FBCallback>(&DialogWatch::OnExport));
    return {};
}

void DialogWatch::OnExport(HISender, HKEvent)
{
    ExportCall choices;
    choices.rate = Number(*popup_, regions::kRate);
    choices.whole_take = IsSet(*popup_, regions::kExportAll);
    choices.start_frame = Key(*popup_, regions::kStartKey);
    choices.end_frame = Key(*popup_, regions::kEndKey);
    for (const tev2_exporter::ExportOption& box : tev2_exporter::kCheckBoxes)
        choices.flags.*box.flag = IsSet(*popup_, box.region);
    choices.flags.all_takes = !IsSet(*popup_, regions::kCurrentTake);
    on_chosen_(choices);
}

} // namespace tv2
