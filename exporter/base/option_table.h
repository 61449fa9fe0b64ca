#pragma once

#include "exporter/base/dialog_regions.h"
#include "exporter/base/export_options.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace tev2_exporter
{

/// One option of an export: how the dialog, the stored settings, the command line and scripts call it. A new option
/// that is on or off is a member of ExportFlags, one of ExportOptions, a row of kExportOptions and its use.
struct ExportOption
{
    bool is_check_box;
    const char* name;    ///< of the argument in Python; with "-" for "_" of the option on the command line
    const char* key;     ///< of the stored value
    const char* region;  ///< of the control in the dialog
    const char* caption; ///< of the control in the dialog; null: none
    const char* help;    ///< null: only the dialog has it
    bool ExportFlags::*flag;              ///< null: not an option that is on or off
    std::uint8_t ExportOptions::*applied; ///< null: the driver does not read it from there
};

/// Check boxes come first, from top to bottom, which is also the order in which they are stored.
inline constexpr ExportOption kExportOptions[] = {
    {true, "spaces_to_underscores", "FILENAME_SPACES_KEY_NAME",
     "FILENAME_SPACES_TO_UNDERSCORES_CHECKBOX_REGION_NAME", "Change filename spaces to underscores?",
     "Replace spaces in file names", &ExportFlags::spaces_to_underscores,
     &ExportOptions::FilenameSpacesToUnderscores},
    {true, "keep_positive_z", "KEEP_POSITIVE_Z_KEY_NAME", "KEEP_POSITIVE_Z_CHECKBOX_REGION_NAME",
     "Keep positive Z?", "Turn the scene so that its Z axis keeps its sign", &ExportFlags::keep_positive_z,
     &ExportOptions::KeepPositiveZ},
    {true, "remove_namespace", "REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME",
     "REMOVE_NAMESPACE_FORM_NAMES_CHECKBOX_REGION_NAME", "Remove namespace from names?",
     "Write node names without their namespaces", &ExportFlags::remove_namespace,
     &ExportOptions::RemoveNamespaceFromNames},
    {true, "asterisk_extension", "ASTERIX_TV2_EXTENSION_KEY_NAME",
     "ASTERIX_TV2_EXTENSION_CHECKBOX_REGION_NAME", "Use *.tv2 in save filename dialog?", nullptr,
     &ExportFlags::asterisk_extension, nullptr},
    {true, "disable_constraints", "DISABLE_CONSTRAINTS_KEY_NAME", "DISABLE_CONSTRAINTS_CHECKBOX_REGION_NAME",
     "Disable constraints?", "Export with constraints inactive", &ExportFlags::disable_constraints,
     &ExportOptions::DisableConstraints},
    {false, "all_takes", "TAKES_RADIO_CHOICE_KEY_NAME", regions::kAllTakes, "All Takes As Separate Files",
     "Export every take, each to a file of its own", &ExportFlags::all_takes, nullptr},
    {false, "start_frame", "START_KEY_KEY_NAME", regions::kStartKey, nullptr,
     "First frame, counted at the transport rate (default: of the take)", nullptr, nullptr},
    {false, "end_frame", "END_KEY_KEY_NAME", regions::kEndKey, nullptr,
     "Last frame, counted at the transport rate (default: of the take)", nullptr, nullptr},
    {false, "fps", "FPS_KEY_NAME", regions::kRate, nullptr,
     "Samples per second (default: scene, the scene's transport rate)", nullptr, nullptr},
};

inline constexpr std::size_t kCheckBoxCount =
    static_cast<std::size_t>(std::ranges::count_if(kExportOptions, &ExportOption::is_check_box));
inline constexpr std::span<const ExportOption, kCheckBoxCount> kCheckBoxes{kExportOptions, kCheckBoxCount};
static_assert(std::ranges::is_partitioned(kExportOptions, &ExportOption::is_check_box));

/// The row of that name. Other names do not compile.
consteval const ExportOption& Option(std::string_view name)
{
    return *std::ranges::find(kExportOptions, name,
                              [](const ExportOption& row) { return std::string_view(row.name); });
}

/// "--all-takes" for "all_takes".
inline std::string CommandLineName(const ExportOption& row)
{
    std::string name = std::string("--") + row.name;
    std::ranges::replace(name, '_', '-');
    return name;
}

/// Takes the flags over into the options of a run.
inline void SetFlags(ExportOptions& options, const ExportFlags& flags)
{
    for (const ExportOption& row : kExportOptions)
        if (row.applied != nullptr)
            options.*row.applied = flags.*row.flag;
    options.AllTakes = flags.all_takes;
}

} // namespace tev2_exporter
