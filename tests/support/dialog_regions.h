#pragma once

// The regions of the exporter's dialog, by the names that users' scripts give them.

namespace tv2_tests::regions
{

inline constexpr const char* kPal = "SAMPLING_PAL_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kNtsc = "SAMPLING_NTSC_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kCustomRate = "SAMPLING_CUSTOM_FPS_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kRate = "SAMPLING_CUSTOM_FPS_EDITBOX_REGION_NAME";
inline constexpr const char* kExportAll = "Export All";
inline constexpr const char* kCustomRange = "Custom";
inline constexpr const char* kStartKey = "KEYFRAMES_START_KEY_EDITBOX_REGION_NAME";
inline constexpr const char* kEndKey = "KEYFRAMES_END_KEY_EDITBOX_REGION_NAME";
inline constexpr const char* kCurrentTake = "TAKES_CURRENT_TAKE_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kAllTakesRadio = "TAKES_ALL_TAKES_RADIO_BUTTON_REGION_NAME";
inline constexpr const char* kUnderscores = "FILENAME_SPACES_TO_UNDERSCORES_CHECKBOX_REGION_NAME";
inline constexpr const char* kPositiveZ = "KEEP_POSITIVE_Z_CHECKBOX_REGION_NAME";
inline constexpr const char* kNamespaces = "REMOVE_NAMESPACE_FORM_NAMES_CHECKBOX_REGION_NAME";
inline constexpr const char* kAsterisk = "ASTERIX_TV2_EXTENSION_CHECKBOX_REGION_NAME";
inline constexpr const char* kConstraints = "DISABLE_CONSTRAINTS_CHECKBOX_REGION_NAME";
inline constexpr const char* kExport = "EXPORT_BUTTON_REGION_NAME";
inline constexpr const char* kCancel = "CANCEL_BUTTON_REGION_NAME";

} // namespace tv2_tests::regions
