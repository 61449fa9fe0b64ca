#include "tools/tv2/batch_scenes.h"

#include "tools/tv2/scene_search.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <tuple>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

constexpr std::size_t kMostShards = 1'000'000;

std::string Folded(const std::string& path)
{
    return tev2_exporter::kSystemFoldsCase ? tev2_exporter::FoldCase(path) : path;
}

/// "sub/walk.tv2" for "sub/walk.bvh".
std::string OutputName(const std::string& below)
{
    const std::size_t name = below.rfind('/') + 1; // 0 without a folder
    const std::size_t dot = below.rfind('.');
    const bool has_extension = dot != std::string::npos && dot > name;
    return below.substr(0, has_extension ? dot : below.size()) + ".tv2";
}

/// The scenes that the inputs name, each once.
class Collection
{
public:
    Collection(const BatchQuestion& question, BatchScenes& found) : question_(question), found_(found) {}

    Status Add(const std::string& input)
    {
        SceneSearch search(question_.recursive, FileStamp::Of(question_.folder));
        if (Status searched = search.Search(input); !searched)
            return searched;
        for (const FoundScene& scene : search.scenes)
        {
            if (!places_.insert(PlaceOf(scene.path)).second)
            {
                ++found_.doubled;
                continue;
            }
            const std::string name = OutputName(scene.below);
            found_.all.push_back({scene.path, JoinPath(question_.folder, name), name});
        }
        found_.passed_over += search.passed_over;
        found_.unreadable.insert(found_.unreadable.end(), search.unreadable.begin(), search.unreadable.end());
        if (search.scenes.empty() && search.unreadable.empty())
            found_.notes.push_back(Quoted(input) + " has no scenes" +
                                   (question_.recursive ? "" : " (--recursive also takes those below)"));
        return {};
    }

private:
    /// What all spellings of a path have in common: its folder, and its name there.
    using Place = std::tuple<std::uint64_t, std::uint64_t, std::string>;

    static Place PlaceOf(const std::string& path)
    {
        const auto [folder, name] = SplitPath(path);
        const FileStamp stamp = FileStamp::Of(folder);
        return stamp.exists && stamp.inode != 0 ? Place{stamp.device, stamp.inode, Folded(name)}
                                                : Place{0, 0, Folded(path)};
    }

    const BatchQuestion& question_;
    BatchScenes& found_;
    std::set<Place> places_;
};

/// What the export makes of an output's name, as far as it is known before the takes.
std::string FinalName(const BatchQuestion& question, const std::string& output)
{
    std::string name = output;
    if (question.spaces_to_underscores)
        std::replace(name.begin() + static_cast<std::ptrdiff_t>(output.rfind('/') + 1), name.end(), ' ', '_');
    return name;
}

/// Refuses outputs that are one file, or one of the scenes.
Status CheckOutputs(const BatchQuestion& question, const std::vector<BatchScene>& scenes)
{
    using File = std::pair<std::uint64_t, std::uint64_t>;
    std::map<File, const BatchScene*> files;
    for (const BatchScene& scene : scenes)
        if (const FileStamp stamp = FileStamp::Of(scene.scene); stamp.exists)
            files.emplace(File{stamp.device, stamp.inode}, &scene);
    std::map<std::string, const BatchScene*> names;
    std::map<File, const BatchScene*> outputs;
    for (const BatchScene& scene : scenes)
    {
        const std::string name = FinalName(question, scene.name);
        const std::string path = JoinPath(question.folder, name);
        const BatchScene* other = names.emplace(Folded(name), &scene).first->second;
        if (const FileStamp stamp = FileStamp::Of(path); stamp.exists && stamp.inode != 0)
        {
            const File file{stamp.device, stamp.inode};
            if (const auto source = files.find(file); source != files.end())
            {
                return Status::Failure("the output " + Quoted(path) + " of " + Quoted(scene.scene) +
                                       " is the scene " + Quoted(source->second->scene));
            }
            if (other == &scene)
                other = outputs.emplace(file, &scene).first->second;
        }
        if (other != &scene)
        {
            return Status::Failure(Quoted(other->scene) + " and " + Quoted(scene.scene) +
                                   " would both be written to " + Quoted(path) +
                                   ": export them to different folders");
        }
    }
    return {};
}

/// Files are called after scene and take, with "_" between them.
void FindRivals(const BatchQuestion& question, std::vector<BatchScene>& scenes)
{
    const auto stem_of = [&](const BatchScene& scene)
    {
        const std::string name = Folded(FinalName(question, scene.name));
        return name.substr(0, name.size() - std::string_view(".tv2").size());
    };
    std::map<std::string, std::size_t> stems;
    for (std::size_t i = 0; i < scenes.size(); ++i)
        stems.emplace(stem_of(scenes[i]), i);
    for (std::size_t i = 0; i < scenes.size(); ++i)
    {
        const std::string stem = stem_of(scenes[i]);
        const std::size_t name = stem.rfind('/') + 1;
        for (std::size_t at = stem.find('_', name); at != std::string::npos; at = stem.find('_', at + 1))
        {
            if (const auto rival = stems.find(stem.substr(0, at)); rival != stems.end())
            {
                scenes[i].rivals.push_back(rival->second);
                scenes[rival->second].rivals.push_back(i);
            }
        }
    }
}

} // namespace

std::string TakeShard(const std::string& text, Shard& shard)
{
    const auto number = [](std::string_view digits, std::size_t& value)
    {
        const char* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, value);
        return error == std::errc() && stop == end && value >= 1 && value <= kMostShards;
    };
    const std::size_t slash = text.find('/');
    Shard taken;
    if (slash == std::string::npos || !number(std::string_view(text).substr(0, slash), taken.number) ||
        !number(std::string_view(text).substr(slash + 1), taken.count) || taken.number > taken.count)
        return "needs a part of a number of parts: 1/8 to 8/8";
    shard = taken;
    return {};
}

std::vector<OptionRow> BatchSceneOptions(BatchQuestion& question)
{
    return {
        {.name = "--recursive",
         .value = &question.recursive,
         .help = "Of folders also export what is below them (default: the scenes that are in them)"},
        {.name = "--shard",
         .value = TakeText([&question](const std::string& text) { return TakeShard(text, question.shard); }),
         .help =
             "I/N: of the sorted list of scenes export number I, I + N, I + 2 N and so on, for N runs that "
             "together export all of them"},
    };
}

Status FindScenes(const BatchQuestion& question, BatchScenes& found)
{
    found = {};
    if (const FileStamp folder = FileStamp::Of(question.folder); folder.exists && !folder.folder)
        return Status::Failure("the output " + Quoted(question.folder) + " is not a folder");
    Collection collection(question, found);
    for (const std::string& input : question.inputs)
        if (Status added = collection.Add(input); !added)
            return added;
    if (found.all.empty() && found.unreadable.empty())
        return Status::Failure(found.notes.empty() ? "there are no scenes" : found.notes.front());
    std::ranges::sort(found.all, [](const BatchScene& a, const BatchScene& b) { return a.scene < b.scene; });
    if (Status allowed = CheckOutputs(question, found.all); !allowed)
        return allowed;
    if (question.takes_name_files)
        FindRivals(question, found.all);
    for (std::size_t i = question.shard.number - 1; i < found.all.size(); i += question.shard.count)
        found.chosen.push_back(i);
    return {};
}

std::vector<std::size_t> ScenesToCompare(const BatchScenes& found)
{
    std::set<std::size_t> compared;
    for (const std::size_t index : found.chosen)
        for (const std::size_t rival : found.all[index].rivals)
            if (rival < index)
                compared.insert({index, rival});
    return {compared.begin(), compared.end()};
}

std::vector<std::string> FindClashes(const BatchScenes& found, const FilesOfScenes& files)
{
    std::map<std::size_t, std::set<std::string>> folded;
    for (const auto& [index, paths] : files)
        for (const std::string& path : paths)
            folded[index].insert(Folded(path));
    std::vector<std::string> reasons;
    for (const std::size_t index : found.chosen)
    {
        std::string& reason = reasons.emplace_back();
        for (const std::size_t rival : found.all[index].rivals)
            for (const std::string& path : folded[index])
                if (reason.empty() && rival < index && folded[rival].contains(path))
                    reason = Quoted(path) + " would also be written by " + Quoted(found.all[rival].scene);
    }
    return reasons;
}

} // namespace tv2
