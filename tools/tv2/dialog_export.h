#pragma once

#include "tools/tv2/export_plan.h"
#include "tools/tv2/export_report.h"

#include <string>
#include <vector>

/// An export by way of the exporter's entry in the menu and its dialog, in a window or played by a script.
struct DialogExportResult
{
    std::vector<std::string> failures; ///< what went wrong beyond single files
    ExportReport report;               ///< its error says why nothing was exported
};

/// `plugin` is the exporter's module, empty for the one that belongs to this command; `script` the file with the
/// steps of the user, empty for the window. Of the request only scene, output, take, models and read-only files
/// count. What was written is told from the moves of the player, the names that the takes can give and what stands
/// in the files.
DialogExportResult ExportByDialog(const ExportRequest& request, const std::string& plugin,
                                  const std::string& script);
