#include "tools/tv2/scene_objects.h"

#include "tev2_loader/walk.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <optional>
#include <utility>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

/// The node of a placed object: null in the world, and a name where there is such a node.
void AddNode(Json& json, const TEV2& scene, std::uint32_t node)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    json["node"] = node == kNone ? Json() : Json(node);
    json["nodeName"] = node < nodes.size() ? ReadableText(nodes[node].name.Text()) : "";
}

/// "rigids[3]" and the name.
Json Entry(const char* list, std::size_t index, const TEV2_ENTITY& object)
{
    return {{"path", std::string(list) + '[' + std::to_string(index) + ']'},
            {"name", ReadableText(object.name.Text())}};
}

/// Calls describe(object, index) for the objects of an array whose bodies are typed; returns the answers.
template <typename Object, typename Describe>
void Append(Json& list, const TEV2::Array<Object>& objects, const Describe& describe)
{
    for (std::size_t i = 0; i < objects.size(); ++i)
        if (objects[i] && objects[i]->IsTyped())
            list.push_back(describe(std::as_const(*objects[i]), i));
}

template <typename Object>
std::size_t CountTyped(const TEV2::Array<Object>& objects)
{
    return static_cast<std::size_t>(std::ranges::count_if(
        objects, [](const auto& object) { return object != nullptr && object->IsTyped(); }));
}

Json Lights(const TEV2& scene)
{
    static constexpr const char* kTypes[] = {"point", "directional", "spot"};
    Json list = Json::array();
    Append(list, scene.lights,
           [&](const TEV2_LIGHT& light, std::size_t index)
           {
               Json entry = Entry("lights", index, light);
               entry["type"] = kTypes[light.GetType()];
               AddNode(entry, scene, light.value);
               return entry;
           });
    return list;
}

template <typename Mesh>
void AppendMeshes(Json& list, const TEV2& scene, const TEV2::Array<Mesh>& meshes, const char* label,
                  const char* type)
{
    Append(list, meshes,
           [&](const Mesh& mesh, std::size_t index)
           {
               Json entry = Entry(label, index, mesh);
               entry["type"] = type;
               AddNode(entry, scene, mesh.value);
               entry["vertices"] = mesh.vertices->Count();
               entry["triangles"] = mesh.TriangleCount();
               entry["bones"] = 0;
               entry["targets"] = 0;
               if constexpr (requires { mesh.skin; })
                   entry["bones"] = mesh.skin->bones.size();
               if constexpr (requires { mesh.targets; })
                   entry["targets"] = mesh.targets.size();
               return entry;
           });
}

Json Meshes(const TEV2& scene)
{
    Json list = Json::array();
    AppendMeshes(list, scene, scene.rigids, "rigids", "rigid");
    AppendMeshes(list, scene, scene.animMeshes, "animMeshes", "anim");
    AppendMeshes(list, scene, scene.morphMeshes, "morphMeshes", "morph");
    AppendMeshes(list, scene, scene.weightedMeshes, "weightedMeshes", "weighted");
    return list;
}

Json Materials(const TEV2& scene)
{
    Json list = Json::array();
    Append(list, scene.materials,
           [](const TEV2_MATERIAL& material, std::size_t index)
           {
               Json entry = Entry("materials", index, material);
               const bool shader = material.GetType() == TEV2_SHADER_MATERIAL::kType;
               entry["type"] = shader ? "shader" : "standard";
               if (shader)
                   entry["shader"] =
                       ReadableText(static_cast<const TEV2_SHADER_MATERIAL&>(material).shader.Text());
               return entry;
           });
    return list;
}

Json Reference(const char* list, std::size_t index, const char* type, const TEV2_WIDE_STRING& file)
{
    return {{"path", std::string(list) + '[' + std::to_string(index) + ']'},
            {"type", type},
            {"fileName", ReadableText(file.Text())}};
}

Json References(const TEV2& scene)
{
    Json list = Json::array();
    Append(list, scene.xrefs15,
           [](const auto& scene_file, std::size_t index)
           { return Reference("xrefs15", index, "scene", scene_file.fileName); });
    Append(list, scene.xrefs20,
           [](const auto& library, std::size_t index)
           { return Reference("xrefs20", index, "library", library.fileName); });
    Append(list, scene.xrefObjects,
           [&](const TEV2_XREF_OBJECT& object, std::size_t index)
           {
               const bool found = object.library < scene.xrefs20.size() && scene.xrefs20[object.library];
               Json entry = Reference("xrefObjects", index, "object",
                                      found ? scene.xrefs20[object.library]->fileName : TEV2_WIDE_STRING());
               entry["objectName"] = ReadableText(object.objectName.Text());
               return entry;
           });
    Append(list, scene.speedTreeReferences,
           [](const TEV2_XREF_SPEEDTREE& tree, std::size_t index)
           { return Reference("speedTreeReferences", index, "SpeedTree", tree.fileName); });
    return list;
}

/// Collects the bodies that are kept as bytes.
class KeptBodies : public TEV2_FIELD_VISITOR
{
public:
    Json list = Json::array();

    explicit KeptBodies(const LoadedFile& file) : file_(file)
    {
        for (const TEV2_LOAD_FINDING& finding : file.report.findings)
            if (finding.code == TEV2_LOAD_CODE::BodyKept ||
                finding.code == TEV2_LOAD_CODE::UnparsedOtherVersion)
                reasons_.try_emplace(finding.chunkOffset, &finding);
    }

    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        if (std::string_view(field.label) == "name")
        {
            record_ = field.record;
            name_ = text.Text();
            node_.reset();
        }
    }

    void Number(const TEV2_FIELD& field, double number) override
    {
        if (std::string_view(field.label) == "value" && field.record == record_)
            node_ = static_cast<std::uint32_t>(number);
    }

    void Bytes(const TEV2_FIELD& field, std::span<const std::uint8_t> bytes) override
    {
        const std::string_view label = field.label;
        const bool body = label == "body";
        if (!body && label != "environmentMap" && (label != "keptEffects" || bytes.empty()))
            return;
        const TEV2_KIND* const kind = FindChunkKind(field.chunkId);
        const bool placed = field.record == record_ && node_;
        Json entry = {{"path", body ? field.record : field.Path()},
                      {"name", placed ? ReadableText(name_) : ""}};
        entry["class"] = kind != nullptr ? kind->className : "";
        if (placed)
            AddNode(entry, *file_.scene, *node_);
        entry["offset"] = field.offset;
        entry["bytes"] = bytes.size();
        entry["reason"] = Reason(field);
        list.push_back(std::move(entry));
    }

private:
    /// What the load reported about the chunk; empty when there were too many warnings.
    std::string Reason(const TEV2_FIELD& field) const
    {
        const auto entry = reasons_.find(field.chunkOffset);
        if (entry == reasons_.end())
            return {};
        const TEV2_LOAD_FINDING& finding = *entry->second;
        if (finding.code == TEV2_LOAD_CODE::UnparsedOtherVersion)
            return "the file has " + finding.found + ", not " + finding.expected;
        std::string_view place = finding.path;
        if (place.starts_with(field.record))
            place.remove_prefix(std::min(place.size(), field.record.size() + 1));
        return (place.empty() ? "at byte " : std::string(place) + " at byte ") +
               std::to_string(finding.offset) + ": expected " + finding.expected + ", found " + finding.found;
    }

    const LoadedFile& file_;
    std::string record_; ///< whose name was seen last
    std::u16string name_;
    std::optional<std::uint32_t> node_;                         ///< of that record
    std::map<std::uint64_t, const TEV2_LOAD_FINDING*> reasons_; ///< by the chunk
};

constexpr std::size_t kMostListed = 10;

std::string QuotedMember(const Json& entry, const char* member)
{
    return Quoted(entry[member].get<std::string>());
}

std::string PlaceText(const Json& entry)
{
    if (entry["node"].is_null())
        return "in the world";
    const std::string name = entry["nodeName"].get<std::string>();
    return "at node " + entry["node"].dump() + (name.empty() ? "" : " " + Quoted(name));
}

std::string Number(const Json& entry, const char* member, const char* singular, const char* plural)
{
    return CountOf(entry[member].get<std::uint64_t>(), singular, plural);
}

std::string LightText(const Json& light)
{
    return QuotedMember(light, "name") + ", " + light["type"].get<std::string>() + ", " + PlaceText(light);
}

std::string MeshText(const Json& mesh)
{
    std::string text = QuotedMember(mesh, "name") + ", " + mesh["type"].get<std::string>() + ", " +
                       Number(mesh, "vertices", "vertex", "vertices") + ", " +
                       Number(mesh, "triangles", "triangle", "triangles");
    if (mesh["bones"] != 0)
        text += ", " + Number(mesh, "bones", "bone", "bones");
    if (mesh["targets"] != 0)
        text += ", " + Number(mesh, "targets", "target", "targets");
    return text;
}

std::string MaterialText(const Json& material)
{
    return QuotedMember(material, "name") + ", " + material["type"].get<std::string>() +
           (material.contains("shader") ? " " + QuotedMember(material, "shader") : "");
}

std::string ReferenceText(const Json& reference)
{
    const std::string text = reference["type"].get<std::string>() + ' ';
    if (reference.contains("objectName"))
        return text + QuotedMember(reference, "objectName") + " of " + QuotedMember(reference, "fileName");
    return text + QuotedMember(reference, "fileName");
}

std::string KeptText(const Json& body)
{
    std::string text = body["path"].get<std::string>();
    if (body.contains("node"))
        text += ' ' + QuotedMember(body, "name") + ' ' + PlaceText(body);
    text += ", kept as bytes, " + Number(body, "bytes", "byte", "bytes");
    const std::string reason = body["reason"].get<std::string>();
    return text + (reason.empty() ? "" : ", because " + OneLine(reason));
}

/// The kinds that are printed one by one, or with their number alone.
constexpr struct
{
    const char* member;
    std::string (*text)(const Json& entry);
} kKinds[] = {
    {"lights", LightText}, {"meshes", MeshText},   {"materials", MaterialText},   {"splines", nullptr},
    {"helpers", nullptr},  {"instances", nullptr}, {"references", ReferenceText}, {"kept", KeptText},
};

} // namespace

Json DescribeObjects(const LoadedFile& file)
{
    const TEV2& scene = *file.scene;
    std::size_t instances = 0;
    for (const auto& list : scene.instanceLists)
        instances += CountTyped(list);
    KeptBodies kept(file);
    WalkScene(scene, file.image.data(), file.report, kept);
    return {{"lights", Lights(scene)},
            {"meshes", Meshes(scene)},
            {"materials", Materials(scene)},
            {"splines", CountTyped(scene.bezierSplines)},
            {"helpers", CountTyped(scene.helpers)},
            {"instances", instances},
            {"references", References(scene)},
            {"kept", std::move(kept.list)}};
}

void PrintObjects(const Json& objects, std::ostream& out)
{
    const auto line = [&out](const char* label) -> std::ostream&
    { return out << "  " << std::left << std::setw(12) << label << ' '; };
    for (const auto& kind : kKinds)
    {
        const Json& list = objects[kind.member];
        const auto count = list.is_array() ? list.size() : list.get<std::size_t>();
        if (count == 0)
            continue;
        line(kind.member) << CountText(count) << '\n';
        if (kind.text == nullptr)
            continue;
        for (std::size_t i = 0; i < std::min(count, kMostListed); ++i)
            line("") << kind.text(list[i]) << '\n';
        if (count > kMostListed)
            line("") << "... " << CountText(count - kMostListed) << " more\n";
    }
}

} // namespace tv2
