#include "tools/tv2/convert_files.h"

#include "exporter/rules/file_naming.h"
#include "gltf/convert/from_gltf.h"
#include "gltf/error.h"
#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

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
    return name.substr(0, end);
}

/// One path for each scene: the output itself for one, with the animations' names for several.
std::vector<std::string> OutputPaths(const std::string& output, const tev2_gltf::FromGltf& from)
{
    if (from.SceneCount() == 1)
        return {output};
    const std::string stem = output.substr(0, output.size() - std::string_view(".tv2").size());
    std::vector<std::string> paths;
    std::set<std::string> taken;
    for (std::size_t i = 0; i < from.SceneCount(); ++i)
    {
        const std::string name = AsFileName(from.SceneName(i));
        const std::string first = name.empty() ? "animation" : name;
        std::string unique = first;
        for (std::size_t number = 1; !taken.insert(unique).second; ++number)
            unique = first + "_" + std::to_string(number);
        paths.push_back(stem + "_" + unique + ".tv2");
    }
    return paths;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string Summary(const TEV2& scene)
{
    const std::size_t meshes = scene.rigids.size() + scene.morphMeshes.size() + scene.weightedMeshes.size();
    std::string text = CountOf(scene.matrixHierarchy.nodes.size(), "node", "nodes");
    const auto add = [&text](std::size_t count, const char* one, const char* more)
    {
        if (count > 0)
            text += ", " + CountOf(count, one, more);
    };
    add(meshes, "mesh", "meshes");
    add(scene.materials.size(), "material", "materials");
    add(scene.cameras.size(), "camera", "cameras");
    add(scene.lights.size(), "light", "lights");
    return text;
}

void AddScenes(const ConvertRequest& request, tev2_gltf::FromGltf& from, Converted& converted)
{
    const std::vector<std::string> paths = OutputPaths(request.output, from);
    for (std::size_t i = 0; i < paths.size(); ++i)
    {
        const std::shared_ptr<TEV2> scene = from.MakeScene(i);
        converted.files.push_back(
            {paths[i], Summary(*scene), [path = paths[i], scene] { return SaveFile(*scene, path); }});
    }
    for (const tev2_gltf::InsideImage& image : from.InsideImages())
    {
        const std::string path = FolderOf(request.output) + image.file_name;
        converted.files.push_back({path, "an image", [path, bytes = std::string(image.bytes)] {
                                       return WriteWholeFile(path, bytes);
                                   }});
    }
}

} // namespace

Status ConvertFromGltf(const ConvertRequest& request, Converted& converted)
{
    const std::string& input = request.inputs.front();
    std::vector<std::uint8_t> image;
    if (const Status read = ReadFileImage(input, image); !read)
        return Status::Failure(input + ": " + read.Reason());
    const std::string folder = FolderOf(input);
    try
    {
        gltf::FolderFiles files(std::filesystem::path(std::u8string(folder.begin(), folder.end())));
        gltf::Document document({reinterpret_cast<const char*>(image.data()), image.size()}, files);
        tev2_gltf::FromGltfOptions options{.standard_materials = request.standard_materials};
        const std::string stem = request.output.substr(FolderOf(request.output).size());
        options.image_stem = stem.substr(0, stem.size() - std::string_view(".tv2").size());
        tev2_gltf::FromGltf from(document, options, converted.report);
        AddScenes(request, from, converted);
    }
    catch (const gltf::Error& error)
    {
        return Status::Failure(input + ": " + error.what());
    }
    return {};
}

} // namespace tv2
