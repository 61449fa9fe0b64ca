#pragma once

#include "exporter/rules/rules.h"
#include "host/import/base/import_options.h"
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
    std::vector<std::string> takes;  ///< names and wildcards; empty: the current one
    std::vector<std::string> select; ///< long names; empty: the whole scene
    tev2_exporter::ExportQuestion question;
    bool overwrite_read_only = false;
    bool dry_run = false;
    std::vector<std::string>
        source_files; ///< that the scene was read from besides the scene file; OpenScene sets them
    bool hash_sources = false;
    std::vector<mobu_host::SourceBytes>
        sources; ///< what was read of the scene and of them, where they are hashed; OpenScene sets them
    std::string refusal; ///< the code of the objection, once a Status failed for one; empty otherwise
};

/// The code of a refusal: no take has a name that was asked for.
inline constexpr const char* kNoSuchTake = "no-such-take";

/// Applies the rules that need no scene.
TEV2_LOADER::Status CheckRequest(ExportRequest& request);

/// Opens the scene of the request and appends the notes of the import to `notes`.
TEV2_LOADER::Status OpenScene(ExportRequest& request, std::vector<std::string>& notes);

/// Chooses the takes and selects the models that the request names. A single take by its name becomes the current one;
/// several, or those of a wildcard, go into the question. Appends notes on names that no take has. Fails when no take
/// is left, and for a scene without models.
TEV2_LOADER::Status PrepareScene(ExportRequest& request, std::vector<std::string>& notes);

/// What the rules need to know about the open scene.
tev2_exporter::SceneFacts FactsOf(const ExportRequest& request);

/// Makes the folders of the files that are missing.
TEV2_LOADER::Status MakeFolders(const std::vector<tev2_exporter::FilePlan>& files);

/// Makes read-only files among the targets writable.
TEV2_LOADER::Status MakeTargetsWritable(const std::vector<tev2_exporter::FilePlan>& files);

/// Success without an objection, otherwise failure with the scene's path in front of the reason, and its code in the
/// request.
TEV2_LOADER::Status StatusOf(ExportRequest& request, const tev2_exporter::Objection& objection);

} // namespace tv2
