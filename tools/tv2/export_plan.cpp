#include "tools/tv2/export_plan.h"

#include "exporter/file_naming.h"
#include "exporter/numbers.h"
#include "exporter/text.h"
#include "tev2_loader/serialisation/file_writer.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>

using tev2_exporter::Narrow;
using tev2_exporter::SamplingRange;
using tev2_exporter::Widen;

namespace
{

/// The writer keeps no more of a path.
constexpr std::size_t kMostNamesShown = 12;

/// Chunk sizes and array counts end here.
constexpr double kLargestFile = 2147483648.0;

std::string Quoted(const std::string& text)
{
    return '"' + OneLine(text) + '"';
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), kMostNamesShown); ++i)
    {
        list += (i == 0 ? "" : ", ") + Quoted(names[i]);
    }
    if (names.size() > kMostNamesShown)
    {
        list += " and " + CountText(names.size() - kMostNamesShown) + " more (tv2 scene shows them all)";
    }
    return list;
}

std::vector<FBTake*> TakesOfScene()
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    std::vector<FBTake*> list;
    list.reserve(static_cast<std::size_t>(takes.GetCount()));
    for (int i = 0; i < takes.GetCount(); ++i)
    {
        list.push_back(takes[i]);
    }
    return list;
}

std::string NameOf(FBTake& take)
{
    return static_cast<const char*>(take.Name);
}

std::string LongNameOf(FBModel& model)
{
    return static_cast<const char*>(model.LongName);
}

std::string ChooseTake(const std::string& name)
{
    if (name.empty())
    {
        return {};
    }
    std::vector<std::string> names;
    for (FBTake* take : TakesOfScene())
    {
        names.push_back(NameOf(*take));
        if (names.back() == name)
        {
            FBSystem().CurrentTake = take;
            return {};
        }
    }
    return "there is no take " + Quoted(name) + "; the scene has " + Listed(names);
}

std::string SelectModels(const std::vector<std::string>& wanted)
{
    const std::vector<FBModel*> models = mobu_host::ModelsInPreOrder();
    for (const std::string& name : wanted)
    {
        const auto found = std::find_if(models.begin(), models.end(),
                                        [&name](FBModel* model) { return LongNameOf(*model) == name; });
        if (found == models.end())
        {
            std::vector<std::string> names;
            names.reserve(models.size());
            for (FBModel* model : models)
            {
                names.push_back(LongNameOf(*model));
            }
            std::vector<std::string> meant = names;
            std::erase_if(meant,
                          [&name](const std::string& long_name) { return !long_name.ends_with(":" + name); });
            return "there is no model " + Quoted(name) +
                   (meant.empty() ? "" : "; models of that short name: " + Listed(meant)) +
                   "; the scene has " + Listed(names);
        }
        (*found)->Selected = true;
    }
    return {};
}

void CountNodes(ExportPlan& plan)
{
    std::vector<FBModel*> tops;
    const std::vector<FBModel*> models = mobu_host::ModelsInPreOrder();
    for (FBModel* model : models)
    {
        bool below_selected = false;
        for (FBModel* up = model->Parent; up != nullptr; up = up->Parent)
        {
            below_selected = below_selected || up->Selected;
        }
        if (model->Selected && !below_selected)
        {
            tops.push_back(model);
        }
    }
    if (tops.empty())
    {
        tops.push_back(models.front());
    }
    plan.nodes = tops.front() == models.front() ? 0 : 1; // a root of the exporter's own above selected models
    for (FBModel* top : tops)
    {
        for (FBModel* model : mobu_host::ModelsInPreOrder(top))
        {
            ++plan.nodes;
            plan.cameras += model->Is(FBCamera::TypeInfo) ? 1 : 0;
        }
    }
}

/// The window of a take as the exporter forms it.
SamplingRange RangeOf(FBTake& take, const ExportPlan& plan, double transport_rate)
{
    const FBTimeSpan span = take.LocalTimeSpan;
    const SamplingRange whole = tev2_exporter::WholeTake(
        {span.GetStart().GetSecondDouble(), span.GetStop().GetSecondDouble(), transport_rate},
        static_cast<float>(plan.fps));
    if (plan.whole_take)
    {
        return whole;
    }
    return tev2_exporter::CustomRange(whole, tev2_exporter::SecondsOfKey(plan.start_frame, transport_rate),
                                      tev2_exporter::SecondsOfKey(plan.end_frame, transport_rate));
}

std::string CheckRange(const PlannedFile& file)
{
    const SamplingRange& range = file.range;
    const std::string of_take = " of take " + Quoted(file.take_name);
    if (range.start > range.end)
    {
        return "the start (" + FloatText(range.start) + " s) is after the end (" + FloatText(range.end) +
               " s)" + of_take + "; a range is held to the take it cuts from";
    }
    if (!tev2_exporter::TimeAdvances(range))
    {
        return "at " + FloatText(range.rate) + " samples a second the time does not advance: a step of " +
               FloatText(1.0f / range.rate) + " s is lost in the single precision of " +
               FloatText(range.end) + " s" + of_take;
    }
    return {};
}

/// Keys that do nothing are left out of a file, but what is sampled must fit first.
std::string CheckSize(const PlannedFile& file, const ExportPlan& plan)
{
    constexpr double kNodeBytes =
        16.0 + 20.0; // a sample of a translation and one of a rotation, times included
    constexpr double kCameraBytes = 8.0 + 12.0; // field of view, clip range
    const double rate = static_cast<double>(file.range.rate);
    const double samples =
        std::floor((static_cast<double>(file.range.end) - static_cast<double>(file.range.start)) * rate) +
        1.0;
    const double bytes = samples * (kNodeBytes * static_cast<double>(plan.nodes) +
                                    kCameraBytes * static_cast<double>(plan.cameras));
    if (bytes < kLargestFile)
    {
        return {};
    }
    return std::to_string(plan.fps) +
           " samples a second are too many: " + CountText(static_cast<std::uint64_t>(samples)) +
           " samples of " + CountOf(plan.nodes, "node", "nodes") + " and " +
           CountOf(plan.cameras, "camera", "cameras") + " are about " +
           CountText(static_cast<std::uint64_t>(bytes)) + " bytes, a file holds less than " +
           CountText(static_cast<std::uint64_t>(kLargestFile)) + "; take " + Quoted(file.take_name);
}

bool TakeNamesTheFile(const ExportRequest& request)
{
    return request.all_takes || request.output.substr(request.output.find_last_of("/\\") + 1) == ".tv2";
}

std::string CheckNames(const ExportRequest& request, const std::vector<PlannedFile>& files)
{
    std::map<std::string, const PlannedFile*> seen;
    for (const PlannedFile& file : files)
    {
        if (TakeNamesTheFile(request) &&
            (file.take_name.empty() || file.take_name.find_first_of("/\\") != std::string::npos))
        {
            return "no file can be named after take " + Quoted(file.take_name);
        }
        if (file.path.size() > TEV2_LOADER::kMostPathBytes)
        {
            return "the path " + Quoted(file.path) + " has " + std::to_string(file.path.size()) +
                   " bytes; at most " + std::to_string(TEV2_LOADER::kMostPathBytes) + " can be written to";
        }
        const auto [other, is_new] = seen.emplace(file.path, &file);
        if (!is_new)
        {
            return "takes " + Quoted(other->second->take_name) + " and " + Quoted(file.take_name) +
                   " would both be written to " + Quoted(file.path);
        }
    }
    return {};
}

} // namespace

std::string CheckRequest(const ExportRequest& request)
{
    if (!request.output.ends_with(".tv2"))
    {
        return "the output " + Quoted(request.output) + " does not end in .tv2";
    }
    if (request.output.size() > TEV2_LOADER::kMostPathBytes)
    {
        return "the output path has " + std::to_string(request.output.size()) + " bytes; at most " +
               std::to_string(TEV2_LOADER::kMostPathBytes) + " can be written to";
    }
    if (request.fps && *request.fps <= 0)
    {
        return "a rate of " + std::to_string(*request.fps) +
               " samples a second exports nothing; --fps takes 1 or more";
    }
    if (request.start_frame && request.end_frame && *request.start_frame > *request.end_frame)
    {
        return "the start frame " + std::to_string(*request.start_frame) + " is after the end frame " +
               std::to_string(*request.end_frame);
    }
    return {};
}

std::string PrepareScene(const ExportRequest& request, ExportPlan& plan)
{
    if (mobu_host::ModelsInPreOrder().size() < 2)
    {
        return "the scene has no models";
    }
    for (const std::string& reason : {ChooseTake(request.take), SelectModels(request.select)})
    {
        if (!reason.empty())
        {
            return reason;
        }
    }
    CountNodes(plan);
    return {};
}

std::vector<PlannedFile> NameFiles(const ExportRequest& request)
{
    FBTake* const current = FBSystem().CurrentTake;
    std::vector<PlannedFile> files;
    std::vector<std::u16string> take_names;
    for (FBTake* take : request.all_takes ? TakesOfScene() : std::vector<FBTake*>{current})
    {
        PlannedFile& file = files.emplace_back();
        file.take = take;
        file.take_name = NameOf(*take);
        take_names.push_back(Widen(file.take_name));
    }
    const std::vector<std::u16string> paths = tev2_exporter::OutputFileNames(
        Widen(request.output), take_names, request.all_takes, request.spaces_to_underscores);
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        files[i].path = Narrow(paths[i]);
    }
    return files;
}

std::string PlanExport(const ExportRequest& request, ExportPlan& plan)
{
    if (std::string reason = PrepareScene(request, plan); !reason.empty())
    {
        return reason;
    }
    const double transport_rate = FBPlayerControl().GetTransportFpsValue();
    plan.fps = request.fps.value_or(std::max(1, tev2_exporter::ToInt32(std::round(transport_rate))));
    plan.whole_take = !request.start_frame && !request.end_frame;
    // An end that is left open is the take's own: the exporter holds a range to the take.
    plan.start_frame = request.start_frame.value_or(std::numeric_limits<int>::min());
    plan.end_frame = request.end_frame.value_or(std::numeric_limits<int>::max());

    plan.files = NameFiles(request);
    for (PlannedFile& file : plan.files)
    {
        file.range = RangeOf(*file.take, plan, transport_rate);
        if (std::string reason = CheckRange(file); !reason.empty())
        {
            return reason;
        }
        if (std::string reason = CheckSize(file, plan); !reason.empty())
        {
            return reason;
        }
        file.instants.push_back(file.range.start);
        for (tev2_exporter::RegularInstants regular(file.range); regular.Next();)
        {
            file.instants.push_back(regular.Time());
        }
        file.instants.push_back(file.range.end);
    }
    return CheckNames(request, plan.files);
}

std::string CheckTargets(const ExportRequest& request, const ExportPlan& plan)
{
    const FileStamp scene = FileStamp::Of(request.scene);
    for (const PlannedFile& file : plan.files)
    {
        const auto because = [&file](int error)
        { return "cannot write " + Quoted(file.path) + ": " + std::strerror(error); };
        std::string folder = std::filesystem::path(file.path).parent_path().string();
        folder = folder.empty() ? "." : folder;
        const FileStamp place = FileStamp::Of(folder);
        if (!place.exists || !place.folder)
        {
            return because(place.exists ? ENOTDIR : place.error) + ": " + Quoted(folder);
        }
        const FileStamp target = FileStamp::Of(file.path);
        if (!target.exists)
        {
            if (target.error != ENOENT)
            {
                return because(target.error);
            }
            if (const int obstacle = ObstacleToWriting(folder); obstacle != 0)
            {
                return because(obstacle) + ": " + Quoted(folder);
            }
            continue;
        }
        if (target.folder)
        {
            return because(EISDIR);
        }
        if (target.IsSameFile(scene))
        {
            return "cannot write " + Quoted(file.path) + ": it is the scene file itself";
        }
        const int obstacle = target.read_only ? 0 : ObstacleToWriting(file.path);
        if (obstacle != 0)
        {
            return because(obstacle);
        }
    }
    return {};
}

std::string MakeTargetsWritable(const ExportPlan& plan)
{
    for (const PlannedFile& file : plan.files)
    {
        const int error = FileStamp::Of(file.path).read_only ? MakeWritable(file.path) : 0;
        if (error != 0)
        {
            return "cannot make " + Quoted(file.path) + " writable: " + std::strerror(error);
        }
    }
    return {};
}

std::string OfScene(const ExportRequest& request, const std::string& reason)
{
    return reason.empty() ? std::string() : OneLine(request.scene) + ": " + reason;
}
