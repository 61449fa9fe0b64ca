#include "tools/tv2/convert_files.h"

#include "gltf/convert/document_files.h"
#include "gltf/error.h"
#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/notes.h"
#include "tools/tv2/text.h"

#include <memory>
#include <utility>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

std::vector<ConvertedFile::Count> CountsOf(const gltf::Json& root)
{
    const auto size = [](const gltf::Json& object, const char* list)
    {
        const auto found = object.find(list);
        return found == object.end() ? std::size_t{0} : found->size();
    };
    const gltf::Json none = gltf::Json::object();
    const gltf::Json& extensions = root.contains("extensions") ? root["extensions"] : none;
    const gltf::Json& lights =
        extensions.contains("KHR_lights_punctual") ? extensions["KHR_lights_punctual"] : none;
    return {{size(root, "nodes"), "node", "nodes"},
            {size(root, "animations"), "animation", "animations"},
            {size(root, "meshes"), "mesh", "meshes"},
            {size(root, "skins"), "skin", "skins"},
            {size(root, "materials"), "material", "materials"},
            {size(root, "cameras"), "camera", "cameras"},
            {size(lights, "lights"), "light", "lights"}};
}

Status Load(const std::string& path, LoadedFile& file)
{
    if (Status read = ReadFile(path, file); !read)
        return read;
    return file.loaded ? Status() : Status::Failure(WhyNotLoaded(file));
}

/// The files of a finished document, as bytes.
void AddFiles(const std::string& output, gltf::DocumentBuilder& builder, Converted& converted)
{
    for (tev2_gltf::DocumentFile& file : tev2_gltf::DocumentFiles(output, builder))
    {
        const auto shared = std::make_shared<std::string>(std::move(file.bytes));
        converted.files.push_back(
            {file.path, file.is_buffer ? "buffer" : "scene",
             file.is_buffer ? std::vector<ConvertedFile::Count>() : CountsOf(builder.Root()),
             [path = file.path, shared] { return WriteWholeFile(path, *shared); }});
    }
}

} // namespace

Status ConvertToGltf(const ConvertRequest& request, Converted& converted)
{
    std::vector<LoadedFile> files(request.inputs.size());
    std::vector<tev2_gltf::GltfSource> sources;
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        if (Status loaded = Load(request.inputs[i], files[i]); !loaded)
            return loaded;
        const std::string name =
            files[i].argument == kStandardInput ? "animation" : tev2_gltf::StemOf(request.inputs[i]);
        sources.push_back({*files[i].scene, name});
        converted.worlds.push_back(
            request.world.value_or(tev2_gltf::WorldOf(*files[i].scene).value_or(tev2_gltf::World::YUp)));
    }
    tev2_gltf::ToGltfOptions options{.world = request.world, .at = request.at};
    if (request.inputs[0] != kStandardInput)
        options.image_folder = tev2_gltf::WayBetween(request.output, request.inputs[0]);
    const TEV2_FLOAT32_RANGE& range = files[0].scene->environment.timeRange;
    if (request.at && (*request.at < range.minimum || *request.at > range.maximum))
        converted.notes.push_back(OutsideRangeNote(*request.at, range));
    gltf::DocumentBuilder builder;
    const Status made = tev2_gltf::ToGltf(sources, options, builder, converted.report);
    if (!made)
        return Status::Failure(files[0].title + ": " + made.Reason());
    try
    {
        AddFiles(request.output, builder, converted);
    }
    catch (const gltf::Error& error)
    {
        return Status::Failure(request.output + ": " + error.what());
    }
    return {};
}

} // namespace tv2
