#pragma once

#include "exporter/rules/rules.h"
#include "tev2_loader/status.h"

#include <string>
#include <vector>

namespace tv2
{

/// What the user asked for on the command line.
struct ExportRequest
{
    std::string scene;
    double scene_rate = 0.0;         ///< frames per second of the scene; 0: its own
    std::string take;                ///< empty: the current one
    std::vector<std::string> select; ///< long names; empty: the whole scene
    tev2_exporter::ExportQuestion question;
    bool overwrite_read_only = false;
    std::vector<std::string>
        source_files; ///< that the scene was read from besides the scene file; OpenScene sets them
};

/// Applies the rules that need no scene.
TEV2_LOADER::Status CheckRequest(const ExportRequest& request);

/// Opens the scene of the request and appends the notes of the import to `notes`.
TEV2_LOADER::Status OpenScene(ExportRequest& request, std::vector<std::string>& notes);

/// Makes the take current and selects the models that the request names. Fails also for a scene without models.
TEV2_LOADER::Status PrepareScene(const ExportRequest& request);

/// What the rules need to know about the open scene.
tev2_exporter::SceneFacts FactsOf(const ExportRequest& request);

/// Makes read-only files among the targets writable.
TEV2_LOADER::Status MakeTargetsWritable(const std::vector<tev2_exporter::FilePlan>& files);

/// Success without an objection, otherwise failure with the scene's path in front of the reason.
TEV2_LOADER::Status StatusOf(const ExportRequest& request, const tev2_exporter::Objection& objection);

} // namespace tv2
