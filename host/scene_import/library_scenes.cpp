#include "host/scene_import/library_scenes.h"

#include "host/scene_import/assimp_reader.h"
#include "host/scene_import/collada_text.h"
#include "host/scene_import/gltf_document.h"
#include "host/scene_import/scene_builder.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace mobu_host
{
namespace
{

constexpr double kCentimetresPerMetre = 100.0;
constexpr std::string_view kNamelessCollada = "$ColladaAutoName$";

std::string TakeNameAsRead(const aiScene& scene, unsigned animation)
{
    return scene.mAnimations[animation]->mName.C_Str();
}

SourceLens LensOf(const aiCamera& camera)
{
    SourceLens lens;
    lens.horizontal_angle = static_cast<double>(camera.mHorizontalFOV);
    lens.aspect = static_cast<double>(camera.mAspect);
    lens.near_plane = static_cast<double>(camera.mClipPlaneNear);
    lens.far_plane = static_cast<double>(camera.mClipPlaneFar);
    lens.orthographic = camera.mOrthographicWidth > 0.0f;
    return lens;
}

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

bool ImportCollada(const SceneFile& file, ImportNotes& notes, std::string& cause)
{
    const ColladaText text = ScanCollada(file.bytes);
    Assimp::Importer importer;
    const aiScene* const scene = ReadWithAssimp(importer, file.path, text.document, ".dae", notes, cause);
    if (!scene)
        return false;
    if (text.has_curves)
        notes.Add("documents with curves or steps: animation is read as straight lines between keys");
    SceneReading reading;
    reading.centimetres = kCentimetresPerMetre; // the tree's top carries the document's unit, in metres
    reading.root_is_a_node = false;
    reading.describe = [scene, &text](const aiNode& node)
    {
        // The library goes by ids, which are unique and not meant for people.
        SourceNode source;
        source.name = node.mName.C_Str();
        source.has_geometry = node.mNumMeshes > 0;
        if (source.name.starts_with(kNamelessCollada))
            source.name.clear();
        else if (const auto found = text.node_names.find(source.name); found != text.node_names.end())
            source.name = found->second;
        for (unsigned i = 0; i < scene->mNumCameras && !source.lens; ++i)
        {
            if (scene->mCameras[i]->mName == node.mName)
                source.lens = LensOf(*scene->mCameras[i]);
        }
        return source;
    };
    reading.take_name = [scene](unsigned animation) { return TakeNameAsRead(*scene, animation); };
    reading.steps = [](unsigned, const std::string&) { return SceneReading::Steps(); };
    return BuildScene(*scene, reading, notes, cause);
}

} // namespace mobu_host
