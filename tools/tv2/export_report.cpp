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
        const PlannedFile& planned = entry.planned;
        const ExportedFile& file = entry.exported;
        if (!file.error.empty())
        {
            continue;
        }
        text << Printable(planned.path) << ": take \"" << OneLine(planned.take_name) << "\", "
             << CountOf(file.nodes, "node", "nodes") << ", " << CountOf(file.cameras, "camera", "cameras")
             << ", " << CountOf(file.samples, "sample", "samples") << " (" << ShortNumber(entry.rate)
             << " a second), " << CountText(file.keys_sampled) << " keys sampled, "
             << CountText(file.keys_kept) << " kept, " << CountText(file.bytes) << " bytes";
        if (entry.seconds)
        {
            text << ", " << std::fixed << std::setprecision(2) << *entry.seconds << " s";
        }
        text << '\n';
    }
    out << text.str();
    PrintNotes(out, report.notes, columns);
}

namespace
{

/// A whole rate as an integer, another with the digits of single precision.
nlohmann::ordered_json RateJson(double rate)
{
    const auto whole = static_cast<std::int64_t>(rate);
    return static_cast<double>(whole) == rate
               ? nlohmann::ordered_json(whole)
               : nlohmann::ordered_json::parse(FloatText(static_cast<float>(rate)));
}

} // namespace

nlohmann::ordered_json ReportJson(const std::string& scene, const ExportReport& report)
{
    nlohmann::ordered_json json = {{"scene", scene}, {"notes", report.notes}};
    if (!report.error.empty())
    {
        json["error"] = report.error;
    }
    if (report.cancelled)
    {
        json["cancelled"] = *report.cancelled;
        if (!report.why_cancelled.empty())
        {
            json["reason"] = report.why_cancelled;
        }
    }
    json["files"] = nlohmann::ordered_json::array();
    for (const ExportReport::File& file : report.files)
    {
        const PlannedFile& planned = file.planned;
        const ExportedFile& exported = file.exported;
        nlohmann::ordered_json entry = {
            {"path", planned.path}, {"take", planned.take_name}, {"ok", exported.error.empty()}};
        if (!exported.error.empty())
        {
            entry["error"] = exported.error;
            entry["kept"] = exported.kept;
            entry["skipped"] = exported.skipped;
        }
        else
        {
            entry["start"] = planned.range.start;
            entry["end"] = planned.range.end;
            entry["rate"] = RateJson(file.rate);
            entry["nodes"] = exported.nodes;
            entry["cameras"] = exported.cameras;
            entry["samples"] = exported.samples;
            entry["keysSampled"] = exported.keys_sampled;
            entry["keysKept"] = exported.keys_kept;
            entry["bytes"] = exported.bytes;
            if (file.seconds)
            {
                entry["seconds"] = *file.seconds;
            }
        }
        json["files"].push_back(std::move(entry));
    }
    return json;
}

} // namespace tv2
