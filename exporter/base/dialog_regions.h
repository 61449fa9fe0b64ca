#pragma once

// Names of the dialog's controls in its layout. Those of the check boxes are in option_table.h.

namespace tev2_exporter::regions
{

inline constexpr const char* kPal = "SAMPLING_PAL_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kNtsc = "SAMPLING_NTSC_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kCustomRate = "SAMPLING_CUSTOM_FPS_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kRate = "SAMPLING_CUSTOM_FPS_EDITBOX_REGION_NAME";
inline constexpr const char* kExportAll = "Export All";
inline constexpr const char* kCustomKeys = "Custom";
inline constexpr const char* kStartLabel = "KEYFRAMES_START_KEY_EDITBOX_LABEL_REGION_NAME";
inline constexpr const char* kStartKey = "KEYFRAMES_START_KEY_EDITBOX_REGION_NAME";
inline constexpr const char* kEndLabel = "KEYFRAMES_END_KEY_EDITBOX_LABEL_REGION_NAME";
inline constexpr const char* kEndKey = "KEYFRAMES_END_KEY_EDITBOX_REGION_NAME";
inline constexpr const char* kCurrentTake = "TAKES_CURRENT_TAKE_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kAllTakes = "TAKES_ALL_TAKES_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kExport = "EXPORT_BUTTON_REGION_NAME";
inline constexpr const char* kCancel = "CANCEL_BUTTON_REGION_NAME";

} // namespace tev2_exporter::regions
