#include "host/scene_import/gltf_document.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace mobu_host
{
namespace
{

using Json = nlohmann::ordered_json;

constexpr std::string_view kNodePrefix = "node#";

// Deeper than any rig, and shallow enough for everybody who walks the tree by recursion.
constexpr std::size_t kDeepestNode = 2000;

constexpr int kFloatComponents = 5126;

class Damage : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

std::uint32_t ReadWord(std::string_view bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i)
        word |= std::uint32_t{static_cast<unsigned char>(bytes[offset + i])} << (8 * i);
    return word;
}

void AppendWord(std::string& bytes, std::size_t word)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(word >> (8 * i))));
}

// Where the JSON chunk of a binary glTF stands: after the file header (magic, version, length) and the header
// of the chunk (length, kind).
constexpr std::size_t kJsonOffset = 20;

std::string_view JsonOf(const SceneFile& file)
{
    const std::string_view bytes = file.bytes;
    if (!file.bytes.starts_with("glTF"))
        return bytes;
    if (bytes.size() < kJsonOffset)
        throw Damage("the file ends inside its header");
    if (ReadWord(bytes, 4) != 2)
        throw Damage("glTF version " + std::to_string(ReadWord(bytes, 4)) + " is not read, only 2");
    if (bytes.substr(16, 4) != "JSON")
        throw Damage("the first chunk is not the scene's JSON");
    const std::size_t length = ReadWord(bytes, 12);
    if (length > bytes.size() - kJsonOffset)
        throw Damage("the file ends inside its JSON chunk");
    return bytes.substr(kJsonOffset, length);
}

std::string WithJson(const SceneFile& file, std::string json)
{
    if (!file.bytes.starts_with("glTF"))
        return json;
    const std::size_t old_end = kJsonOffset + ReadWord(file.bytes, 12);
    json.resize((json.size() + 3) / 4 * 4, ' ');
    std::string bytes = "glTF";
    AppendWord(bytes, 2);
    AppendWord(bytes, kJsonOffset + json.size() + (file.bytes.size() - old_end));
    AppendWord(bytes, json.size());
    bytes += "JSON";
    bytes += json;
    bytes.append(file.bytes, old_end);
    return bytes;
}

const Json& Member(const Json& object, const char* key)
{
    static const Json none;
    if (!object.is_object())
        return none;
    const auto found = object.find(key);
    return found == object.end() ? none : *found;
}

std::string TextMember(const Json& object, const char* key)
{
    const Json& member = Member(object, key);
    return member.is_string() ? member.get<std::string>() : std::string();
}

double NumberMember(const Json& object, const char* key)
{
    const Json& member = Member(object, key);
    return member.is_number() ? member.get<double>() : 0.0;
}

std::size_t Index(const Json& value, std::size_t count, const std::string& what)
{
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() >= count)
        throw Damage(what + " leads nowhere");
    return value.get<std::size_t>();
}

std::size_t ArraySize(const Json& value)
{
    return value.is_array() ? value.size() : 0;
}

template <std::size_t kCount>
std::array<double, kCount> Numbers(const Json& value)
{
    std::array<double, kCount> numbers{};
    for (std::size_t i = 0; i < kCount; ++i)
        numbers[i] = value[i].get<double>();
    return numbers;
}

std::optional<SourceProperty::Value> PropertyValue(const Json& value)
{
    if (value.is_boolean())
        return value.get<bool>();
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number_integer())
    {
        const double number = value.get<double>();
        if (number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max())
            return value.get<int>();
        return number;
    }
    if (value.is_number())
        return value.get<double>();
    if (value.is_array())
    {
        for (const Json& element : value)
        {
            if (!element.is_number())
                return std::nullopt;
        }
        if (value.size() == 3)
            return Numbers<3>(value);
        if (value.size() == 4)
            return Numbers<4>(value);
    }
    return std::nullopt;
}

void ReadExtras(const Json& owner, std::vector<SourceProperty>& properties, ImportNotes& notes)
{
    const Json& extras = Member(owner, "extras");
    if (extras.is_null())
        return;
    if (!extras.is_object())
    {
        notes.Add("extras without names are passed over");
        return;
    }
    for (const auto& [name, value] : extras.items())
    {
        if (std::optional<SourceProperty::Value> known = PropertyValue(value))
            properties.push_back({name, *std::move(known)});
        else
            notes.Add("extras that are neither a truth value, a number, 3 or 4 numbers, nor a text are "
                      "passed over");
    }
}

SourceLens ReadLens(const Json& camera)
{
    SourceLens lens;
    lens.orthographic = TextMember(camera, "type") == "orthographic";
    const Json& values = Member(camera, lens.orthographic ? "orthographic" : "perspective");
    lens.near_plane = NumberMember(values, "znear");
    lens.far_plane = NumberMember(values, "zfar");
    lens.aspect = NumberMember(values, "aspectRatio");
    if (lens.orthographic)
    {
        const double height = NumberMember(values, "ymag");
        lens.aspect = height > 0.0 ? NumberMember(values, "xmag") / height : 0.0;
        return lens;
    }
    // The file states the vertical angle. Where it leaves the aspect to the window, a square picture keeps
    // the angle.
    const double half = NumberMember(values, "yfov") / 2.0;
    lens.horizontal_angle = 2.0 * std::atan(std::tan(half) * (lens.aspect > 0.0 ? lens.aspect : 1.0));
    return lens;
}

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// The parent of each node, kNone for those on top. Every node has one parent at most, and going up ends.
std::vector<std::size_t> ReadParents(const Json& nodes)
{
    std::vector<std::size_t> parents(nodes.size(), kNone);
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        const Json& children = Member(nodes[i], "children");
        for (std::size_t c = 0; c < ArraySize(children); ++c)
        {
            const std::size_t child =
                Index(children[c], nodes.size(), "a child of node " + std::to_string(i));
            if (parents[child] != kNone)
                throw Damage("node " + std::to_string(child) + " has two parents");
            parents[child] = i;
        }
    }

    std::vector<std::size_t> depths(nodes.size(), 0); // 0: not known yet
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        std::vector<std::size_t> path;
        std::size_t at = i;
        for (; at != kNone && depths[at] == 0; at = parents[at])
        {
            path.push_back(at);
            if (path.size() > nodes.size())
                throw Damage("node " + std::to_string(i) + " is its own ancestor");
        }
        std::size_t depth = at == kNone ? 0 : depths[at];
        for (; !path.empty(); path.pop_back())
            depths[path.back()] = ++depth;
        if (depth > kDeepestNode)
            throw Damage("its nodes are nested more than " + std::to_string(kDeepestNode) + " deep");
    }
    return parents;
}

void ReadNodes(Json& root, GltfDocument& document, ImportNotes& notes)
{
    Json& nodes = root["nodes"];
    const Json& cameras = Member(root, "cameras");
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        Json& node = nodes[i];
        if (!node.is_object())
            throw Damage("node " + std::to_string(i) + " is no JSON object");
        SourceNode source;
        source.name = TextMember(node, "name");
        source.has_geometry = !Member(node, "mesh").is_null();
        ReadExtras(node, source.properties, notes);
        if (const Json& camera = Member(node, "camera"); !camera.is_null())
        {
            const Json& lens =
                cameras[Index(camera, ArraySize(cameras), "the camera of node " + std::to_string(i))];
            source.lens = ReadLens(lens);
            ReadExtras(lens, source.properties, notes);
        }
        document.nodes.push_back(std::move(source));

        node["name"] = GltfNodeName(i);
        for (const char* key : {"mesh", "skin", "weights", "camera", "extras", "extensions"})
            node.erase(key);
    }
}

// True when the key values of `sampler` are stored in the one way that the import library understands.
bool HasPlainKeys(const Json& root, const Json& sampler)
{
    const Json& accessors = Member(root, "accessors");
    const Json& views = Member(root, "bufferViews");
    for (const char* side : {"input", "output"})
    {
        const Json& accessor =
            accessors[Index(Member(sampler, side), ArraySize(accessors), "an animation sampler")];
        if (Member(accessor, "componentType") != kFloatComponents)
            return false;
        const Json& view = Member(accessor, "bufferView");
        if (!view.is_null() &&
            !Member(views[Index(view, ArraySize(views), "an accessor")], "extensions").is_null())
            return false;
    }
    return true;
}

void ReadAnimations(Json& root, GltfDocument& document, ImportNotes& notes)
{
    if (ArraySize(Member(root, "animations")) == 0)
        return;
    for (Json& animation : root["animations"])
    {
        GltfAnimation known;
        known.name = TextMember(animation, "name");
        const Json& samplers = Member(animation, "samplers");
        const Json& channels = Member(animation, "channels");
        Json kept = Json::array();
        for (std::size_t c = 0; c < ArraySize(channels); ++c)
        {
            const Json& target = Member(channels[c], "target");
            const std::string path = TextMember(target, "path");
            std::set<std::size_t>* steps = path == "translation" ? &known.steps.translation
                                           : path == "rotation"  ? &known.steps.rotation
                                           : path == "scale"     ? &known.steps.scale
                                                                 : nullptr;
            if (!steps)
            {
                notes.Add(path == "weights"
                              ? "blend shape channels are passed over"
                              : "channels of something else than a node's place are passed over");
                continue;
            }
            if (Member(target, "node").is_null())
            {
                notes.Add("channels without a node are passed over");
                continue;
            }
            const std::size_t node =
                Index(Member(target, "node"), document.nodes.size(), "the target of an animation channel");
            const Json& sampler = samplers[Index(Member(channels[c], "sampler"), ArraySize(samplers),
                                                 "the sampler of an animation channel")];
            if (!HasPlainKeys(root, sampler))
            {
                notes.Add("channels with packed or compressed keys are passed over");
                continue;
            }
            const std::string interpolation = TextMember(sampler, "interpolation");
            if (interpolation == "STEP")
                steps->insert(node);
            else if (interpolation == "CUBICSPLINE")
                notes.Add("cubic spline channels are read as straight lines between their keys");
            kept.push_back(channels[c]);
        }
        if (animation.is_object())
            animation["channels"] = std::move(kept);
        document.animations.push_back(std::move(known));
    }
}

void ReadScene(Json& root, const std::vector<std::size_t>& parents, GltfDocument& document,
               ImportNotes& notes)
{
    const std::size_t count = ArraySize(Member(root, "scenes"));
    const Json& chosen = Member(root, "scene");
    if (count == 0)
    {
        if (document.nodes.empty())
            return;
        throw Damage("it holds nodes but no scene that shows them");
    }
    if (count > 1)
        notes.Add("files with several scenes: only the one that the file shows is read");
    const std::size_t index = chosen.is_null() ? 0 : Index(chosen, count, "the scene to show");
    root["scene"] = index;

    Json& scenes = root["scenes"];
    ReadExtras(scenes[index], document.scene_properties, notes);
    for (Json& scene : scenes)
    {
        const Json& roots = Member(scene, "nodes");
        std::set<std::size_t> seen;
        for (std::size_t i = 0; i < ArraySize(roots); ++i)
        {
            const std::size_t node = Index(roots[i], document.nodes.size(), "a node of the scene");
            if (parents[node] != kNone || !seen.insert(node).second)
                throw Damage("node " + std::to_string(node) + " stands in the scene twice");
        }
        if (scene.is_object())
            scene.erase("extras");
    }
}

} // namespace

std::string GltfNodeName(std::size_t index)
{
    return std::string(kNodePrefix) + std::to_string(index);
}

std::optional<std::size_t> GltfNodeIndex(std::string_view name)
{
    if (!name.starts_with(kNodePrefix))
        return std::nullopt;
    name.remove_prefix(kNodePrefix.size());
    std::size_t index = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), index);
    if (error != std::errc{} || end != name.data() + name.size())
        return std::nullopt;
    return index;
}

bool ReadGltfDocument(const SceneFile& file, GltfDocument& document, ImportNotes& notes, std::string& cause)
{
    try
    {
        Json root = Json::parse(JsonOf(file));
        if (!Member(root, "asset").is_object())
            throw Damage("its JSON is not a glTF scene");
        const std::string version = TextMember(Member(root, "asset"), "version");
        if (!version.starts_with("2."))
            throw Damage("glTF version \"" + version + "\" is not read, only 2");
        if (!Member(root, "nodes").is_array())
            root["nodes"] = Json::array();

        const std::vector<std::size_t> parents = ReadParents(root["nodes"]);
        ReadNodes(root, document, notes);
        ReadAnimations(root, document, notes);
        ReadScene(root, parents, document, notes);
        for (const char* key : {"meshes", "skins", "materials", "textures", "images", "samplers", "cameras",
                                "extensions", "extensionsUsed", "extensionsRequired", "extras"})
            root.erase(key);
        document.bytes = WithJson(file, root.dump());
        return true;
    }
    catch (const Json::parse_error& error)
    {
        cause = "damaged JSON at byte " + std::to_string(error.byte);
    }
    catch (const std::exception& error)
    {
        cause = error.what();
    }
    return false;
}

} // namespace mobu_host
