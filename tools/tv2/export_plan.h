#pragma once

#include "exporter/sampling/sampling_range.h"
#include "tools/tv2/export_request.h"

#include <fbsdk/fbsdk.h>

#include <cstddef>
#include <string>
#include <vector>

namespace tv2
{

/// One file that the export should write.
struct PlannedFile
{
    FBTake* take = nullptr;
    std::string take_name;
    std::string path;
    std::string named; ///< the same file, as the exporter names it
    tev2_exporter::SamplingRange range;
    std::vector<float> instants; ///< at which the take is sampled, start and end included
};

/// What an export of the scene that is open will do, by the rules of exporter/rules.
struct ExportPlan
{
    double rate = 0.0; ///< samples a second, as asked for
    int start_frame =
        0; ///< frames as the exporter takes them; without effect when the whole take is exported
    int end_frame = 0;
    bool whole_take = true;
    std::size_t nodes = 0; ///< in each file
    std::size_t cameras = 0;
    std::vector<PlannedFile> files;
    std::vector<std::string> notes; ///< what will be rounded, cut or left out
};

/// Opens the scene of the request and records there which files it was read from. Empty, or why that failed; `notes`
/// receives those of the import.
std::string OpenScene(ExportRequest& request, std::vector<std::string>& notes);

/// Makes the take current and selects the models that the request names in the scene that is open, and counts what
/// every file will hold. Empty, or why there is nothing to export.
std::string PrepareScene(const ExportRequest& request, ExportPlan& plan);

/// The output as it is handed to the exporter (PathForExporter in exporter/rules).
std::string OutputForExporter(const ExportRequest& request);

/// The files that the takes of the request go into, in order of the takes; ranges and instants are left open.
std::vector<PlannedFile> NameFiles(const ExportRequest& request);

/// Prepares the scene and plans the export of the scene that is
/// open. Empty when it can go ahead; otherwise why not, for the user. Changes no file.
std::string PlanExport(const ExportRequest& request, ExportPlan& plan);

/// What of the request can be judged without the scene; empty when nothing speaks against it.
std::string CheckRequest(const ExportRequest& request);

/// Looks at the places where the planned files go. Empty when they can be written and none is the scene file itself;
/// otherwise why not.
std::string CheckTargets(const ExportRequest& request, const ExportPlan& plan);

/// Why the takes and frames of the request cannot be sampled at that rate; empty when they can.
std::string WhyNotSampled(const ExportRequest& request, double rate);

/// Makes read-only files that stand in the way writable. Empty, or what went wrong.
std::string MakeTargetsWritable(const ExportPlan& plan);

/// A reason not to export, with the scene's path in front; empty when there is none.
std::string OfScene(const ExportRequest& request, const std::string& reason);

} // namespace tv2
