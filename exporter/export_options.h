#pragma once

#include "exporter/export_context.h"

#include <cstdint>

namespace tev2_exporter
{

// The options of one export run. Flags hold 0 or 1.
struct ExportOptions
{
    float CustomStart = 0.0f;                     // start of the custom range, seconds
    float CustomEnd = 0.0f;                       // end of the custom range, seconds
    float SamplingRate = 0.0f;                    // samples a second
    std::uint8_t Cancelled = 0;                   // the dialog ended without an export
    std::uint8_t FilenameSpacesToUnderscores = 1; // in the file-name part of each output name
    std::uint8_t KeepPositiveZ = 1;               // half turn about Y on the converted hierarchy
    std::uint8_t RemoveNamespaceFromNames = 1;    // node names keep only what follows the last ":"
    std::uint8_t DisableConstraints = 0;          // constraints are inactive while sampling
    std::uint32_t UseCustomRange = 0;             // 0 the whole take, 1 the custom range clamped into it
    std::uint32_t AllTakes = 0;                   // 0 the current take, 1 every take as a file of its own
};

// The arguments of a scripted export, in the script's own terms.
struct ScriptArguments
{
    int startFrame = 0; // frames of the transport rate, not of `fps`
    int endFrame = 0;
    int fps = 0; // samples a second
    bool spacesToUnderscores = true;
    bool keepPositiveZ = true;
    bool removeNamespace = true;
    bool disableConstraints = false;
    bool exportAllKeys = true; // the whole take; startFrame and endFrame are then ignored
    bool allTakes = false;
};

// Options from script arguments. Nothing is validated: a start behind the end or a rate of 0 pass as they
// are.
ExportOptions FillOptionsFromScript(ExportContext& context, const ScriptArguments& arguments);

} // namespace tev2_exporter
