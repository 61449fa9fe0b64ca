#include "tools/tv2/convert_files.h"

#include "gltf/error.h"
#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/loaded_file.h"
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

void AppendCount(std::string& text, const gltf::Json& root, const char* list, const char* one,
                 const char* more)
{
    const auto found = root.find(list);
    if (found != root.end())
        text += (text.empty() ? "" : ", ") + CountOf(found->size(), one, more);
}

std::string Summary(const gltf::Json& root)
{
    std::string text;
    AppendCount(text, root, "nodes", "node", "nodes");
    AppendCount(text, root, "animations", "animation", "animations");
    AppendCount(text, root, "meshes", "mesh", "meshes");
    AppendCount(text, root, "skins", "skin", "skins");
    AppendCount(text, root, "materials", "material", "materials");
    AppendCount(text, root, "cameras", "camera", "cameras");
    if (const auto extensions = root.find("extensions"); extensions != root.end())
        AppendCount(text, extensions->value("KHR_lights_punctual", gltf::Json::object()), "lights", "light",
                    "lights");
    return text.empty() ? "an empty scene" : text;
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
    const std::string what = Summary(builder.Root());
    const auto add = [&](const std::string& path, const std::string& text, std::string bytes)
    {
        const auto shared = std::make_shared<std::string>(std::move(bytes));
        converted.files.push_back({path, text, [path, shared] { return WriteWholeFile(path, *shared); }});
    };
    if (!output.ends_with(".gltf"))
        return add(output, what, builder.Glb());
    const std::string binary = output.substr(0, output.size() - std::string_view(".gltf").size()) + ".bin";
    const auto bytes = builder.Binary();
    if (!bytes.empty())
        add(binary, "its buffer", {bytes.begin(), bytes.end()});
    add(output, what, builder.Gltf(PercentEncoded(WithSlashes(PathOf(binary).filename()))));
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
