#include "tools/tv2/convert_files.h"

#include "exporter/rules/file_naming.h"
#include "gltf/convert/document_files.h"
#include "gltf/convert/from_gltf.h"
#include "gltf/error.h"
#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/whole_file.h"
#include "tev2_loader/io/wide_string.h"
#include "tools/tv2/text.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::string_view kExtension = ".tv2";

/// One path for each scene, as an export names its takes: the output itself for one scene.
std::vector<std::string> OutputPaths(const std::string& output, const tev2_gltf::FromGltf& from)
{
    std::vector<std::string> paths;
    std::vector<std::u16string> takes;
    for (const std::string& name : tev2_gltf::TakeNames(from))
        takes.push_back(TEV2_WIDE_STRING::FromBytes(name).Text());
    for (const std::u16string& path : tev2_exporter::OutputFileNames(
             TEV2_WIDE_STRING::FromBytes(output).Text(), takes, from.SceneCount() > 1, false))
        paths.push_back(NarrowUtf8(path));
    return paths;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::vector<ConvertedFile::Count> CountsOf(const TEV2& scene)
{
    const std::size_t meshes = scene.rigids.size() + scene.morphMeshes.size() + scene.weightedMeshes.size();
    return {{scene.matrixHierarchy.nodes.size(), "node", "nodes"},
            {meshes, "mesh", "meshes"},
            {scene.materials.size(), "material", "materials"},
            {scene.cameras.size(), "camera", "cameras"},
            {scene.lights.size(), "light", "lights"}};
}

/// A document and its conversion, with all that they refer to.
struct Source
{
    Source(const ConvertRequest& request, std::vector<std::uint8_t> bytes,
           tev2_gltf::ConversionReport& report)
        : image(std::move(bytes)),
          files(FolderPath(request.inputs.front())),
          document({reinterpret_cast<const char*>(image.data()), image.size()}, files),
          from(document, OptionsOf(request), report)
    {
    }

    static std::filesystem::path FolderPath(const std::string& input)
    {
        const std::string folder = FolderOf(input);
        return {std::u8string(folder.begin(), folder.end())};
    }

    static tev2_gltf::FromGltfOptions OptionsOf(const ConvertRequest& request)
    {
        const std::string name = request.output.substr(FolderOf(request.output).size());
        return {.standard_materials = request.standard_materials,
                .image_stem = name.substr(0, name.size() - kExtension.size()),
                .image_folder = tev2_gltf::WayBetween(request.output, request.inputs.front())};
    }

    std::vector<std::uint8_t> image;
    gltf::FolderFiles files;
    gltf::Document document;
    tev2_gltf::FromGltf from;
};

/// Scenes repeat the meshes of the document, so they are made one at a time: once for the report, and again to be
/// written.
void AddScenes(const ConvertRequest& request, const std::shared_ptr<Source>& source, Converted& converted)
{
    for (const std::string& path : source->document.SideFilePaths())
        converted.beside.push_back(FolderOf(request.inputs.front()) + path);
    const std::vector<std::string> paths = OutputPaths(request.output, source->from);
    for (std::size_t i = 0; i < paths.size(); ++i)
    {
        converted.files.push_back({paths[i], "scene", CountsOf(*source->from.MakeScene(i)),
                                   [source, i, path = paths[i]]
                                   { return SaveFile(*source->from.MakeScene(i), path); }});
    }
    for (const tev2_gltf::InsideImage& image : source->from.InsideImages())
    {
        const std::string path = FolderOf(request.output) + image.file_name;
        converted.files.push_back(
            {path, "image", {}, [source, path, bytes = image.bytes] { return WriteWholeFile(path, bytes); }});
    }
}

} // namespace

Status ConvertFromGltf(const ConvertRequest& request, Converted& converted)
{
    const std::string& input = request.inputs.front();
    std::vector<std::uint8_t> image;
    if (const Status read = ReadFileImage(input, image); !read)
        return Status::Failure(input + ": " + read.Reason());
    try
    {
        AddScenes(request, std::make_shared<Source>(request, std::move(image), converted.report), converted);
    }
    catch (const gltf::Error& error)
    {
        return Status::Failure(input + ": " + error.what());
    }
    return {};
}

} // namespace tv2
