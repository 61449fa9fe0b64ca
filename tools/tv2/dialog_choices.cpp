#include "tools/tv2/dialog_choices.h"

#include "exporter/clamped_cast.h"
#include "exporter/dialog_regions.h"
#include "tools/tv2/text.h"

#include <cmath>

namespace tv2
{

namespace regions = tev2_exporter::regions;

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

std::string DialogChoices::Objection() const
{
    if (start_key > end_key)
    {
        return "the start key " + std::to_string(start_key) + " is after the end key " +
               std::to_string(end_key);
    }
    return rate > 0.0 ? std::string() : "the rate is 0";
}

std::string DialogWatch::Watch(FBPopup& popup)
{
    for (const char* const button :
         {regions::kExport, regions::kExportAll, regions::kCurrentTake, regions::kSpacesToUnderscores})
    {
        if (!FBIS(popup.GetControl(button), FBButton))
        {
            return std::string("the exporter's dialog has no button \"") + button + '"';
        }
    }
    for (const char* const box : {regions::kRate, regions::kStartKey, regions::kEndKey})
    {
        if (!FBIS(popup.GetControl(box), FBEditNumber))
        {
            return std::string("the exporter's dialog has no box \"") + box + '"';
        }
    }
    popup_ = &popup;
    auto* const button = static_cast<FBButton*>(popup.GetControl(regions::kExport));
    button->OnClick.Add(this, static_cast<FBCallback>(&DialogWatch::OnExport));
    return {};
}

void DialogWatch::OnExport(HISender, HKEvent)
{
    DialogChoices choices;
    choices.rate = Number(*popup_, regions::kRate);
    choices.whole_take = IsSet(*popup_, regions::kExportAll);
    choices.start_key = Key(*popup_, regions::kStartKey);
    choices.end_key = Key(*popup_, regions::kEndKey);
    choices.all_takes = !IsSet(*popup_, regions::kCurrentTake);
    choices.spaces_to_underscores = IsSet(*popup_, regions::kSpacesToUnderscores);
    choices_ = choices;
}

} // namespace tv2
