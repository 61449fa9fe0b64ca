#include "viewer/page_data.h"

#include "tev2_loader/up_axis.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace tev2_viewer
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::string_view kBegin = "{\"format\":1,\"scenes\":[";
constexpr std::string_view kMiddle = "],\"words\":\"";
constexpr std::string_view kEnd = "\"}";

/// One scene into JSON and words.
class SceneWriter
{
public:
    SceneWriter(const TEV2& scene, JsonText& json, Words& words) : scene_(scene), json_(json), words_(words)
    {
    }

    void Write(const std::string& title, bool with_meshes);

private:
    void Node(const TEV2_MATRIX_NODE& node);
    void Camera(const TEV2_CAMERA& camera);
    void Material(const TEV2_MATERIAL* material);
    void Meshes();
    template <typename Mesh>
    void MeshesOf(const TEV2::Array<Mesh>& meshes, std::string_view kind, std::size_t instance_list);
    void Parts(const std::vector<TEV2_TRI_SUB_OBJECT>& parts);
    void MaterialIndex(std::uint32_t material);
    void Instances();
    void Instance(const TEV2_INSTANCE& instance, std::int64_t mesh);
    template <typename Mesh>
    void MeshOf(const Mesh& mesh, std::string_view kind);
    void Vertices(const TEV2_RIGID_VERTICES& vertices);
    void Vertices(const TEV2_ANIM_VERTICES& vertices);
    void VertexTracks(std::string_view key, const TEV2_ANIM_VERTICES& vertices,
                      std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> TEV2_VERTEX_TRACKS::*track);
    void Targets(const std::vector<TEV2_MORPH_TARGET>& targets);
    void Skin(const TEV2_SKIN& skin);
    void Placed(const TEV2_POSITIONAL_OBJECT& object);
    void Properties(const TEV2_EXTENDED_PROPERTIES& properties);
    template <typename Objects>
    void Markers(std::string_view key, const Objects& objects);

    void Name(const TEV2_WIDE_STRING& name) { json_.Key("name").Text(ReadableUnits(name.Text())); }
    void Track(std::string_view key, const TEV2_ANIMATABLE* track);
    void Refer(const Words::Run& run);

    /// A column, left out where it is empty.
    template <typename Value>
    void Column(std::string_view key, const std::vector<Value>& values)
    {
        if (values.empty())
            return;
        json_.Key(key);
        Refer(words_.Add(std::span<const Value>(values)));
    }

    const TEV2& scene_;
    JsonText& json_;
    Words& words_;
    std::int64_t mesh_count_ = 0;
    /// What the page calls the meshes that an instance list repeats; -1 where it does not show one.
    std::array<std::vector<std::int64_t>, TEV2::kInstanceLists> meshes_of_list_;
};

void SceneWriter::Refer(const Words::Run& run)
{
    json_.BeginArray();
    json_.Number(static_cast<std::int64_t>(run.offset))
        .Number(static_cast<std::int64_t>(run.count))
        .EndArray();
}

template <typename Value>
std::vector<float> Components(std::span<const Value> values)
{
    std::vector<float> floats;
    for (const Value& value : values)
        std::apply([&](const auto&... component) { (floats.push_back(component), ...); }, value.Components());
    return floats;
}

/// [kind, place of times, number, place of values, number]: numbers are of keys.
void SceneWriter::Track(std::string_view key, const TEV2_ANIMATABLE* track)
{
    if (track == nullptr)
        return;
    json_.Key(key).BeginArray().Number(track->GetType());
    VisitKeys(*track,
              [&](std::span<const float> times, auto values)
              {
                  using Value = std::remove_cv_t<typename decltype(values)::element_type>;
                  const auto add = [&](const Words::Run& run, std::size_t keys)
                  {
                      json_.Number(static_cast<std::int64_t>(run.offset));
                      json_.Number(static_cast<std::int64_t>(keys));
                  };
                  add(words_.AddOnce(times), times.size());
                  if constexpr (std::is_trivially_copyable_v<Value>)
                      add(words_.Add(values), values.size());
                  else // an object with a table of functions
                      add(words_.AddCopy(Components(values)), values.size());
              });
    json_.EndArray();
}

void SceneWriter::Properties(const TEV2_EXTENDED_PROPERTIES& properties)
{
    const auto write = [this](const auto& values)
    {
        for (const auto& value : values)
        {
            json_.BeginObject();
            Name(value.name);
            Track("track", value.track.get());
            json_.EndObject();
        }
    };
    json_.Key("properties").BeginArray();
    for (const TEV2_NAMED_STRING_ARRAY& array : properties.stringArrays)
    {
        json_.BeginObject();
        Name(array.name);
        json_.Key("texts").BeginArray();
        for (const TEV2_WIDE_STRING& text : array.strings)
            json_.Text(ReadableUnits(text.Text()));
        json_.EndArray().EndObject();
    }
    write(properties.intValues);
    write(properties.floatValues);
    write(properties.vector3Values);
    write(properties.vector4Values);
    json_.EndArray();
}

void SceneWriter::Placed(const TEV2_POSITIONAL_OBJECT& object)
{
    Name(object.name);
    const bool has_node = object.value < scene_.matrixHierarchy.nodes.size();
    json_.Key("node").Number(has_node ? std::int64_t{object.value} : -1);
    Properties(object.properties);
}

void SceneWriter::Node(const TEV2_MATRIX_NODE& node)
{
    const auto count = static_cast<std::int64_t>(scene_.matrixHierarchy.nodes.size());
    json_.BeginObject();
    Name(node.name);
    json_.Key("parent").Number(node.parentIndex >= 0 && node.parentIndex < count ? node.parentIndex : -1);
    Track("translation", node.translation.get());
    Track("rotation", node.rotation.get());
    Track("scale", node.scale.get());
    if (!node.userText.Text().empty())
        json_.Key("text").Text(ReadableUnits(node.userText.Text()));
    Properties(node.properties);
    json_.EndObject();
}

void SceneWriter::Camera(const TEV2_CAMERA& camera)
{
    json_.BeginObject();
    Placed(camera);
    json_.Key("inverseAspect");
    Refer(words_.AddCopy(std::vector<float>{camera.inverseAspect}));
    Track("fieldOfView", camera.fieldOfView.get());
    Track("clipRange", camera.clipRange.get());
    Track("distance", camera.distance.get());
    json_.EndObject();
}

/// A colour to draw with; textures and everything else of a look stay in the file.
void SceneWriter::Material(const TEV2_MATERIAL* material)
{
    json_.BeginObject();
    if (material != nullptr && material->IsTyped())
    {
        Name(material->name);
        json_.Key("twoSided").Number(material->twoSided ? 1 : 0);
        if (const auto* standard = dynamic_cast<const TEV2_STANDARD_MATERIAL*>(material))
        {
            Track("colour", standard->diffuse.get());
            Track("opacity", standard->opacity.get());
        }
        else if (const auto* shader = dynamic_cast<const TEV2_SHADER_MATERIAL*>(material))
        {
            const auto& vectors = shader->vector4s;
            const auto base =
                std::find_if(vectors.begin(), vectors.end(),
                             [](const auto& value) { return value.name.Text() == u"baseColorFactor"; });
            if (base != vectors.end())
                Track("colour", base->track.get());
        }
    }
    json_.EndObject();
}

void SceneWriter::Vertices(const TEV2_RIGID_VERTICES& vertices)
{
    json_.Key("vertices").Number(static_cast<std::int64_t>(vertices.Count()));
    Column("positions", vertices.positions);
    Column("normals", vertices.normals);
}

/// Four words for each vertex: place of times, number of keys, place of values, number. Without a track they are 0.
void SceneWriter::VertexTracks(std::string_view key, const TEV2_ANIM_VERTICES& vertices,
                               std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> TEV2_VERTEX_TRACKS::*track)
{
    std::vector<std::uint32_t> table;
    bool any = false;
    for (const TEV2_VERTEX_TRACKS& tracks : vertices.tracks)
    {
        table.resize(table.size() + 4);
        if (!(tracks.*track))
            continue;
        any = true;
        VisitKeys(*(tracks.*track),
                  [&](std::span<const float> times, auto values)
                  {
                      if constexpr (std::is_same_v<typename decltype(values)::value_type, TEV2_VECTOR_3>)
                      {
                          const auto last = table.end() - 4;
                          last[0] = static_cast<std::uint32_t>(words_.AddOnce(times).offset);
                          last[1] = static_cast<std::uint32_t>(times.size());
                          last[2] = static_cast<std::uint32_t>(words_.Add(values).offset);
                          last[3] = static_cast<std::uint32_t>(values.size());
                      }
                  });
    }
    if (!any)
        return;
    json_.Key(key);
    Refer(words_.AddCopy(std::move(table)));
}

void SceneWriter::Vertices(const TEV2_ANIM_VERTICES& vertices)
{
    json_.Key("vertices").Number(static_cast<std::int64_t>(vertices.tracks.size()));
    VertexTracks("positionTracks", vertices, &TEV2_VERTEX_TRACKS::position);
    VertexTracks("normalTracks", vertices, &TEV2_VERTEX_TRACKS::normal);
}

void SceneWriter::Targets(const std::vector<TEV2_MORPH_TARGET>& targets)
{
    json_.Key("targets").BeginArray();
    for (const TEV2_MORPH_TARGET& target : targets)
    {
        json_.BeginObject();
        Name(target.name);
        Track("weight", target.track.get());
        Column("vertices", target.offsets.vertices);
        Column("positions", target.offsets.positions);
        Column("normals", target.offsets.normals);
        json_.EndObject();
    }
    json_.EndArray();
}

void SceneWriter::Skin(const TEV2_SKIN& skin)
{
    json_.Key("skin").BeginObject();
    json_.Key("influences").Number(skin.influences);
    Column("boneIndices", skin.boneIndices);
    Column("weights", skin.weights);
    Column("bones", skin.bones);
    if (skin.bindMatrices.size() == skin.bones.size())
        Column("binds", skin.bindMatrices);
    json_.EndObject();
}

void SceneWriter::MaterialIndex(std::uint32_t material)
{
    json_.Number(material < scene_.materials.size() ? std::int64_t{material} : -1);
}

void SceneWriter::Parts(const std::vector<TEV2_TRI_SUB_OBJECT>& parts)
{
    json_.Key("parts").BeginArray();
    for (const TEV2_TRI_SUB_OBJECT& part : parts)
    {
        json_.BeginObject().Key("material");
        MaterialIndex(part.material);
        Column("corners", part.triangles);
        json_.EndObject();
    }
    json_.EndArray();
}

template <typename Mesh>
void SceneWriter::MeshOf(const Mesh& mesh, std::string_view kind)
{
    json_.BeginObject();
    Placed(mesh);
    json_.Key("kind").Text(kind);
    Track("visibility", mesh.visibility.get());
    Vertices(*mesh.vertices);
    Parts(mesh.subObjects);
    if constexpr (requires { mesh.targets; })
        Targets(mesh.targets);
    if constexpr (requires { mesh.skin; })
        Skin(*mesh.skin);
    json_.EndObject();
}

template <typename Mesh>
void SceneWriter::MeshesOf(const TEV2::Array<Mesh>& meshes, std::string_view kind, std::size_t instance_list)
{
    for (const auto& mesh : meshes)
    {
        const bool shown = mesh && mesh->IsTyped();
        meshes_of_list_[instance_list].push_back(shown ? mesh_count_++ : -1);
        if (shown)
            MeshOf(*mesh, kind);
    }
}

void SceneWriter::Meshes()
{
    MeshesOf(scene_.rigids, "rigid", 5);
    MeshesOf(scene_.animMeshes, "anim", 0);
    MeshesOf(scene_.morphMeshes, "morph", 4);
    MeshesOf(scene_.weightedMeshes, "weighted", 6);
}

/// A mesh again. Its triangles and materials are those of the mesh, unless it has its own.
void SceneWriter::Instance(const TEV2_INSTANCE& instance, std::int64_t mesh)
{
    json_.BeginObject();
    Placed(instance);
    json_.Key("mesh").Number(mesh);
    if (const auto* differing = dynamic_cast<const TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS*>(&instance))
    {
        json_.Key("materials").BeginArray();
        for (const std::uint32_t material : differing->materials)
            MaterialIndex(material);
        json_.EndArray();
    }
    if (const auto* differing = dynamic_cast<const TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS*>(&instance))
        Parts(differing->subObjects);
    json_.EndObject();
}

void SceneWriter::Instances()
{
    for (std::size_t list = 0; list < TEV2::kInstanceLists; ++list)
    {
        const std::vector<std::int64_t>& meshes = meshes_of_list_[list];
        for (const auto& instance : scene_.instanceLists[list])
        {
            const bool has_source = instance && instance->IsTyped() && instance->source < meshes.size();
            if (has_source && meshes[instance->source] >= 0)
                Instance(*instance, meshes[instance->source]);
        }
    }
}

/// Objects of which a page shows no more than that they are there.
template <typename Objects>
void SceneWriter::Markers(std::string_view key, const Objects& objects)
{
    json_.Key(key).BeginArray();
    for (const auto& object : objects)
    {
        if (!object)
            continue;
        json_.BeginObject();
        Placed(*object);
        json_.EndObject();
    }
    json_.EndArray();
}

void SceneWriter::Write(const std::string& title, bool with_meshes)
{
    json_.BeginObject();
    json_.Key("title").Text(Utf16Text(title));
    json_.Key("up").Text(std::string_view(UpAxisName(UpAxis(scene_))));
    const TEV2_FLOAT32_RANGE& range = scene_.environment.timeRange;
    json_.Key("range");
    Refer(words_.AddCopy(std::vector<float>{range.minimum, range.maximum}));
    json_.Key("nodes").BeginArray();
    for (const TEV2_MATRIX_NODE& node : scene_.matrixHierarchy.nodes)
        Node(node);
    json_.EndArray().Key("cameras").BeginArray();
    static const TEV2_CAMERA kNoCamera;
    for (const auto& camera : scene_.cameras) // the switcher counts them all
        Camera(camera ? *camera : kNoCamera);
    json_.EndArray();
    Track("switcher", scene_.cameraMan.cameraIndex.get());
    Markers("lights", scene_.lights);
    Markers("helpers", scene_.helpers);
    json_.Key("materials").BeginArray();
    for (const auto& material : scene_.materials)
        Material(material.get());
    json_.EndArray().Key("meshes").BeginArray();
    if (with_meshes)
        Meshes();
    json_.EndArray().Key("instances").BeginArray();
    Instances();
    json_.EndArray().EndObject();
}

} // namespace

void PageData::Add(const TEV2& scene, const std::string& title)
{
    SceneWriter(scene, scenes_, words_).Write(title, with_meshes_);
}

std::uint64_t PageData::Length() const
{
    return kBegin.size() + scenes_.Written().size() + kMiddle.size() + words_.Base64Length() + kEnd.size();
}

void PageData::Write(std::string& text) const
{
    text += kBegin;
    text += scenes_.Written();
    text += kMiddle;
    words_.AppendBase64(text);
    text += kEnd;
}

} // namespace tev2_viewer
