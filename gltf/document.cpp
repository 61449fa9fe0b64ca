#include "gltf/document.h"

#include "gltf/uri.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gltf
{
namespace
{

constexpr std::size_t kAnyCount = std::size_t{1} << 48; // of what is not counted here
constexpr std::size_t kMostSideBytes = std::size_t{1} << 30;
constexpr const char* kCompressions[] = {"EXT_meshopt_compression", "KHR_meshopt_compression"};

// A number that programs wrote as 3.0 is whole too.
std::optional<std::size_t> WholeOf(JsonValue value)
{
    const std::optional<double> number = value.Number();
    if (!number || !(*number >= 0.0) || *number >= static_cast<double>(kAnyCount) ||
        *number != std::floor(*number))
        return std::nullopt;
    return static_cast<std::size_t>(*number);
}

std::optional<std::size_t> IndexOf(JsonValue value, std::size_t count)
{
    const std::optional<std::size_t> index = WholeOf(value);
    return index && *index < count ? index : std::nullopt;
}

[[noreturn]] void FailIndex(const char* member, JsonValue value, std::size_t count, const Place& place)
{
    const std::optional<std::size_t> index = WholeOf(value);
    place.Fail(member, !value   ? "is missing"
                       : !index ? "is not an index"
                       : count == 0
                           ? "is " + std::to_string(*index) + ", where there are none"
                           : "is " + std::to_string(*index) + ", out of 0 to " + std::to_string(count - 1));
}

Target TargetOf(std::string_view path)
{
    if (path == "translation")
        return Target::Translation;
    if (path == "rotation")
        return Target::Rotation;
    if (path == "scale")
        return Target::Scale;
    return path == "weights" ? Target::Weights : Target::Other;
}

std::string_view WithoutByteOrderMark(std::string_view json)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return json.starts_with(kMark) ? json.substr(kMark.size()) : json;
}

} // namespace

std::size_t IndexIn(JsonValue object, const char* member, std::size_t count, const Place& place)
{
    const std::optional<std::size_t> index = IndexOf(object[member], count);
    if (!index)
        FailIndex(member, object[member], count, place);
    return *index;
}

std::optional<std::size_t> OptionalIndexIn(JsonValue object, const char* member, std::size_t count,
                                           const Place& place)
{
    if (!object[member])
        return std::nullopt;
    return IndexIn(object, member, count, place);
}

std::size_t SizeIn(JsonValue object, const char* member, std::size_t least,
                   std::optional<std::size_t> otherwise, const Place& place)
{
    if (!object[member] && otherwise)
        return *otherwise;
    const std::optional<std::size_t> size = WholeOf(object[member]);
    if (!size || *size < least)
        place.Fail(member, "is not a whole number from " + std::to_string(least) + " on");
    return *size;
}

std::optional<double> NumberIn(JsonValue object, const char* member, const Place& place)
{
    const JsonValue value = object[member];
    if (value && !value.Number())
        place.Fail(member, "is not a number");
    return value.Number();
}

bool ReadNumbersIn(JsonValue object, const char* member, std::span<double> numbers, const Place& place)
{
    const JsonValue value = object[member];
    if (!value)
        return false;
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const std::optional<double> number =
            value.Size() == numbers.size() ? value[i].Number() : std::nullopt;
        if (!number)
            place.Fail(member, "is not " + std::to_string(numbers.size()) + " numbers");
        numbers[i] = *number;
    }
    return true;
}

bool TruthIn(JsonValue object, const char* member, const Place& place)
{
    const JsonValue value = object[member];
    if (value && !value.Truth())
        place.Fail(member, "is neither true nor false");
    return value.Truth().value_or(false);
}

Document::Document(std::string_view bytes, SideFiles& files)
    : size_(bytes.size()),
      container_(OpenContainer(bytes)),
      tree_(WithoutByteOrderMark(container_.json)),
      files_(files)
{
    CheckVersion();
    CheckBuffers();
}

void Document::CheckVersion() const
{
    const JsonValue asset = Root()["asset"];
    if (asset.Kind() != JsonKind::Object)
        throw Error("its JSON is not a glTF scene");
    const std::string version(asset["version"].Text());
    if (!version.starts_with("2."))
        throw Error("glTF version \"" + version.substr(0, 20) + "\" is not read, only 2");
}

// Whether they are needed or not: a document that reaches out of its folder is not to be trusted.
void Document::CheckBuffers() const
{
    const JsonValue buffers = Root()["buffers"];
    for (std::size_t i = 0; i < buffers.Size(); ++i)
    {
        const std::string_view uri = buffers[i]["uri"].Text();
        if (!buffers[i]["uri"] || IsDataUri(uri))
            continue;
        try
        {
            RelativePathOf(uri);
        }
        catch (const Error& error)
        {
            Place{"buffers", i, uri}.Fail("uri", error.what());
        }
    }
}

Place Document::PlaceOf(const char* list, std::size_t index) const
{
    return {list, index, Root()[list][index]["name"].Text()};
}

std::vector<std::string_view> Document::RequiredExtensions() const
{
    const JsonValue required = Root()["extensionsRequired"];
    std::vector<std::string_view> names(required.Size());
    for (std::size_t i = 0; i < names.size(); ++i)
        names[i] = required[i].Text();
    return names;
}

bool Document::Requires(std::string_view extension) const
{
    const std::vector<std::string_view> required = RequiredExtensions();
    return std::find(required.begin(), required.end(), extension) != required.end();
}

JsonValue Document::Scene() const
{
    const JsonValue scenes = Root()["scenes"];
    const JsonValue chosen = Root()["scene"];
    if (scenes.Size() == 0)
        return {};
    const std::optional<std::size_t> index = chosen ? IndexOf(chosen, scenes.Size()) : 0;
    if (!index)
        throw Error("its scene to show is none of its " + std::to_string(scenes.Size()) + " scenes");
    return scenes[*index];
}

// The nodes that the scene lists. Without scenes, those that no other node has as a child.
std::vector<std::size_t> Document::Tops() const
{
    const std::size_t count = Count("nodes");
    std::vector<std::size_t> tops;
    if (Count("scenes") > 0)
    {
        const JsonValue listed = Scene()["nodes"];
        tops.resize(listed.Size());
        for (std::size_t i = 0; i < tops.size(); ++i)
        {
            const std::optional<std::size_t> index = IndexOf(listed[i], count);
            if (!index)
                throw Error("the nodes of its scene are not all nodes of the file");
            tops[i] = *index;
        }
        return tops;
    }
    const JsonValue nodes = Root()["nodes"];
    std::vector<bool> is_child(count, false);
    for (std::size_t node = 0; node < count; ++node)
    {
        const JsonValue children = nodes[node]["children"];
        for (std::size_t i = 0; i < children.Size(); ++i)
            if (const std::optional<std::size_t> child = IndexOf(children[i], count))
                is_child[*child] = true;
    }
    for (std::size_t node = 0; node < count; ++node)
        if (!is_child[node])
            tops.push_back(node);
    return tops;
}

std::vector<ShownNode> Document::ShownNodes(std::size_t deepest) const
{
    struct Level
    {
        JsonValue children;
        std::size_t next;
        std::uint32_t parent; // in the list
    };
    const std::size_t count = Count("nodes");
    const JsonValue nodes = Root()["nodes"];
    std::vector<bool> met(count, false);
    std::vector<ShownNode> shown;
    std::vector<Level> levels;
    const auto show = [&](std::size_t index, std::optional<std::uint32_t> parent)
    {
        if (met[index])
        {
            const bool in_a_circle =
                std::any_of(levels.begin(), levels.end(),
                            [&](const Level& above) { return shown[above.parent].index == index; });
            PlaceOf("nodes", index).Fail(in_a_circle ? "is its own ancestor" : "is in the scene twice");
        }
        if (levels.size() == deepest)
            PlaceOf("nodes", index).Fail("nodes are nested more than " + std::to_string(deepest) + " deep");
        met[index] = true;
        shown.push_back({static_cast<std::uint32_t>(index), parent});
        levels.push_back({nodes[index]["children"], 0, static_cast<std::uint32_t>(shown.size() - 1)});
    };
    for (const std::size_t top : Tops())
    {
        show(top, std::nullopt);
        while (!levels.empty())
        {
            Level& level = levels.back();
            if (level.next == level.children.Size())
            {
                levels.pop_back();
                continue;
            }
            const std::optional<std::size_t> index = IndexOf(level.children[level.next++], count);
            if (!index)
                PlaceOf("nodes", shown[level.parent].index).Fail("children", "are not all nodes of the file");
            show(*index, level.parent);
        }
    }
    if (Count("scenes") == 0 && shown.size() < count)
        PlaceOf("nodes", static_cast<std::size_t>(std::find(met.begin(), met.end(), false) - met.begin()))
            .Fail("is its own ancestor, or below one that is");
    shown.shrink_to_fit();
    return shown;
}

Node Document::NodeAt(std::size_t index) const
{
    Node node;
    node.json = Root()["nodes"][index];
    node.name = node.json["name"].Text();
    const Place place{"nodes", index, node.name};
    if (node.json.Kind() != JsonKind::Object)
        place.Fail("is not a JSON object");
    if (node.json["matrix"])
    {
        ReadNumbersIn(node.json, "matrix", node.local.emplace<ColumnMatrix>(), place);
    }
    else
    {
        Trs& trs = node.local.emplace<Trs>();
        ReadNumbersIn(node.json, "translation", trs.translation, place);
        ReadNumbersIn(node.json, "rotation", trs.rotation, place);
        ReadNumbersIn(node.json, "scale", trs.scale, place);
    }
    node.mesh = OptionalIndexIn(node.json, "mesh", kAnyCount, place);
    node.skin = OptionalIndexIn(node.json, "skin", kAnyCount, place);
    node.camera = OptionalIndexIn(node.json, "camera", Count("cameras"), place);
    return node;
}

Camera Document::CameraAt(std::size_t index) const
{
    Camera camera;
    camera.json = Root()["cameras"][index];
    camera.name = camera.json["name"].Text();
    camera.orthographic = camera.json["type"].Text() == "orthographic";
    const Place place{"cameras", index, camera.name};
    const JsonValue lens = camera.json[camera.orthographic ? "orthographic" : "perspective"];
    camera.near_plane = NumberIn(lens, "znear", place).value_or(0.0);
    camera.far_plane = NumberIn(lens, "zfar", place).value_or(0.0);
    if (camera.orthographic)
    {
        const double height = NumberIn(lens, "ymag", place).value_or(0.0);
        const double aspect = height > 0.0 ? NumberIn(lens, "xmag", place).value_or(0.0) / height : 0.0;
        camera.aspect = std::isfinite(aspect) ? aspect : 0.0;
        return camera;
    }
    camera.yfov = NumberIn(lens, "yfov", place).value_or(0.0);
    camera.aspect = NumberIn(lens, "aspectRatio", place).value_or(0.0);
    return camera;
}

Animation Document::AnimationAt(std::size_t index) const
{
    const JsonValue json = Root()["animations"][index];
    return {json["name"].Text(), index, json["channels"], json["samplers"]};
}

Channel Document::ChannelAt(const Animation& animation, std::size_t index) const
{
    const Place whole = PlaceOf(animation);
    const Place place{"channels", index, {}, &whole};
    const JsonValue json = animation.channels[index];
    const JsonValue target = json["target"];
    Channel channel;
    channel.target = TargetOf(target["path"].Text());
    channel.node = OptionalIndexIn(target, "node", Count("nodes"), place);
    channel.sampler = IndexIn(json, "sampler", animation.samplers.Size(), place);
    return channel;
}

Sampler Document::SamplerAt(const Animation& animation, std::size_t index) const
{
    const Place whole = PlaceOf(animation);
    const Place place{"samplers", index, {}, &whole};
    const JsonValue json = animation.samplers[index];
    Sampler sampler;
    sampler.input = IndexIn(json, "input", Count("accessors"), place);
    sampler.output = IndexIn(json, "output", Count("accessors"), place);
    const std::string_view interpolation = json["interpolation"].Text();
    if (interpolation == "STEP")
        sampler.interpolation = Interpolation::Step;
    else if (interpolation == "CUBICSPLINE")
        sampler.interpolation = Interpolation::CubicSpline;
    else if (json["interpolation"] && interpolation != "LINEAR")
        place.Fail("interpolation", "is none of STEP, LINEAR and CUBICSPLINE");
    return sampler;
}

std::string_view Document::ViewBytes(std::size_t index)
{
    const Place place = PlaceOf("bufferViews", index);
    const JsonValue view = Root()["bufferViews"][index];
    const std::size_t buffer = IndexIn(view, "buffer", Count("buffers"), place);
    const std::size_t offset = SizeIn(view, "byteOffset", 0, 0, place);
    const std::size_t length = SizeIn(view, "byteLength", 1, std::nullopt, place);
    for (const char* compression : kCompressions)
    {
        // Where the extension is not required, the buffer may hold the plain bytes.
        const bool has_plain_bytes = Root()["buffers"][buffer]["uri"] || (buffer == 0 && container_.binary);
        if (view["extensions"][compression] && (Requires(compression) || !has_plain_bytes))
            place.Fail("is compressed with the extension " + std::string(compression) +
                       ", which is not read");
    }
    const std::string_view bytes = BufferBytes(buffer);
    if (offset > bytes.size() || length > bytes.size() - offset)
        place.Fail("reaches beyond the " + std::to_string(bytes.size()) + " bytes of its buffer");
    return bytes.substr(offset, length);
}

std::string_view Document::BufferBytes(std::size_t index)
{
    const JsonValue buffer = Root()["buffers"][index];
    const std::string_view uri = buffer["uri"].Text();
    const Place place{"buffers", index, IsDataUri(uri) ? buffer["name"].Text() : uri};
    const std::size_t length = SizeIn(buffer, "byteLength", 1, std::nullopt, place);
    std::string_view bytes;
    try
    {
        if (!buffer["uri"])
        {
            if (index != 0 || !container_.binary)
                place.Fail("has neither a URI nor bytes in the file");
            bytes = *container_.binary;
        }
        else if (IsDataUri(uri))
        {
            const auto [found, is_new] = data_.try_emplace(index);
            if (is_new)
                found->second = DataOf(uri);
            bytes = found->second;
        }
        else
        {
            bytes = SideFile(RelativePathOf(uri), length);
        }
    }
    catch (const Error& error)
    {
        if (std::string_view(error.what()).starts_with("buffers["))
            throw;
        place.Fail("uri", error.what());
    }
    if (bytes.size() < length)
        place.Fail("states " + std::to_string(length) + " bytes and has " + std::to_string(bytes.size()));
    return bytes.substr(0, length);
}

const std::string& Document::SideFile(const std::string& path, std::size_t bytes)
{
    const auto [found, is_new] = side_.try_emplace({path, bytes});
    if (is_new)
    {
        found->second = files_.Read(path, std::min(bytes, kMostSideBytes - side_bytes_ + 1));
        side_bytes_ += found->second.size();
        if (side_bytes_ > kMostSideBytes)
            throw Error("is more than the " + std::to_string(kMostSideBytes >> 20) +
                        " MiB that are read from files beside a scene");
    }
    return found->second;
}

std::vector<std::string> Document::SideFilePaths() const
{
    std::vector<std::string> paths;
    for (const char* list : {"buffers", "images"})
    {
        const JsonValue owners = Root()[list];
        for (std::size_t i = 0; i < owners.Size(); ++i)
        {
            const JsonValue uri = owners[i]["uri"];
            if (!uri || IsDataUri(uri.Text()))
                continue;
            try
            {
                paths.push_back(RelativePathOf(uri.Text()));
            }
            catch (const Error&) // an image somewhere else, which nobody opens
            {
                continue;
            }
        }
    }
    return paths;
}

} // namespace gltf
