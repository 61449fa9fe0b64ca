#include "tools/tv2/export_report.h"

#include "tools/tv2/notes.h"
#include "tools/tv2/text.h"

#include <iomanip>
#include <sstream>

namespace tv2
{

void PrintReport(std::ostream& out, const ExportReport& report, std::size_t columns)
{
    std::ostringstream text;
    for (const ExportReport::File& entry : report.files)
    {
        const tev2_exporter::FilePlan& planned = entry.planned;
        const ExportedFile& file = entry.exported;
        if (!file.error.empty())
            continue;
        if (report.dry_run || planned.kept)
        {
            const std::string would = report.dry_run ? "would be " : "";
            text << Printable(planned.path) << ": " << would
                 << (planned.kept ? "kept, " + file.reason : "written") << ": take \""
                 << OneLine(planned.take_name) << "\"\n";
            continue;
        }
        text << Printable(planned.path) << ": take \"" << OneLine(planned.take_name) << "\", "
             << CountOf(file.nodes, "node", "nodes") << ", " << CountOf(file.cameras, "camera", "cameras")
             << ", " << CountOf(file.samples, "sample", "samples") << " (" << ShortNumber(entry.rate)
             << " a second), " << CountText(file.keys_sampled) << " keys sampled, "
             << CountText(file.keys_kept) << " kept, " << CountText(file.bytes) << " bytes";
        if (entry.seconds)
            text << ", " << std::fixed << std::setprecision(2) << *entry.seconds << " s";
        text << '\n';
        if (entry.reduction)
            PrintCost(text, *entry.reduction);
    }
    out << text.str();
    PrintNotes(out, report.notes, columns);
}

namespace
{

/// Of a dry run.
Json PlannedJson(const ExportReport::File& file)
{
    const std::string& why_not = file.exported.error.empty() ? file.exported.reason : file.exported.error;
    Json json = {
        {"output", file.planned.path}, {"take", file.planned.take_name}, {"wouldWrite", why_not.empty()}};
    if (!why_not.empty())
        json["reason"] = why_not;
    if (file.planned.kept)
        json["kept"] = true;
    json["start"] = JsonFloat(file.planned.range.start);
    json["end"] = JsonFloat(file.planned.range.end);
    json["rate"] = JsonFloat(static_cast<float>(file.rate));
    json["nodes"] = file.exported.nodes;
    json["cameras"] = file.exported.cameras;
    json["samples"] = file.exported.samples;
    return json;
}

Json FileJson(const ExportReport::File& file)
{
    const ExportedFile& exported = file.exported;
    Json json = {
        {"output", file.planned.path}, {"take", file.planned.take_name}, {"ok", exported.error.empty()}};
    if (file.planned.kept)
    {
        json["kept"] = json["skipped"] = true;
        json["reason"] = exported.reason;
        return json;
    }
    if (!exported.error.empty())
    {
        json["error"] = exported.error;
        json["kept"] = exported.kept;
        json["skipped"] = exported.skipped;
        return json;
    }
    json["start"] = JsonFloat(file.planned.range.start);
    json["end"] = JsonFloat(file.planned.range.end);
    json["rate"] = JsonFloat(static_cast<float>(file.rate));
    json["nodes"] = exported.nodes;
    json["cameras"] = exported.cameras;
    json["samples"] = exported.samples;
    json["keysSampled"] = exported.keys_sampled;
    json["keysKept"] = exported.keys_kept;
    json["bytes"] = exported.bytes;
    if (file.seconds)
        json["seconds"] = *file.seconds;
    if (file.reduction)
        json["keyReduction"] = CostJson(*file.reduction);
    return json;
}

} // namespace

Json ReportJson(const std::string& scene, const ExportReport& report)
{
    Json json = {{"file", scene}, {"notes", report.notes}};
    if (!report.error.empty())
        json["error"] = report.error;
    if (!report.code.empty())
        json["code"] = report.code;
    if (report.dry_run)
        json["dryRun"] = true;
    if (report.cancelled)
    {
        json["cancelled"] = *report.cancelled;
        if (!report.why_cancelled.empty())
            json["reason"] = report.why_cancelled;
    }
    json["files"] = Json::array();
    for (const ExportReport::File& file : report.files)
        json["files"].push_back(report.dry_run ? PlannedJson(file) : FileJson(file));
    for (const mobu_host::SourceBytes& source : report.sources)
        json["sources"].push_back(
            {{"file", source.path}, {"bytes", source.bytes}, {"sha256", source.sha256}});
    return json;
}

} // namespace tv2
