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
constexpr double kSmallestFigure = 0.3; // metres
constexpr double kLargestFigure = 10.0;
constexpr std::string_view kNamelessCollada = "$ColladaAutoName$";

std::string TakeNameAsRead(const aiScene& scene, unsigned animation)
{
    return scene.mAnimations[animation]->mName.C_Str();
}

// Seconds a frame; the import library keeps them only in single precision. 0 where the file states nothing
// usable.
double BvhFrameTime(std::string_view text)
{
    constexpr std::string_view kLabel = "Frame Time:";
    const std::size_t label = text.find(kLabel);
    if (label == std::string_view::npos)
        return 0.0;
    text.remove_prefix(label + kLabel.size());
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    double seconds = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return std::isfinite(seconds) && seconds > 0.0 ? seconds : 0.0;
}

struct Box
{
    aiVector3D least, most;
};

// Around the joints of the pose without motion; those of a BVH are only moved against their parents.
void Enclose(const aiNode& node, aiVector3D place, Box& box)
{
    const aiMatrix4x4& local = node.mTransformation;
    place += aiVector3D(local.a4, local.b4, local.c4);
    if (!node.mParent)
        box = {place, place};
    for (unsigned axis = 0; axis < 3; ++axis)
    {
        box.least[axis] = std::min(box.least[axis], place[axis]);
        box.most[axis] = std::max(box.most[axis], place[axis]);
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i)
        Enclose(*node.mChildren[i], place, box);
}

// A figure of a size that nobody has was most likely written in another unit.
void TellImplausibleSize(const aiScene& scene, ImportNotes& notes)
{
    Box box;
    Enclose(*scene.mRootNode, aiVector3D(), box);
    const aiVector3D size = box.most - box.least;
    const double metres = static_cast<double>(std::max({size.x, size.y, size.z})) / kCentimetresPerMetre;
    if (metres <= 0.0 || (metres >= kSmallestFigure && metres <= kLargestFigure))
        return;
    char text[128];
    std::snprintf(text, sizeof text,
                  "BVH has no unit; one unit was taken as one centimetre: the figure is %.3g m tall", metres);
    notes.Tell(text);
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

bool ImportBvh(const SceneFile& file, ImportNotes& notes, std::string& cause)
{
    Assimp::Importer importer;
    const aiScene* const scene = ReadWithAssimp(importer, file.path, file.bytes, file.format, notes, cause);
    if (!scene)
        return false;
    SceneReading reading;
    reading.seconds_per_tick = BvhFrameTime(file.bytes);
    if (reading.seconds_per_tick <= 0.0)
    {
        cause = "its frame time is not a number above 0";
        return false;
    }
    reading.frames_per_second = 1.0 / reading.seconds_per_tick;
    reading.describe = [](const aiNode& node)
    {
        SourceNode source;
        source.name = node.mName.C_Str();
        return source;
    };
    reading.take_name = [scene](unsigned animation) { return TakeNameAsRead(*scene, animation); };
    reading.steps = [](unsigned, const std::string&) { return SceneReading::Steps(); };
    if (!BuildScene(*scene, reading, notes, cause))
        return false;
    TellImplausibleSize(*scene, notes);
    return true;
}

bool ImportGltf(const SceneFile& file, ImportNotes& notes, std::string& cause)
{
    GltfDocument document;
    if (!ReadGltfDocument(file, document, notes, cause))
        return false;
    Assimp::Importer importer;
    const aiScene* const scene =
        ReadWithAssimp(importer, file.path, document.bytes, file.format, notes, cause);
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
    const aiScene* const scene =
        ReadWithAssimp(importer, file.path, text.document, file.format, notes, cause);
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
