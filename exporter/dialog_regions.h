#pragma once

// The names of the dialog's controls in its layout, for those who use the dialog from outside.

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
inline constexpr const char* kSpacesToUnderscores = "FILENAME_SPACES_TO_UNDERSCORES_CHECKBOX_REGION_NAME";
inline constexpr const char* kKeepPositiveZ = "KEEP_POSITIVE_Z_CHECKBOX_REGION_NAME";
inline constexpr const char* kRemoveNamespace = "REMOVE_NAMESPACE_FORM_NAMES_CHECKBOX_REGION_NAME";
inline constexpr const char* kAsteriskExtension = "ASTERIX_TV2_EXTENSION_CHECKBOX_REGION_NAME";
inline constexpr const char* kDisableConstraints = "DISABLE_CONSTRAINTS_CHECKBOX_REGION_NAME";
inline constexpr const char* kExport = "EXPORT_BUTTON_REGION_NAME";
inline constexpr const char* kCancel = "CANCEL_BUTTON_REGION_NAME";

} // namespace tev2_exporter::regions
