#include "tools/tv2/scene_search.h"

#include "host/import/formats.h"
#include "text/wildcard.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <filesystem>
#include <set>
#include <tuple>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

#if defined(_WIN32)
constexpr std::string_view kSeparators = "/\\";
#else
constexpr std::string_view kSeparators = "/";
#endif

std::string Folded(std::string_view name)
{
    return tev2_exporter::kSystemFoldsCase ? tev2_exporter::FoldCase(std::string(name)) : std::string(name);
}

/// What one folder on the way has to be called, or the file at its end.
struct Step
{
    explicit Step(std::string_view name)
        : any_folders(name == "**"), hidden(name.starts_with('.')), pattern(Folded(name))
    {
    }

    bool any_folders; ///< any number of them, also none
    bool hidden;      ///< may begin with a dot
    Wildcard pattern;
};

/// A path with wildcards, in front of which there may be folders without.
struct PathPattern
{
    std::string folder; ///< empty: the present one
    std::vector<Step> steps;

    explicit PathPattern(std::string_view path)
    {
        std::size_t start = 0;
        while (start < path.size())
        {
            const std::size_t end = std::min(path.find_first_of(kSeparators, start), path.size());
            const std::string_view name = path.substr(start, end - start);
            if (!steps.empty() || Wildcard(name).HasWildcards())
            {
                if (!name.empty())
                    steps.emplace_back(name);
            }
            else
            {
                folder = path.substr(0, std::min(end + 1, path.size()));
            }
            start = end + 1;
        }
        if (!steps.empty() && steps.back().any_folders)
            steps.emplace_back("*");
    }
};

/// What of the pattern the names below a folder still have to match.
struct Expected
{
    std::set<std::size_t> steps; ///< each of them may be the next
    bool all = false;            ///< the folder itself is an input

    bool operator<(const Expected& other) const
    {
        return std::tie(steps, all) < std::tie(other.steps, other.all);
    }
};

struct Folder
{
    std::string path;
    std::string below; ///< as of FoundScene, with "/" at the end
    Expected expected;
};

/// The folders that a search has yet to read.
class Walk
{
public:
    Walk(SceneSearch& search, const std::vector<Step>& steps, bool recursive, const FileStamp& passed_by)
        : search_(search), steps_(steps), recursive_(recursive), passed_by_(passed_by)
    {
    }

    void From(const Folder& first)
    {
        waiting_.push_back(first);
        while (!waiting_.empty() || !linked_.empty())
        {
            std::deque<Folder>& next = waiting_.empty() ? linked_ : waiting_;
            const Folder folder = std::move(next.front());
            next.pop_front();
            Read(folder);
        }
    }

private:
    void Read(const Folder& folder)
    {
        const std::string path = folder.path.empty() ? "." : folder.path;
        const FileStamp stamp = FileStamp::Of(path);
        const bool is_input = read_.empty();
        if (!is_input && stamp.IsSameFile(passed_by_))
            return;
        if (stamp.inode != 0 && !read_.emplace(stamp.device, stamp.inode, folder.expected).second)
            return;
        std::error_code error;
        std::vector<std::filesystem::directory_entry> entries;
        for (std::filesystem::directory_iterator at(path, error), end; !error && at != end;
             at.increment(error))
            entries.push_back(*at);
        if (error)
            search_.unreadable.push_back("cannot read the folder " + Quoted(path) + ": " + error.message());
        std::ranges::sort(entries, {}, [](const auto& entry) { return entry.path().filename().string(); });
        for (const std::filesystem::directory_entry& entry : entries)
            Visit(folder, entry);
    }

    void Visit(const Folder& folder, const std::filesystem::directory_entry& entry)
    {
        const std::string name = entry.path().filename().string();
        const bool hidden = name.starts_with('.');
        bool matched = false;
        Expected inside = Follow(folder.expected, name, hidden, matched);
        const bool wanted = matched || (folder.expected.all && !hidden);
        std::error_code ignored;
        const std::filesystem::file_type type = entry.status(ignored).type();
        const std::string path = JoinPath(folder.path, name);
        if (type == std::filesystem::file_type::directory)
        {
            inside.all = matched || (wanted && recursive_);
            if (inside.all || !inside.steps.empty())
                (entry.is_symlink(ignored) ? linked_ : waiting_)
                    .push_back({path, folder.below + name + '/', std::move(inside)});
            return;
        }
        // A file that is not there is a link to nowhere; like one that cannot be looked at, it fails as a scene.
        const bool file =
            type != std::filesystem::file_type::fifo && type != std::filesystem::file_type::socket &&
            type != std::filesystem::file_type::character && type != std::filesystem::file_type::block;
        if (wanted && file && mobu_host::IsNamedAsScene(name))
            search_.scenes.push_back({path, folder.below + name});
        else if (wanted)
            ++search_.passed_over;
    }

    /// What is expected inside a folder of this name; `matched`: the pattern ends here.
    Expected Follow(const Expected& expected, const std::string& name, bool hidden, bool& matched) const
    {
        Expected inside;
        const std::string folded = Folded(name);
        for (std::size_t first : expected.steps)
        {
            for (std::size_t step = first; step < steps_.size(); ++step)
            {
                if (steps_[step].any_folders)
                {
                    if (!hidden)
                        inside.steps.insert(step);
                    continue; // no folder at all: the next step may be the one
                }
                if ((!hidden || steps_[step].hidden) && steps_[step].pattern.Matches(folded))
                {
                    if (step + 1 == steps_.size())
                        matched = true;
                    else
                        inside.steps.insert(step + 1);
                }
                break;
            }
        }
        return inside;
    }

    SceneSearch& search_;
    std::vector<Step> steps_;
    bool recursive_;
    FileStamp passed_by_;
    std::deque<Folder> waiting_;
    std::deque<Folder> linked_;
    std::set<std::tuple<std::uint64_t, std::uint64_t, Expected>> read_;
};

} // namespace

std::string JoinPath(const std::string& folder, const std::string& name)
{
    const bool has_separator = folder.empty() || folder.find_last_of(kSeparators) == folder.size() - 1;
    return folder + (has_separator ? "" : "/") + name;
}

std::pair<std::string, std::string> SplitPath(const std::string& path)
{
    const std::size_t last = path.find_last_of(kSeparators);
    if (last == std::string::npos)
        return {".", path};
    return {path.substr(0, last + 1), path.substr(last + 1)};
}

Status SceneSearch::Search(const std::string& input)
{
    const FileStamp stamp = FileStamp::Of(input);
    if (stamp.folder)
    {
        Walk(*this, {}, recursive_, passed_by_).From({input, "", {.steps = {}, .all = true}});
        return {};
    }
    const PathPattern pattern(input);
    if (stamp.exists || pattern.steps.empty())
    {
        const std::size_t end = input.find_last_not_of(kSeparators) + 1; // of a name that is not there
        scenes.push_back({input, SplitPath(input.substr(0, end)).second});
        return {};
    }
    Walk(*this, pattern.steps, recursive_, passed_by_).From({pattern.folder, "", {.steps = {0}}});
    if (!scenes.empty())
        return {};
    const std::string others = CountOf(passed_over, "file that matches is no scene by its name",
                                       "files that match are no scenes by their names");
    return Status::Failure("no scene matches " + Quoted(input) +
                           (!unreadable.empty() ? ": " + unreadable.front()
                            : passed_over > 0   ? ": " + others
                                                : ""));
}

} // namespace tv2
