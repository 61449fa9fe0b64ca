#pragma once

#include "exporter/base/export_context.h"
#include "exporter/base/option_table.h"
#include "exporter/export_settings.h"

#include <array>

namespace tev2_exporter
{

/// The options popup: shown once, modally; fills the caller's options when the user presses "Export".
class TEV2_EXPORTER_DIALOG : public FBPopup
{
    FBClassDeclare(TEV2_EXPORTER_DIALOG, FBPopup);

public:
    TEV2_EXPORTER_DIALOG();

    /// Shows the popup with the stored settings and the open scene's frames; returns when it has closed. `options` then
    /// holds what was chosen and the settings are stored, or `Cancelled` is 1 and nothing was stored: after "Cancel",
    /// after values that cannot be exported (a reversed range, a rate of 0), and when the window was closed.
    void ShowFor(ExportOptions& options);

    /// Lays out the regions, sets up the controls and shows the popup.
    virtual bool Show(FBVisualComponent* parent = nullptr);

private:
    using ClickHandler = void (TEV2_EXPORTER_DIALOG::*)(HISender, HKEvent);

    void Connect(FBButton& button, ClickHandler handler);
    void AddRegions();
    void SetUpSampling();
    void SetUpKeyFrames();
    void SetUpTakes();
    void SetUpCheckBoxes();
    void SetUpButtons();
    void ReadControls();
    void ReadPosition();

    void OnPal(HISender sender, HKEvent event);
    void OnNtsc(HISender sender, HKEvent event);
    void OnCustomRate(HISender sender, HKEvent event);
    void OnExportAll(HISender sender, HKEvent event);
    void OnCustomKeys(HISender sender, HKEvent event);
    void OnCurrentTake(HISender sender, HKEvent event);
    void OnAllTakes(HISender sender, HKEvent event);
    void OnExport(HISender sender, HKEvent event);
    void OnCancel(HISender sender, HKEvent event);

    ExportContext context_;
    FBButton pal_;
    FBButton ntsc_;
    FBButton custom_rate_;
    FBEditNumber rate_;
    FBButton export_all_;
    FBButton custom_keys_;
    FBEditNumber start_key_;
    FBEditNumber end_key_;
    FBLabel start_label_;
    FBLabel end_label_;
    FBButton current_take_;
    FBButton all_takes_;
    std::array<FBButton, kCheckBoxCount> check_boxes_;
    FBButton export_;
    FBButton cancel_;
    ExporterSettings settings_;
    ExportOptions* options_ = nullptr;
};

} // namespace tev2_exporter
