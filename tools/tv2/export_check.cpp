#include "tools/tv2/export_check.h"

#include "exporter/base/text.h"
#include "tev2_loader/walk.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"

#include <algorithm>

namespace tv2
{

using namespace TEV2_LOADER;
using tev2_exporter::ExportPlan;
using tev2_exporter::FilePlan;

namespace
{

/// Adds why a file of the size that was planned cannot be written now, where that can be found out.
std::string WithReason(const std::string& text, const FilePlan& planned, const ExportPlan& plan)
{
    constexpr double kHeadings = 4096.0; // information, environment and chunk headers
    constexpr double kNodeHeading = 256.0;
    const double bytes = tev2_exporter::SampledBytes(planned.range, plan.nodes, plan.cameras) + kHeadings +
                         kNodeHeading * static_cast<double>(plan.nodes);
    const std::string reason = WhyNotWritable(planned.path, static_cast<std::uint64_t>(bytes));
    return reason.empty() ? text : text + ": " + reason;
}

/// Counts keys and compares their times with the instants of the plan.
class KeyCounter : public TEV2_FIELD_VISITOR
{
public:
    KeyCounter(const TEV2& scene, const FilePlan& planned, ExportedFile& result)
        : scene_(scene), instants_(tev2_exporter::SampledInstants(planned.range)), result_(result)
    {
        std::ranges::sort(instants_); // a range may be reversed
    }

    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        const bool is_camera = field.record.starts_with("camera"); // or the switcher
        if (track == nullptr || (!is_camera && field.chunkId != kMatrixHierarchyChunk))
            return;
        ++tracks_;
        const std::vector<float>& times = track->m_times;
        result_.keys_kept += times.size();
        if (is_camera && times.size() != instants_.size())
        {
            Complain(field.Path() + " has " + CountOf(times.size(), "key", "keys") + " for " +
                     CountOf(instants_.size(), "sample", "samples"));
        }
        if (times.empty())
            Complain(field.Path() + " has no key");
        for (const float time : times)
        {
            if (!std::ranges::binary_search(instants_, time))
            {
                Complain(field.Path() + " has a key at " + FloatText(time) + " s, which was not sampled");
                break;
            }
        }
    }

    std::size_t Samples() const { return instants_.size(); }

    /// Every track got a key for every sample, except those of the root inserted above selected models.
    void Finish()
    {
        const auto& nodes = scene_.matrixHierarchy.nodes;
        const bool own_root = !nodes.empty() && nodes[0].name.Text() == kInsertedRootName;
        const std::uint64_t single = own_root ? 2 : 0;
        result_.keys_sampled = (tracks_ - std::min(tracks_, single)) * instants_.size() + single;
    }

private:
    void Complain(const std::string& what)
    {
        if (result_.error.empty())
            result_.error = "not what was exported: " + what;
    }

    const TEV2& scene_;
    std::vector<float> instants_;
    ExportedFile& result_;
    std::uint64_t tracks_ = 0;
};

std::string CompareWithPlan(const LoadedFile& file, const FilePlan& planned, const ExportPlan& plan)
{
    const TEV2& scene = *file.scene;
    const std::u16string line = tev2_exporter::Widen(std::string(kFileNameLine) + planned.named + "\r\n");
    if (scene.information.infoText.Text().find(line) == std::u16string::npos)
        return "its information does not name it";
    if (scene.matrixHierarchy.nodes.size() != plan.nodes)
    {
        return "it has " + CountOf(scene.matrixHierarchy.nodes.size(), "node", "nodes") + " instead of " +
               CountText(plan.nodes);
    }
    if (scene.cameras.size() != plan.cameras)
    {
        return "it has " + CountOf(scene.cameras.size(), "camera", "cameras") + " instead of " +
               CountText(plan.cameras);
    }
    const TEV2_FLOAT32_RANGE& range = scene.environment.timeRange;
    if (range.minimum != planned.range.start || range.maximum != planned.range.end)
    {
        return "it spans " + FloatText(range.minimum) + " to " + FloatText(range.maximum) + " s instead of " +
               FloatText(planned.range.start) + " to " + FloatText(planned.range.end) + " s";
    }
    return {};
}

/// Why a file that was written is not whole or not what was planned; empty when it is.
std::string ReadBack(const FilePlan& planned, const ExportPlan& plan, ExportedFile& result)
{
    LoadedFile file;
    if (const Status read = ReadFile(planned.path, file); !read)
        return "cannot be read back: " + read.Reason();
    const auto at = [](const TEV2_LOAD_FINDING& finding)
    { return std::string(CodeName(finding.code)) + " at byte " + std::to_string(finding.offset); };
    const std::vector<TEV2_LOAD_FINDING>& findings = file.report.findings;
    if (!file.loaded)
    {
        return WithReason("is incomplete" + (findings.empty() ? "" : " (" + at(findings.back()) + ")"),
                          planned, plan);
    }
    if (!findings.empty())
        return "is not sound: " + at(findings.front());
    if (const std::string difference = CompareWithPlan(file, planned, plan); !difference.empty())
        return "not what was exported: " + difference;
    KeyCounter keys(*file.scene, planned, result);
    WalkScene(*file.scene, file.image.data(), file.report, keys);
    keys.Finish();
    result.nodes = file.scene->matrixHierarchy.nodes.size();
    result.cameras = file.scene->cameras.size();
    result.samples = keys.Samples();
    return result.error;
}

} // namespace

ExportedFile CheckExportedFile(const FilePlan& planned, const ExportPlan& plan, const FileStamp& before)
{
    ExportedFile result;
    const FileStamp now = FileStamp::Of(planned.path);
    if (planned.kept)
    {
        result.kept = result.skipped = true;
        result.reason = kItExists;
    }
    else if (!now.exists)
    {
        result.error = WithReason("was not written", planned, plan);
    }
    else if (!now.regular)
    {
        result.error = WithReason("cannot be read back, it is not a file", planned, plan);
    }
    else if (now == before)
    {
        result.kept = true;
        result.skipped = now.read_only;
        result.error = now.read_only ? "skipped: it is read-only, kept the old file (--yes overwrites it)"
                                     : WithReason("was not written, kept the old file", planned, plan);
    }
    else
    {
        result.bytes = static_cast<std::uint64_t>(now.size);
        result.error = ReadBack(planned, plan, result);
    }
    return result;
}

ExportedFile PlannedFile(const FilePlan& planned, const ExportPlan& plan, bool overwrite_read_only)
{
    ExportedFile result;
    if (planned.kept)
        result.reason = kItExists;
    else if (!overwrite_read_only && FileStamp::Of(planned.path).read_only)
        result.error = "would be skipped: it is read-only (--yes overwrites it)";
    result.nodes = plan.nodes;
    result.cameras = plan.cameras;
    result.samples = tev2_exporter::SampledInstants(planned.range).size();
    return result;
}

} // namespace tv2
