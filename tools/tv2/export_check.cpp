#include "tools/tv2/export_check.h"

#include "exporter/text.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/scene_walk.h"
#include "tools/tv2/text.h"

#include <algorithm>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

/// Adds why a file of the size that was planned cannot be written now, where that can be found out.
std::string WithReason(const std::string& text, const PlannedFile& planned, const ExportPlan& plan)
{
    constexpr double kHeadings = 4096.0; // information, environment and chunk headers
    constexpr double kNodeHeading = 256.0;
    const double bytes = tev2_exporter::SampledBytes(planned.range, plan.nodes, plan.cameras) + kHeadings +
                         kNodeHeading * static_cast<double>(plan.nodes);
    const std::string reason = WhyNotWritable(planned.path, static_cast<std::uint64_t>(bytes));
    return reason.empty() ? text : text + ": " + reason;
}

/// Counts keys and holds their times against the instants of the plan.
class KeyCounter : public SceneVisitor
{
public:
    KeyCounter(const TEV2& scene, const PlannedFile& planned, ExportedFile& result)
        : scene_(scene), planned_(planned), result_(result)
    {
    }

    void VisitTrack(const RecordPlace& place, const TEV2_ANIMATABLE& track) override
    {
        const bool is_camera = place.path.starts_with("camera"); // or the switcher
        if (!is_camera && !place.path.starts_with("matrixHierarchy"))
        {
            return;
        }
        ++tracks_;
        result_.keys_kept += track.m_times.size();
        if (is_camera && track.m_times.size() != planned_.instants.size())
        {
            Complain(place.path + " has " + CountOf(track.m_times.size(), "key", "keys") + " for " +
                     CountOf(planned_.instants.size(), "sample", "samples"));
        }
        if (track.m_times.empty())
        {
            Complain(place.path + " has no key");
        }
        for (const float time : track.m_times)
        {
            if (!std::binary_search(planned_.instants.begin(), planned_.instants.end(), time))
            {
                Complain(place.path + " has a key at " + FloatText(time) + " s, which was not sampled");
                break;
            }
        }
    }

    /// Every track was given a key for every sample, but for the root that the exporter puts above selected models.
    void Finish()
    {
        const auto& nodes = scene_.matrixHierarchy.nodes;
        const bool own_root = !nodes.empty() && nodes[0].name.Text() == kInsertedRootName;
        const std::uint64_t single = own_root ? 2 : 0;
        result_.keys_sampled = (tracks_ - std::min(tracks_, single)) * planned_.instants.size() + single;
    }

private:
    void Complain(const std::string& what)
    {
        if (result_.error.empty())
        {
            result_.error = "not what was exported: " + what;
        }
    }

    const TEV2& scene_;
    const PlannedFile& planned_;
    ExportedFile& result_;
    std::uint64_t tracks_ = 0;
};

std::string CompareWithPlan(const LoadedFile& file, const PlannedFile& planned, const ExportPlan& plan)
{
    const TEV2& scene = *file.scene;
    const std::u16string line = tev2_exporter::Widen(std::string(kFileNameLine) + planned.named + "\r\n");
    if (scene.information.infoText.Text().find(line) == std::u16string::npos)
    {
        return "its information does not name it";
    }
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

} // namespace

ExportedFile CheckExportedFile(const PlannedFile& planned, const ExportPlan& plan, const FileStamp& before)
{
    ExportedFile result;
    const FileStamp now = FileStamp::Of(planned.path);
    if (!now.exists)
    {
        result.error = WithReason("was not written", planned, plan);
        return result;
    }
    if (!now.regular)
    {
        result.error = WithReason("cannot be read back, it is not a file", planned, plan);
        return result;
    }
    if (now == before)
    {
        result.kept = true;
        result.skipped = now.read_only;
        result.error = now.read_only ? "skipped: it is read-only, kept the old file (--yes over-writes it)"
                                     : WithReason("was not written, kept the old file", planned, plan);
        return result;
    }
    result.bytes = static_cast<std::uint64_t>(now.size);

    LoadedFile file;
    std::string error;
    if (!ReadFile(planned.path, file, error))
    {
        result.error = "cannot be read back: " + error;
        return result;
    }
    if (!file.loaded)
    {
        const TEV2_LOAD_FINDING* const finding =
            file.report.findings.empty() ? nullptr : &file.report.findings.back();
        result.error = WithReason(std::string("is incomplete") +
                                      (finding ? std::string(" (") + CodeName(finding->code) + " at byte " +
                                                     std::to_string(finding->offset) + ")"
                                               : std::string()),
                                  planned, plan);
        return result;
    }
    if (!file.report.findings.empty())
    {
        const TEV2_LOAD_FINDING& finding = file.report.findings.front();
        result.error = std::string("is not sound: ") + CodeName(finding.code) + " at byte " +
                       std::to_string(finding.offset);
        return result;
    }
    if (const std::string difference = CompareWithPlan(file, planned, plan); !difference.empty())
    {
        result.error = "not what was exported: " + difference;
        return result;
    }
    result.nodes = file.scene->matrixHierarchy.nodes.size();
    result.cameras = file.scene->cameras.size();
    result.samples = planned.instants.size();
    KeyCounter keys(*file.scene, planned, result);
    WalkScene(*file.scene, file.report, keys);
    keys.Finish();
    return result;
}

} // namespace tv2
