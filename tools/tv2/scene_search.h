#pragma once

#include "tev2_loader/status.h"
#include "tools/tv2/system.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tv2
{

/// "folder/name"
std::string JoinPath(const std::string& folder, const std::string& name);

/// A path's folder, "." when it names none, and the name in it.
std::pair<std::string, std::string> SplitPath(const std::string& path);

struct FoundScene
{
    std::string path;
    std::string below; ///< relative to the folder that the output tree mirrors, with "/"
};

/// The scenes that one input of a batch names: a file, a folder, or a wildcard. Folders are read one after the other;
/// linked ones after all others, and each once, so that links in a circle end.
class SceneSearch
{
public:
    /// `passed_by` is a folder that is not searched, unless it is the input.
    SceneSearch(bool recursive, const FileStamp& passed_by) : recursive_(recursive), passed_by_(passed_by) {}

    /// Fails for a wildcard without a match.
    TEV2_LOADER::Status Search(const std::string& input);

    std::vector<FoundScene> scenes;
    std::size_t passed_over = 0;         ///< files that are named otherwise
    std::vector<std::string> unreadable; ///< folders, one line each

private:
    bool recursive_;
    FileStamp passed_by_;
};

} // namespace tv2
