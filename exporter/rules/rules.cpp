#include "exporter/rules/rules.h"

#include "exporter/file_naming.h"
#include "exporter/rules/file_facts.h"
#include "exporter/rules/file_name_rules.h"
#include "exporter/rules/message_text.h"
#include "exporter/rules/sampling_rate.h"
#include "exporter/text.h"
#include "tev2_loader/detail/file_system.h"
#include "tev2_loader/io/file_writer.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>

namespace tev2_exporter
{
namespace
{

constexpr std::string_view kExtension = ".tv2";

/// Samples a second; far beyond any motion, and short of what fills the memory with a scene of a few seconds.
constexpr float kHighestRate = 1.0e6f;

/// Everything that a rule looks at.
struct Case
{
    const ExportQuestion& question;
    const SceneFacts* scene; ///< null only for rules that need no scene
    RulesPlan& plan;
};

std::string Option(const ExportQuestion& question, std::string name)
{
    if (question.wording == ExportQuestion::Wording::kCommandLine)
    {
        return "--" + name;
    }
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

bool FoldsCase(const ExportQuestion& question)
{
    return question.file_names == ExportQuestion::FileNames::kOfThisSystem
               ? kSystemFoldsCase
               : question.file_names == ExportQuestion::FileNames::kWindows;
}

bool HasWindowsNames(const ExportQuestion& question)
{
#if defined(_WIN32)
    return question.file_names != ExportQuestion::FileNames::kPosix;
#else
    return question.file_names == ExportQuestion::FileNames::kWindows;
#endif
}

const std::string& TakeName(const Case& c, const FilePlan& file)
{
    return c.scene->takes[file.take].name;
}

TakeTimes TimesOf(const Case& c, const FilePlan& file)
{
    const SceneTake& take = c.scene->takes[file.take];
    return {take.start, take.stop, c.scene->transport_rate};
}

/// "frames 0 to 25 (0 to 1 s)"
std::string FramesText(const TakeTimes& take, const SamplingRange& range)
{
    return "frames " + std::to_string(FrameAt(take.start, take.transport_rate)) + " to " +
           std::to_string(FrameAt(take.stop, take.transport_rate)) + " (" + NumberText(range.start) + " to " +
           NumberText(range.end) + " s)";
}

// ---- rules about the question alone

Objection EndsInTv2(const Case& c)
{
    if (c.question.path.ends_with(kExtension))
    {
        return {};
    }
    return {"no-tv2-name", "the output " + Quoted(c.question.path) + " does not end in .tv2"};
}

Objection TooLong(const std::string& path)
{
    if (path.size() <= TEV2_LOADER::kMostPathBytes)
    {
        return {};
    }
    return {"path-too-long", "the path " + Quoted(path) + " has " + std::to_string(path.size()) +
                                 " bytes; at most " + std::to_string(TEV2_LOADER::kMostPathBytes) +
                                 " can be written to"};
}

Objection PathFits(const Case& c)
{
    return TooLong(c.question.path);
}

Objection RateCanBeRead(const Case& c)
{
    const std::string& text = c.question.rate;
    const double scene_rate = c.scene != nullptr ? c.scene->transport_rate : 1.0;
    const std::optional<double> rate = RateOfText(text, scene_rate);
    const std::string fps = Option(c.question, "fps");
    if (!rate)
    {
        return {"rate-unreadable", fps + " " + Quoted(text) + " is no rate: give " + kRatesThatAreUnderstood};
    }
    c.plan.rate = *rate;
    const auto sampled = static_cast<float>(*rate);
    if (sampled > 0.0f && std::isfinite(1.0f / sampled) && sampled <= kHighestRate)
    {
        return {};
    }
    return {"rate-out-of-range", "a rate of " + NumberText(*rate) + " samples a second is out of range; " +
                                     fps + " takes numbers above 0 and up to " +
                                     CountText(static_cast<std::uint64_t>(kHighestRate))};
}

Objection RateCanBePassedOn(const Case& c)
{
    if (!c.question.whole_rates_only || IsWholeRate(c.plan.rate) || c.scene == nullptr)
    {
        return {};
    }
    return {"rate-fractional",
            "a script can start exports at whole rates alone, and " + NumberText(c.plan.rate) +
                " is not whole: use \"Custom FPS\" in the dialog of the export menu, or give " +
                Option(c.question, "fps") + " a whole number"};
}

Objection RangeGoesForward(const Case& c)
{
    const std::optional<std::int32_t>& start = c.question.start_frame;
    const std::optional<std::int32_t>& end = c.question.end_frame;
    if (!start || !end || *start <= *end)
    {
        return {};
    }
    return {"range-reversed",
            "the start frame " + std::to_string(*start) + " is after the end frame " + std::to_string(*end)};
}

// ---- rules about the scene

Objection SceneIsOpen(const Case& c)
{
    return CheckScene(*c.scene);
}

Objection TakesExist(const Case& c)
{
    c.plan.files = NameFiles(c.question, *c.scene);
    return c.plan.files.empty() ? Objection{"no-take", "no take is current"} : Objection{};
}

/// The samples of a whole export as the exporter forms them.
SamplingRange RangeOf(const Case& c, const FilePlan& file)
{
    const double transport_rate = c.scene->transport_rate;
    const SamplingRange whole = WholeTake(TimesOf(c, file), static_cast<float>(c.plan.rate));
    return c.plan.whole_take ? whole
                             : CustomRange(whole, SecondsOfKey(c.plan.start_frame, transport_rate),
                                           SecondsOfKey(c.plan.end_frame, transport_rate));
}

void SetRanges(const Case& c)
{
    c.plan.whole_take = !c.question.start_frame && !c.question.end_frame;
    // An end that is left open is the take's own: the exporter clamps a range to the take.
    c.plan.start_frame = c.question.start_frame.value_or(std::numeric_limits<std::int32_t>::min());
    c.plan.end_frame = c.question.end_frame.value_or(std::numeric_limits<std::int32_t>::max());
    for (FilePlan& file : c.plan.files)
    {
        file.range = RangeOf(c, file);
    }
}

Objection RangeIsInside(const Case& c)
{
    SetRanges(c);
    for (const FilePlan& file : c.plan.files)
    {
        const TakeTimes take = TimesOf(c, file);
        const SamplingRange whole = WholeTake(take, static_cast<float>(c.plan.rate));
        if (whole.start > whole.end)
        {
            return {"take-reversed", "take " + Quoted(TakeName(c, file)) + " ends before it starts"};
        }
        if (file.range.start <= file.range.end)
        {
            continue;
        }
        const bool late = file.range.start > whole.end;
        return {"range-outside", std::string("the ") + (late ? "start" : "end") + " frame " +
                                     std::to_string(late ? c.plan.start_frame : c.plan.end_frame) + " is " +
                                     (late ? "after the end" : "before the start") + " of take " +
                                     Quoted(TakeName(c, file)) + ", which has " + FramesText(take, whole)};
    }
    return {};
}

Objection TimeMovesOn(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        const SamplingRange& range = file.range;
        if (!TimeAdvances(range))
        {
            return {"time-stands-still", "at " + NumberText(range.rate) +
                                             " samples a second the time does not advance: a step of " +
                                             NumberText(1.0f / range.rate) +
                                             " s is lost in the single precision of " +
                                             NumberText(range.end) + " s; take " + Quoted(TakeName(c, file))};
        }
    }
    return {};
}

/// Keys that do nothing are left out of a file, but what is sampled must fit first.
Objection SamplesFit(const Case& c)
{
    CountNodes(c.scene->models, c.plan);
    for (const FilePlan& file : c.plan.files)
    {
        const SamplingRange& range = file.range;
        const double bytes = SampledBytes(range, c.plan.nodes, c.plan.cameras);
        if (!(bytes < kFileSizeLimit))
        {
            return {"too-many-samples", NumberText(range.rate) + " samples a second are too many: " +
                                            CountText(static_cast<std::uint64_t>(SampleCount(range))) +
                                            " samples of " + CountOf(c.plan.nodes, "node", "nodes") +
                                            " and " + CountOf(c.plan.cameras, "camera", "cameras") +
                                            " are about " + CountText(static_cast<std::uint64_t>(bytes)) +
                                            " bytes, a file holds less than " +
                                            CountText(static_cast<std::uint64_t>(kFileSizeLimit)) +
                                            "; take " + Quoted(TakeName(c, file))};
        }
    }
    return {};
}

// ---- rules about the files

bool TakeNamesTheFile(const ExportQuestion& question)
{
    return question.all_takes || question.path.substr(question.path.find_last_of("/\\") + 1) == kExtension;
}

Objection TakesCanNameFiles(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        const std::string& take = TakeName(c, file);
        if (TakeNamesTheFile(c.question) && (take.empty() || take.find_first_of("/\\") != std::string::npos))
        {
            return {"take-names-no-file", "no file can be named after take " + Quoted(take)};
        }
    }
    return {};
}

Objection NamesFit(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        if (Objection objection = TooLong(file.path))
        {
            return objection;
        }
    }
    return {};
}

Objection NamesAreFiles(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        const std::string reason = HasWindowsNames(c.question) ? WhyNoWindowsFile(file.path) : std::string();
        if (!reason.empty())
        {
            const bool device = !WindowsDevice(file.path).empty();
            return {device ? "device-name" : "bad-character",
                    "cannot write " + Quoted(file.path) + ": " + reason};
        }
    }
    return {};
}

/// Device and inode: what two names of one file have in common.
using Place = std::pair<std::uint64_t, std::uint64_t>;

Place PlaceOf(const FileStamp& stamp)
{
    return {stamp.device, stamp.inode};
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// A file that is not there yet: its folder, and its name in it.
using PlaceOfNew = std::pair<Place, std::string>;

/// Where the file will be that a dangling link leads to, however the link spells its folder.
PlaceOfNew PlaceOfNewFile(const ExportQuestion& question, const std::string& path)
{
    const std::string target = TEV2_LOADER::file_system::Examine(path).path;
    const std::string name = std::filesystem::path(target).filename().string();
    return {PlaceOf(FileStamp::Of(FolderOf(target))), FoldsCase(question) ? FoldCase(name) : name};
}

Objection FilesDiffer(const Case& c)
{
    std::map<std::string, const FilePlan*> names;
    std::map<Place, const FilePlan*> places;
    std::map<PlaceOfNew, const FilePlan*> places_of_new;
    for (const FilePlan& file : c.plan.files)
    {
        const auto both = [&](const FilePlan& other)
        {
            return Objection{
                "same-file",
                "takes " + Quoted(TakeName(c, other)) + " and " + Quoted(TakeName(c, file)) +
                    " would both be written to " + Quoted(file.path) +
                    (other.path == file.path ? "" : ", which is the same file as " + Quoted(other.path))};
        };
        const auto [name, is_new] =
            names.emplace(FoldsCase(c.question) ? FoldCase(file.path) : file.path, &file);
        if (!is_new)
        {
            return both(*name->second);
        }
        const FileStamp stamp = FileStamp::Of(file.path);
        if (stamp.regular && stamp.inode != 0)
        {
            const auto [place, is_first] = places.emplace(PlaceOf(stamp), &file);
            if (!is_first)
            {
                return both(*place->second);
            }
        }
        PlaceOfNew new_place;
        if (!stamp.exists)
        {
            new_place = PlaceOfNewFile(c.question, file.path);
        }
        if (new_place.first.second != 0)
        {
            const auto [place, is_first] = places_of_new.emplace(new_place, &file);
            if (!is_first)
            {
                return both(*place->second);
            }
        }
    }
    return {};
}

Objection CannotWrite(const std::string& path, const char* code, const std::string& because)
{
    return {code, "cannot write " + Quoted(path) + ": " + because};
}

Objection CheckFolder(const std::string& path)
{
    const std::string folder = FolderOf(path);
    const FileStamp place = FileStamp::Of(folder);
    if (place.exists && place.folder)
    {
        return {};
    }
    return CannotWrite(path, "no-folder",
                       std::string(std::strerror(place.exists ? ENOTDIR : place.error)) + ": " +
                           Quoted(folder));
}

Objection CheckPlace(const std::string& path)
{
    const std::string folder = FolderOf(path);
    const FileStamp target = FileStamp::Of(path);
    if (!target.exists && target.error != ENOENT)
    {
        return CannotWrite(path, "not-writable", std::strerror(target.error));
    }
    if (!target.exists)
    {
        const int obstacle = ObstacleToWriting(folder);
        return obstacle == 0 ? Objection{}
                             : CannotWrite(path, "not-writable",
                                           std::string(std::strerror(obstacle)) + ": " + Quoted(folder));
    }
    if (target.folder)
    {
        return CannotWrite(path, "not-a-file", std::strerror(EISDIR));
    }
    if (!target.regular)
    {
        return CannotWrite(path, "not-a-file", "it is a device or a pipe, not a file");
    }
    const int obstacle = target.read_only ? 0 : ObstacleToWriting(path);
    return obstacle == 0 ? Objection{} : CannotWrite(path, "not-writable", std::strerror(obstacle));
}

/// The files that a scene was read from, each examined once.
class SourceFiles
{
public:
    explicit SourceFiles(const std::vector<std::string>& paths)
    {
        for (std::size_t i = 0; i < paths.size(); ++i)
        {
            const FileStamp stamp = FileStamp::Of(paths[i]);
            if (stamp.exists)
            {
                places_.emplace(PlaceOf(stamp), i);
            }
        }
    }

    Objection Check(const std::string& target) const
    {
        const FileStamp stamp = FileStamp::Of(target);
        const auto found = stamp.exists ? places_.find(PlaceOf(stamp)) : places_.end();
        return found == places_.end() ? Objection{}
                                      : CannotWrite(target, "is-the-scene",
                                                    found->second == 0 ? "it is the scene file itself"
                                                                       : "the scene was read from it");
    }

private:
    std::map<Place, std::size_t> places_;
};

Objection TargetsAreFree(const Case& c)
{
    return CheckTargets(c.plan.files, *c.scene);
}

// ---- the table

using Rule = Objection (*)(const Case&);

constexpr Rule kRulesWithoutScene[] = {EndsInTv2, PathFits, RateCanBeRead, RangeGoesForward};

constexpr Rule kRulesOfScenes[] = {
    RateCanBePassedOn, SceneIsOpen, TakesExist,    RangeIsInside, TimeMovesOn,    SamplesFit,
    TakesCanNameFiles, NamesFit,    NamesAreFiles, FilesDiffer,   TargetsAreFree,
};

// ---- notes

/// Instants are stepped in single precision. A default rate that has more digits than that is nobody's wish: it is worth
/// a note only where the instants move.
void NoteRate(const Case& c)
{
    constexpr double kMovedVisibly = 0.001; // sample intervals
    const auto sampled = static_cast<float>(c.plan.rate);
    const std::string& asked = c.question.rate;
    const bool explicit_rate = !asked.empty() && asked != "scene";
    const bool has_more_digits = RateOfText(NumberText(sampled), 0.0) != c.plan.rate;
    double longest = 0.0; // seconds
    for (const FilePlan& file : c.plan.files)
    {
        longest = std::max(longest, static_cast<double>(file.range.end - file.range.start));
    }
    const double moved = longest * std::abs(static_cast<double>(sampled) - c.plan.rate);
    if ((explicit_rate && has_more_digits) || moved > kMovedVisibly)
    {
        c.plan.notes.push_back("the rate " + (explicit_rate ? asked : NumberText(c.plan.rate)) +
                               " is rounded to single precision: " +
                               NumberText(static_cast<double>(sampled)) + " samples a second");
    }
}

void NoteRange(const Case& c)
{
    if (c.plan.whole_take)
    {
        return;
    }
    std::vector<std::string> cut;
    for (const FilePlan& file : c.plan.files)
    {
        const TakeTimes take = TimesOf(c, file);
        const std::int32_t first = FrameAt(take.start, take.transport_rate);
        const std::int32_t last = FrameAt(take.stop, take.transport_rate);
        if ((c.question.start_frame && *c.question.start_frame < first) ||
            (c.question.end_frame && *c.question.end_frame > last))
        {
            cut.push_back(Quoted(TakeName(c, file)) + " has " + FramesText(take, WholeTake(take, 1.0f)));
        }
    }
    for (const std::string& take : cut)
    {
        c.plan.notes.push_back("the range is cut to the take: " + take);
    }
}

/// Takes are exported in whole frames of the transport rate.
void NoteTakeEnds(const Case& c)
{
    constexpr double kOnAFrame = 0.001; // frames
    for (const FilePlan& file : c.plan.files)
    {
        const TakeTimes take = TimesOf(c, file);
        for (const auto& [seconds, what] : {std::pair(take.start, "start"), std::pair(take.stop, "end")})
        {
            const double frame = seconds * take.transport_rate;
            const std::int32_t used = FrameAt(seconds, take.transport_rate);
            if (std::abs(frame - used) > kOnAFrame)
            {
                c.plan.notes.push_back(std::string("the ") + what + " of take " + Quoted(TakeName(c, file)) +
                                       " is between two frames, at " + NumberText(static_cast<float>(frame)) +
                                       ": frame " + std::to_string(used) + " is used");
            }
        }
    }
}

void NoteOtherTakes(const Case& c)
{
    std::vector<std::string> others;
    std::vector<bool> exported(c.scene->takes.size());
    for (const FilePlan& file : c.plan.files)
    {
        exported[file.take] = true;
    }
    for (std::size_t i = 0; i < c.scene->takes.size(); ++i)
    {
        if (!exported[i])
        {
            others.push_back(c.scene->takes[i].name);
        }
    }
    if (!others.empty())
    {
        c.plan.notes.push_back(CountOf(others.size(), "other take is", "other takes are") +
                               " not exported: " + Listed(others) + " (" + Option(c.question, "all-takes") +
                               ")");
    }
}

} // namespace

std::vector<FilePlan> NameFiles(const ExportQuestion& question, const SceneFacts& scene)
{
    std::vector<FilePlan> files;
    std::vector<std::u16string> take_names;
    for (std::size_t i = 0; i < scene.takes.size(); ++i)
    {
        if (question.all_takes || scene.current_take == i)
        {
            files.emplace_back().take = i;
            take_names.push_back(Widen(scene.takes[i].name));
        }
    }
    const std::vector<std::u16string> paths =
        OutputFileNames(Widen(question.path), take_names, question.all_takes, question.spaces_to_underscores);
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        files[i].path = Narrow(paths[i]);
    }
    return files;
}

std::string PathForExporter(const std::string& path, const SceneFacts& scene)
{
    std::size_t longest_take = 0;
    for (const SceneTake& take : scene.takes)
    {
        longest_take = std::max(longest_take, take.name.size());
    }
    std::error_code error;
    const std::string absolute = std::filesystem::absolute(path, error).string();
    const bool fits = absolute.size() + 1 + longest_take <= TEV2_LOADER::kMostPathBytes;
    return !error && fits ? absolute : path;
}

Objection CheckSampling(double rate, const ExportQuestion& question, const SceneFacts& scene)
{
    RulesPlan plan;
    const Case c{question, &scene, plan};
    plan.rate = rate;
    plan.files = NameFiles(question, scene);
    SetRanges(c);
    const Objection objection = TimeMovesOn(c);
    return objection ? objection : SamplesFit(c);
}

Objection CheckScene(const SceneFacts& scene)
{
    if (scene.models.size() > 1)
    {
        return {};
    }
    return scene.files.empty() ? Objection{"no-scene", "no scene is open, or it has no models"}
                               : Objection{"no-models", "the scene has no models"};
}

void CountNodes(const std::vector<SceneModel>& models, RulesPlan& plan)
{
    const bool whole_scene =
        std::none_of(models.begin(), models.end(), [](const SceneModel& model) { return model.selected; });
    std::vector<bool> exported(models.size());
    plan.nodes = 0;
    plan.cameras = 0;
    for (std::size_t i = 0; i < models.size(); ++i)
    {
        const SceneModel& model = models[i];
        const bool below = model.parent >= 0 && exported[static_cast<std::size_t>(model.parent)];
        exported[i] = whole_scene || model.selected || below;
        plan.nodes += exported[i] ? 1 : 0;
        plan.cameras += exported[i] && model.camera ? 1 : 0;
    }
    // The exporter puts a root of its own above selected models.
    plan.nodes += !exported.empty() && !exported.front() ? 1 : 0;
}

Objection CheckTargets(const std::vector<FilePlan>& files, const SceneFacts& scene)
{
    const SourceFiles sources(scene.files);
    for (const FilePlan& file : files)
    {
        for (const Objection& objection :
             {CheckFolder(file.path), sources.Check(file.path), CheckPlace(file.path)})
        {
            if (objection)
            {
                return objection;
            }
        }
    }
    return {};
}

RulesPlan PlanExport(const ExportQuestion& question, const SceneFacts* scene)
{
    RulesPlan plan;
    const Case c{question, scene, plan};
    for (const Rule rule : kRulesWithoutScene)
    {
        if (plan.objection = rule(c); plan.objection)
        {
            return plan;
        }
    }
    if (scene == nullptr)
    {
        return plan;
    }
    plan.path_for_exporter = PathForExporter(question.path, *scene);
    for (const Rule rule : kRulesOfScenes)
    {
        if (plan.objection = rule(c); plan.objection)
        {
            return plan;
        }
    }
    NoteRate(c);
    NoteRange(c);
    NoteTakeEnds(c);
    NoteOtherTakes(c);
    return plan;
}

} // namespace tev2_exporter
