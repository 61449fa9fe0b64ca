#pragma once

#include "exporter/base/export_options.h"
#include "tev2_loader/status.h"

#include <fbsdk/fbsdk.h>

#include <functional>

namespace tv2
{

/// Why the exporter's dialog treats these choices as a cancellation; success when it exports.
TEV2_LOADER::Status CheckChoices(const tev2_exporter::ExportCall& choices);

/// Reads the exporter's dialog when its Export button is pressed.
class DialogWatch : public ICallback
{
public:
    /// Receives what was chosen, without a path.
    using OnChosen = std::function<void(const tev2_exporter::ExportCall& choices)>;

    explicit DialogWatch(OnChosen on_chosen) : on_chosen_(std::move(on_chosen)) {}

    /// Begins to watch an open popup. Fails when it is not the exporter's dialog.
    TEV2_LOADER::Status Watch(FBPopup& popup);

private:
    void OnExport(HISender sender, HKEvent event);

    FBPopup* popup_ = nullptr;
    OnChosen on_chosen_;
};

} // namespace tv2
