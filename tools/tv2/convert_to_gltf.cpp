#include "tools/tv2/convert_files.h"

#include "gltf/error.h"
#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/notes.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <filesystem>
#include <memory>

namespace tv2
{

using namespace TEV2_LOADER;

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

std::string StemOf(const std::string& path)
{
    return WithSlashes(PathOf(path).stem());
}

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
    const auto add = [&](const std::string& path, std::string_view holds,
                         std::vector<ConvertedFile::Count> counts, std::string bytes)
    {
        const auto shared = std::make_shared<std::string>(std::move(bytes));
        converted.files.push_back(
            {path, holds, std::move(counts), [path, shared] { return WriteWholeFile(path, *shared); }});
    };
    if (!HasExtension(output, ".gltf"))
        return add(output, "scene", CountsOf(builder.Root()), builder.Glb());
    const std::string binary = output.substr(0, output.size() - std::string_view(".gltf").size()) + ".bin";
    const auto bytes = builder.Binary();
    if (!bytes.empty())
        add(binary, "buffer", {}, {bytes.begin(), bytes.end()});
    add(output, "scene", CountsOf(builder.Root()),
        builder.Gltf(PercentEncoded(WithSlashes(PathOf(binary).filename()))));
}

} // namespace

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

Status ConvertToGltf(const ConvertRequest& request, Converted& converted)
{
    std::vector<LoadedFile> files(request.inputs.size());
    std::vector<tev2_gltf::GltfSource> sources;
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        if (Status loaded = Load(request.inputs[i], files[i]); !loaded)
            return loaded;
        const std::string name =
            files[i].argument == kStandardInput ? "animation" : StemOf(request.inputs[i]);
        sources.push_back({*files[i].scene, name});
        converted.worlds.push_back(
            request.world.value_or(tev2_gltf::WorldOf(*files[i].scene).value_or(tev2_gltf::World::YUp)));
    }
    tev2_gltf::ToGltfOptions options{.world = request.world, .at = request.at};
    if (request.inputs[0] != kStandardInput)
        options.image_folder = WayBetween(request.output, request.inputs[0]);
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
