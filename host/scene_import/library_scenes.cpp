#include "host/scene_import/library_scenes.h"

#include "host/scene_import/assimp_reader.h"
#include "host/scene_import/gltf_document.h"
#include "host/scene_import/scene_builder.h"

namespace mobu_host
{
namespace
{

constexpr double kCentimetresPerMetre = 100.0;

} // namespace

bool ImportGltf(const SceneFile& file, ImportNotes& notes, std::string& cause)
{
    GltfDocument document;
    if (!ReadGltfDocument(file, document, notes, cause))
        return false;
    Assimp::Importer importer;
    const aiScene* const scene = ReadWithAssimp(
        importer, file.path, document.bytes, file.bytes.starts_with("glTF") ? ".glb" : ".gltf", notes, cause);
    if (!scene)
        return false;
    SceneReading reading;
    reading.centimetres = kCentimetresPerMetre;
    reading.root_is_a_node = GltfNodeIndex(scene->mRootNode->mName.C_Str()).has_value();
    reading.scene_properties = document.scene_properties;
    reading.describe = [&document](const aiNode& node)
    {
        const std::optional<std::size_t> index = GltfNodeIndex(node.mName.C_Str());
        return index && *index < document.nodes.size() ? document.nodes[*index] : SourceNode();
    };
    reading.take_name = [&document](unsigned animation)
    { return animation < document.animations.size() ? document.animations[animation].name : std::string(); };
    reading.steps = [&document](unsigned animation, const std::string& node)
    {
        SceneReading::Steps steps;
        const std::optional<std::size_t> index = GltfNodeIndex(node);
        if (!index || animation >= document.animations.size())
            return steps;
        const GltfAnimation::Steps& known = document.animations[animation].steps;
        steps.translation = known.translation.contains(*index);
        steps.rotation = known.rotation.contains(*index);
        steps.scale = known.scale.contains(*index);
        return steps;
    };
    return BuildScene(*scene, reading, notes, cause);
}

} // namespace mobu_host
