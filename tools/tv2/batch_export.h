#pragma once

#include "tools/tv2/batch_scenes.h"
#include "tools/tv2/option_row.h"
#include "tools/tv2/verb.h"

#include <optional>
#include <string>
#include <vector>

namespace tv2
{

/// What the command line says of a batch.
struct BatchOptions
{
    BatchQuestion question;
    std::optional<int> jobs; ///< exports at a time; none: the number of processors
    bool newer = false;
    bool dry_run = false;
    bool takes_optional = false; ///< --take names them: a scene without one is skipped
    bool by_dialog = false;      ///< whose script decides on the rest
    bool quiet = false;
    std::string exporter; ///< the path of the module
};

/// "-o", "-j", "--newer", and those of BatchSceneOptions.
std::vector<OptionRow> BatchExportOptions(BatchOptions& options);

/// Exports scenes, each in a process of its own: this command with the options of the run (VerbContext::given). One
/// that fails, crashes or is killed does not stop the others. Ends the program when it is interrupted, without
/// anything half written.
void ExportBatch(const BatchOptions& options, VerbContext& context);

} // namespace tv2
