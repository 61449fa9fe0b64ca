#include "host/import/formats.h"

#include "host/import/bvh/bvh_reader.h"
#include "host/import/collada/collada_reader.h"
#include "host/import/fbx/fbx_reader.h"
#include "host/import/gltf/gltf_reader.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <iterator>
#include <vector>

namespace mobu_host
{
namespace
{

constexpr std::size_t kLookedThrough = 1 << 16; // bytes

std::string_view WithoutMarkAndBlanks(std::string_view bytes)
{
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    return bytes;
}

// Text files begin with a comment that says so, mostly.
bool IsFbx(std::string_view bytes)
{
    return bytes.starts_with("Kaydara FBX Binary") || bytes.starts_with("; FBX") ||
           bytes.substr(0, 4096).find("FBXHeaderExtension") != std::string_view::npos;
}

bool IsBvh(std::string_view bytes)
{
    constexpr std::string_view kKeyword = "HIERARCHY";
    const std::string_view first = WithoutMarkAndBlanks(bytes).substr(0, kKeyword.size());
    return std::equal(first.begin(), first.end(), kKeyword.begin(), kKeyword.end(),
                      [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; });
}

bool IsGltf(std::string_view bytes)
{
    return bytes.starts_with("glTF") || WithoutMarkAndBlanks(bytes).starts_with("{");
}

// In UTF-16 as well, where every other byte of the names is zero.
bool IsCollada(std::string_view bytes)
{
    std::string start(bytes.substr(0, kLookedThrough));
    if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF"))
        start.erase(0, 2);
    std::erase(start, '\0');
    return WithoutMarkAndBlanks(start).starts_with("<") && start.find("<COLLADA") != std::string::npos;
}

// For formats that are whole in one file.
template <SceneDescription (*Read)(std::string_view, const ImportOptions&, ImportNotes&)>
SceneDescription ReadBytes(const SceneFile& file, const ImportOptions& options, ImportNotes& notes)
{
    return Read(file.bytes, options, notes);
}

constexpr Format kFormats[] = {
    {"FBX", ".fbx ", IsFbx, ReadBytes<fbx::ReadFbx>},
    {"BVH", ".bvh ", IsBvh, ReadBytes<bvh::ReadBvh>},
    {"glTF", ".gltf .glb ", IsGltf, ReadGltf},
#ifdef TV2_HAS_PUGIXML
    {"Collada", ".dae ", IsCollada, ReadBytes<collada::ReadScene>},
#else
    {"Collada", ".dae ", IsCollada, nullptr, "pugixml"},
#endif
};

template <typename Predicate>
const Format* FirstOf(Predicate predicate)
{
    const auto* const found = std::find_if(std::begin(kFormats), std::end(kFormats), predicate);
    return found == std::end(kFormats) ? nullptr : found;
}

} // namespace

std::span<const Format> Formats()
{
    return kFormats;
}

const Format* FormatOf(std::string_view bytes)
{
    return FirstOf([bytes](const Format& format) { return format.sniff(bytes); });
}

std::string SceneExtensions()
{
    std::string extensions;
    for (const Format& format : Formats())
        extensions += format.extensions;
    return extensions;
}

bool IsNamedAsScene(std::string_view file_name)
{
    const std::size_t dot = file_name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || file_name.find(' ', dot) != std::string_view::npos)
        return false;
    std::string extension(file_name.substr(dot));
    for (char& letter : extension)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return FirstOf([&](const Format& format)
                   { return (format.extensions.find(extension + ' ') != std::string_view::npos); }) !=
           nullptr;
}

const Format* FormatNamed(std::string_view name)
{
    return FirstOf([name](const Format& format) { return format.name == name; });
}

std::string ReadableFormats(std::string_view before_last)
{
    std::vector<std::string> names;
    for (const Format& format : kFormats)
        if (format.read != nullptr)
            names.emplace_back(format.name);
    std::string line;
    for (std::size_t i = 0; i < names.size(); ++i)
        line.append(i == 0 ? "" : i + 1 == names.size() ? before_last : ", ").append(names[i]);
    return line;
}

} // namespace mobu_host
