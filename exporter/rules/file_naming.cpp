#include "exporter/rules/file_naming.h"

#include <algorithm>

namespace tev2_exporter
{
namespace
{

constexpr std::size_t kExtensionLength = 4;

std::size_t FileNameStart(std::u16string_view path)
{
    const std::size_t separator = path.find_last_of(u"/\\");
    return separator == std::u16string_view::npos ? 0 : separator + 1;
}

struct SplitPath
{
    std::u16string_view folder;
    std::u16string_view file_name;
};

SplitPath Split(std::u16string_view path)
{
    const std::size_t start = FileNameStart(path);
    const bool has_extension = path.find(u'.', start) != std::u16string_view::npos;
    const std::size_t cut = has_extension ? start : path.size();
    return {path.substr(0, cut), path.substr(cut)};
}

std::u16string Join(std::u16string_view first, std::u16string_view second, std::u16string_view third)
{
    return std::u16string(first).append(second).append(third);
}

} // namespace

std::vector<std::u16string> OutputFileNames(std::u16string_view path,
                                            const std::vector<std::u16string>& take_names, bool all_takes,
                                            bool spaces_to_underscores)
{
    const SplitPath split = Split(path);
    const bool extension_only = split.file_name.size() <= kExtensionLength;

    std::vector<std::u16string> names;
    names.reserve(take_names.size());
    for (const std::u16string& take : take_names)
    {
        if (extension_only)
            names.push_back(Join(split.folder, take, split.file_name));
        else if (all_takes)
            names.push_back(Join(path.substr(0, path.size() - kExtensionLength), u"_" + take, u".tv2"));
        else
            names.emplace_back(path);

        if (spaces_to_underscores)
        {
            std::u16string& name = names.back();
            const auto file_name = name.begin() + static_cast<std::ptrdiff_t>(FileNameStart(name));
            std::replace(file_name, name.end(), u' ', u'_');
        }
    }
    return names;
}

} // namespace tev2_exporter
