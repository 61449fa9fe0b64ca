#pragma once

#include "host/import/base/import_options.h"
#include "tools/tv2/export_check.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/key_reduction_cost.h"

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// What the export verb prints after a run.
struct ExportReport
{
    struct File
    {
        tev2_exporter::FilePlan planned;
        ExportedFile exported;
        double rate = 0.0;                           ///< samples a second
        std::optional<double> seconds;               ///< it took, where measured
        std::optional<KeyReductionCost> reduction{}; ///< where asked for
    };

    std::vector<std::string> notes;              ///< of the import
    std::string error;                           ///< why nothing was started; empty otherwise
    std::string code;                            ///< of the rule that refused it, where one did
    bool dry_run = false;                        ///< the files are those that would be written
    std::vector<mobu_host::SourceBytes> sources; ///< what was read
    std::optional<bool> cancelled;               ///< whether nothing was exported, with the dialog
    std::string why_cancelled;                   ///< where the dialog did it, not the user
    std::vector<File> files;
};

/// A line for each file that came out, and the notes, in lines of a terminal of `columns` columns; 0 where it is none.
void PrintReport(std::ostream& out, const ExportReport& report, std::size_t columns);

/// The same as one object, with what went wrong.
Json ReportJson(const std::string& scene, const ExportReport& report);

} // namespace tv2
