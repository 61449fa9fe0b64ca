#include "gltf/convert/document_files.h"

#include "text/percent.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace tev2_gltf
{

namespace
{

std::string WithSlashes(const std::filesystem::path& path)
{
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

std::filesystem::path PathOf(const std::string& utf8)
{
    return std::u8string(utf8.begin(), utf8.end());
}

/// A text that is part of a file name on every system.
std::string AsFileName(std::string_view text)
{
    constexpr std::string_view kNotInNames = "/\\:*?\"<>|";
    std::string name(text);
    std::replace_if(
        name.begin(), name.end(),
        [&](char c)
        { return static_cast<unsigned char>(c) < 0x20 || kNotInNames.find(c) != std::string::npos; },
        '_');
    constexpr std::size_t kMostBytes = 100;
    std::size_t end = std::min(name.size(), kMostBytes);
    while (end < name.size() && end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    name.resize(end);
    return name.empty() ? "animation" : name;
}

/// How names are compared on systems that ignore case.
std::string LowerCase(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](char c)
                           { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

} // namespace

bool HasExtension(const std::string& path, std::string_view extension)
{
    const auto is_same = [](char a, char b)
    { return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b); };
    return path.size() >= extension.size() &&
           std::equal(path.end() - static_cast<std::ptrdiff_t>(extension.size()), path.end(),
                      extension.begin(), is_same);
}

bool IsGltfPath(const std::string& path)
{
    return HasExtension(path, ".glb") || HasExtension(path, ".gltf");
}

std::string StemOf(const std::string& path)
{
    return WithSlashes(PathOf(path).stem());
}

std::string WayBetween(const std::string& from, const std::string& to)
{
    std::error_code ignored;
    const auto folder = [&](const std::string& file)
    {
        return std::filesystem::weakly_canonical(std::filesystem::absolute(PathOf(file), ignored), ignored)
            .parent_path();
    };
    const std::string way = WithSlashes(folder(to).lexically_relative(folder(from)));
    return way.empty() || way == "." ? std::string() : way + "/";
}

std::vector<DocumentFile> DocumentFiles(const std::string& path, gltf::DocumentBuilder& builder)
{
    if (!HasExtension(path, ".gltf"))
        return {{path, builder.Glb()}};
    std::vector<DocumentFile> files;
    const std::string binary = path.substr(0, path.size() - std::string_view(".gltf").size()) + ".bin";
    const auto bytes = builder.Binary();
    if (!bytes.empty())
        files.push_back({binary, {bytes.begin(), bytes.end()}, true});
    files.push_back({path, builder.Gltf(PercentEncoded(WithSlashes(PathOf(binary).filename())))});
    return files;
}

std::vector<std::string> TakeNames(const FromGltf& from)
{
    std::vector<std::string> names;
    std::map<std::string, std::size_t> taken; // and how often
    for (std::size_t i = 0; i < from.SceneCount(); ++i)
    {
        const std::string name = AsFileName(from.SceneName(i));
        std::string unique = name;
        while (!taken.try_emplace(LowerCase(unique), 0).second)
            unique = name + "_" + std::to_string(++taken[LowerCase(name)]);
        names.push_back(unique);
    }
    return names;
}

} // namespace tev2_gltf
