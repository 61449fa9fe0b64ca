#include "exporter/base/text.h"
#include "exporter/rules/file_name_rules.h"
#include "exporter/rules/file_naming.h"
#include "exporter/rules/rule.h"
#include "tev2_loader/io/detail/file_system.h"
#include "tev2_loader/io/file_writer.h"
#include "text/message_text.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace tev2_exporter
{
namespace
{

constexpr std::string_view kExtension = ".tv2";

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

Objection TooLong(const std::string& path)
{
    if (path.size() <= TEV2_LOADER::kMostPathBytes)
        return {};
    return {"path-too-long", "the path " + Quoted(path) + " has " + std::to_string(path.size()) +
                                 " bytes; at most " + std::to_string(TEV2_LOADER::kMostPathBytes) +
                                 " can be written to"};
}

bool NamesOfAllTakes(const ExportQuestion& question)
{
    return question.flags.all_takes || !question.takes.empty();
}

bool TakeNamesTheFile(const ExportQuestion& question)
{
    return NamesOfAllTakes(question) ||
           question.path.substr(question.path.find_last_of("/\\") + 1) == kExtension;
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

} // namespace

Objection EndsInTv2(const Case& c)
{
    if (c.question.path.ends_with(kExtension))
        return {};
    return {"no-tv2-name", "the output " + Quoted(c.question.path) + " does not end in .tv2"};
}

Objection PathFits(const Case& c)
{
    return TooLong(c.question.path);
}

Objection TakesCanNameFiles(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        const std::string& take = file.take_name;
        if (TakeNamesTheFile(c.question) && (take.empty() || take.find_first_of("/\\") != std::string::npos))
            return {"take-names-no-file", "no file can be named after take " + Quoted(take)};
    }
    return {};
}

Objection NamesFit(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
        if (Objection objection = TooLong(file.path))
            return objection;
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

Objection FilesDiffer(const Case& c)
{
    std::map<std::string, const FilePlan*> names;
    std::map<Place, const FilePlan*> places;
    std::map<PlaceOfNew, const FilePlan*> places_of_new;
    for (const FilePlan& file : c.plan.files)
    {
        // The file that had this key before; null when it is new.
        const auto first_at = [&file](auto& files, auto key) -> const FilePlan*
        {
            const auto [place, is_new] = files.emplace(std::move(key), &file);
            return is_new ? nullptr : place->second;
        };
        const FilePlan* other = first_at(names, FoldsCase(c.question) ? FoldCase(file.path) : file.path);
        const FileStamp stamp = FileStamp::Of(file.path);
        if (!other && stamp.regular && stamp.inode != 0)
            other = first_at(places, PlaceOf(stamp));
        if (!other && !stamp.exists)
        {
            const PlaceOfNew place = PlaceOfNewFile(c.question, file.path);
            other = place.first.second != 0 ? first_at(places_of_new, place) : nullptr;
        }
        if (other)
        {
            return {
                "same-file",
                "takes " + Quoted(other->take_name) + " and " + Quoted(file.take_name) +
                    " would both be written to " + Quoted(file.path) +
                    (other->path == file.path ? "" : ", which is the same file as " + Quoted(other->path))};
        }
    }
    return {};
}

std::vector<FilePlan> NameFiles(const ExportQuestion& question, const SceneFacts& scene)
{
    std::vector<FilePlan> files;
    std::vector<std::u16string> take_names;
    for (std::size_t i = 0; i < scene.takes.size(); ++i)
    {
        const bool chosen = question.takes.empty()
                                ? question.flags.all_takes || scene.current_take == i
                                : std::ranges::find(question.takes, i) != question.takes.end();
        if (chosen)
        {
            FilePlan& file = files.emplace_back();
            file.take = i;
            file.take_name = scene.takes[i].name;
            take_names.push_back(Widen(file.take_name));
        }
    }
    const auto names_of = [&](const std::string& path)
    {
        return OutputFileNames(Widen(path), take_names, NamesOfAllTakes(question),
                               question.flags.spaces_to_underscores);
    };
    const std::vector<std::u16string> paths = names_of(question.path);
    const std::vector<std::u16string> named = names_of(PathForExporter(question.path, scene));
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        files[i].path = Narrow(paths[i]);
        files[i].named = Narrow(named[i]);
        files[i].kept = question.keep_existing && FileStamp::Of(files[i].path).regular;
    }
    return files;
}

std::string PathForExporter(const std::string& path, const SceneFacts& scene)
{
    std::size_t longest_take = 0;
    for (const SceneTake& take : scene.takes)
        longest_take = std::max(longest_take, take.name.size());
    std::error_code error;
    const std::string absolute = std::filesystem::absolute(path, error).string();
    const bool fits = absolute.size() + 1 + longest_take <= TEV2_LOADER::kMostPathBytes;
    return !error && fits ? absolute : path;
}

} // namespace tev2_exporter
