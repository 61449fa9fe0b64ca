#include "exporter/rules/rule.h"
#include "text/message_text.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

namespace tev2_exporter
{
namespace
{

Objection CannotWrite(const std::string& path, const char* code, const std::string& because)
{
    return {code, "cannot write " + Quoted(path) + ": " + because};
}

/// The folder of a path or, where folders will be made, the lowest one above it that is there.
std::string FolderThatIsThere(const ExportQuestion& question, const std::string& path)
{
    std::string folder = FolderOf(path);
    while (question.make_folders && FileStamp::Of(folder).error == ENOENT)
    {
        const std::string above = FolderOf(folder);
        if (above == folder)
            break;
        folder = above;
    }
    return folder;
}

Objection CheckFolder(const ExportQuestion& question, const std::string& path)
{
    const std::string folder = FolderThatIsThere(question, path);
    const FileStamp place = FileStamp::Of(folder);
    if (place.exists && place.folder)
        return {};
    return CannotWrite(path, "no-folder",
                       std::string(std::strerror(place.exists ? ENOTDIR : place.error)) + ": " +
                           Quoted(folder));
}

Objection CheckPlace(const ExportQuestion& question, const std::string& path)
{
    const std::string folder = FolderThatIsThere(question, path);
    const FileStamp target = FileStamp::Of(path);
    if (!target.exists && target.error != ENOENT)
        return CannotWrite(path, "not-writable", std::strerror(target.error));
    if (!target.exists)
    {
        const int obstacle = ObstacleToWriting(folder);
        return obstacle == 0 ? Objection{}
                             : CannotWrite(path, "not-writable",
                                           std::string(std::strerror(obstacle)) + ": " + Quoted(folder));
    }
    if (target.folder)
        return CannotWrite(path, "not-a-file", std::strerror(EISDIR));
    if (!target.regular)
        return CannotWrite(path, "not-a-file", "it is a device or a pipe, not a file");
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
                places_.emplace(PlaceOf(stamp), i);
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

} // namespace

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

Objection CheckTargets(const ExportQuestion& question, const std::vector<FilePlan>& files,
                       const SceneFacts& scene)
{
    const SourceFiles sources(scene.files);
    for (const FilePlan& file : files)
    {
        for (const Objection& objection :
             {CheckFolder(question, file.path), sources.Check(file.path), CheckPlace(question, file.path)})
            if (objection && !file.kept)
                return objection;
    }
    return {};
}

} // namespace tev2_exporter
