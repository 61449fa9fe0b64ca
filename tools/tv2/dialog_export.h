#pragma once

#include "tools/tv2/export_report.h"
#include "tools/tv2/export_scene.h"

#include <string>
#include <vector>

namespace tv2
{

/// Who uses the dialog, and what it remembers.
struct DialogUser
{
    std::string script;          ///< the file with the steps; empty: the person at the display, in a window
    bool stored_settings = true; ///< the dialog starts with those of the last time and stores the new ones
};

/// An export through the exporter's menu entry and its dialog.
struct DialogExportResult
{
    std::vector<std::string> failures; ///< what went wrong beyond single files
    ExportReport report;               ///< its error says why nothing was exported
    tev2_exporter::ExportCall choices; ///< that the dialog was left with, when something was exported
};

/// `plugin` is the exporter's module, empty for the one that belongs to this command. Of the request's question only
/// the path counts: the dialog decides the rest.
DialogExportResult ExportByDialog(const ExportRequest& request, const std::string& plugin,
                                  const DialogUser& user);

} // namespace tv2
