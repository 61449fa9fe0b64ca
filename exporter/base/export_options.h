#pragma once

#include <cstdint>
#include <string>

namespace tev2_exporter
{

/// Options that are on or off, with their defaults.
struct ExportFlags
{
    bool spaces_to_underscores = true;
    bool keep_positive_z = true;
    bool remove_namespace = true;
    bool asterisk_extension = true; ///< offer "*.tv2" in the save dialog
    bool disable_constraints = false;
    bool all_takes = false;
};

/// One export as a script asks for it.
struct ExportCall
{
    std::string path;
    double rate = 0.0; ///< samples a second; the script entry takes only whole rates
    bool whole_take = true;
    std::int32_t start_frame = 0; ///< of the transport rate, not of `rate`; ignored for the whole take
    std::int32_t end_frame = 0;
    ExportFlags flags;
};

/// The options of one export run. Flags hold 0 or 1.
struct ExportOptions
{
    float CustomStart = 0.0f;                     ///< start of the custom range, seconds
    float CustomEnd = 0.0f;                       ///< end of the custom range, seconds
    float SamplingRate = 0.0f;                    ///< samples a second
    std::uint8_t Cancelled = 0;                   ///< the dialog ended without an export
    std::uint8_t FilenameSpacesToUnderscores = 1; ///< in the file-name part of each output name
    std::uint8_t KeepPositiveZ = 1;               ///< rotates the converted hierarchy by 180 degrees about Y
    std::uint8_t RemoveNamespaceFromNames = 1;    ///< keeps of node names what follows the last ":"
    std::uint8_t DisableConstraints = 0;          ///< constraints are inactive while sampling
    std::uint32_t UseCustomRange = 0;             ///< 0: the whole take, 1: the custom range clamped to it
    std::uint32_t AllTakes = 0; ///< 0: the current take, 1: every take, each in its own file
};

} // namespace tev2_exporter
