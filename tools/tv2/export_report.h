#pragma once

#include "tools/tv2/export_check.h"
#include "tools/tv2/export_plan.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// What the export verb tells about a run, once it is over.
struct ExportReport
{
    struct File
    {
        PlannedFile planned;
        ExportedFile exported;
        double rate = 0.0;             ///< samples a second
        std::optional<double> seconds; ///< that it took, where that was measured
    };

    std::vector<std::string> notes; ///< of the import
    std::string error;              ///< why nothing was started; empty otherwise
    std::optional<bool> cancelled;  ///< by the user, where there was one
    std::string why_cancelled;      ///< where that was not the user
    std::vector<File> files;
};

/// A line for each file that came out, and the notes, in lines of a terminal of `columns` columns; 0 where it is none.
void PrintReport(std::ostream& out, const ExportReport& report, std::size_t columns);

/// The same as one object, with what went wrong.
nlohmann::ordered_json ReportJson(const std::string& scene, const ExportReport& report);

} // namespace tv2
