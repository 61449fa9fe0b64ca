#include "tests/support/sample_scenes.h"

#include "tests/support/sample_records.h"

#include <concepts>

using namespace TEV2_LOADER;

namespace tv2_tests
{

namespace
{

void FillHierarchy(TEV2_MATRIX_HIERARCHY& hierarchy)
{
    hierarchy.nodes.resize(3);
    hierarchy.nodes[0].name = Wide(u"Hips");
    hierarchy.nodes[0].translation = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0, 1, 0}, {1, 1, 0});
    hierarchy.nodes[0].rotation = SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({0, 0, 0, 1}, {0, 1, 0, 0});
    hierarchy.nodes[1].name = Wide(u"Head");
    hierarchy.nodes[1].parentIndex = 0;
    hierarchy.nodes[1].rotation = SampleTrack<TEV2_ANIMATABLE_QUATERNION_LERP>({0, 0, 0, 1}, {1, 0, 0, 0});
    hierarchy.nodes[1].scale = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 1, 1}, {2, 3, 4});
    hierarchy.nodes[1].userText = Wide(u"text");
    Fill(hierarchy.nodes[1].properties);
    hierarchy.nodes[2].parentIndex = 1;
    hierarchy.LinkParents();
}

/// Appends an object whose body is kept as bytes, all of it or, if it has a placed object, behind that.
template <typename Object>
void AddKept(TEV2::Array<Object>& array, std::unique_ptr<Object> object, bool behind_placed)
{
    const std::uint8_t number = static_cast<std::uint8_t>(object->GetChunkId());
    if constexpr (std::derived_from<Object, TEV2_POSITIONAL_OBJECT>)
        if (behind_placed)
            FillPlaced(*object, u"Kept");
    if (behind_placed)
        object->KeepAfterPlaced({number, number});
    else
        object->Keep({number});
    array.push_back(std::move(object));
}

/// Appends a typed object with every field, one that is kept behind its placed object, and one that is kept as a whole.
template <typename Object>
void AddEach(TEV2::Array<Object>& array)
{
    array.push_back(Filled<Object>());
    if constexpr (std::derived_from<Object, TEV2_POSITIONAL_OBJECT>)
        AddKept(array, std::make_unique<Object>(), true);
    AddKept(array, std::make_unique<Object>(), false);
}

void FillLights(TEV2& scene)
{
    scene.globalLightTint = Filled<TEV2_GLOBAL_LIGHT_TINT>();
    scene.ambientLight = Filled<TEV2_AMBIENT_LIGHT>();
    scene.lights.push_back(Filled<TEV2_POINT_LIGHT>());
    scene.lights.push_back(nullptr);
    scene.lights.push_back(Filled<TEV2_DIRECTIONAL_LIGHT>());
    scene.lights.push_back(Filled<TEV2_SPOT_LIGHT>());
    scene.lights.push_back(std::make_unique<TEV2_SPOT_LIGHT>());
    AddKept(scene.lights, TEV2_LIGHT::Create(1), true);
    AddKept(scene.lights, TEV2_LIGHT::Create(77), false);
}

void FillMaterials(TEV2& scene)
{
    scene.materials.push_back(Filled<TEV2_SHADER_MATERIAL>());
    scene.materials.push_back(Filled<TEV2_STANDARD_MATERIAL>());
    AddKept(scene.materials, TEV2_MATERIAL::Create(5), false);
}

/// One instance a list, of each class and kept in both ways.
void FillInstances(TEV2& scene, bool with_unsaved_lists)
{
    auto& lists = scene.instanceLists;
    lists[0].push_back(Filled<TEV2_INSTANCE>());
    lists[1].push_back(Filled<TEV2_GEOM_INSTANCE>());
    lists[2].push_back(Filled<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>());
    lists[3].push_back(Filled<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>());
    AddKept(lists[4], TEV2_INSTANCE::Create(14), false);
    AddKept(lists[5], TEV2_INSTANCE::Create(16), true);
    AddKept(lists[6], TEV2_INSTANCE::Create(18), true);
    AddKept(lists[8], TEV2_INSTANCE::Create(14), false);
    if (!with_unsaved_lists)
        return;
    lists[7].push_back(Filled<TEV2_INSTANCE>());
    lists[9].push_back(Filled<TEV2_GEOM_INSTANCE>());
}

} // namespace

void FillWithEverything(TEV2& scene, bool with_unsaved_lists)
{
    scene.information.creatorText = Wide(u"creator");
    scene.information.infoText = Wide(u"line\r\n");
    scene.environment.timeRange = {0.5f, 2.5f};
    scene.environment.environmentColour =
        SampleTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>({1, 0, 0, 1}, {0, 1, 0, 1});
    scene.environment.environmentMap = Filled<TEV2_NORMAL_MATERIAL_MAP>();
    scene.environment.reserved = {1, 2, 3, 4, 5, 6, 7, 8};
    scene.cameraMan.cameraIndex = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(0, -1);
    FillHierarchy(scene.matrixHierarchy);

    FillLights(scene);
    scene.cameras.push_back(Filled<TEV2_CAMERA>());
    scene.cameras.push_back(Filled<TEV2_CAMERA>());
    scene.cameras[1]->keptEffects = {2, Bytes().U32({1, 0, 1}).data};
    AddEach(scene.rigids);
    AddEach(scene.animMeshes);
    AddEach(scene.morphMeshes);
    AddEach(scene.weightedMeshes);
    AddEach(scene.bezierSplines);
    AddEach(scene.helpers);
    AddEach(scene.speedTreeReferences);
    FillMaterials(scene);
    FillInstances(scene, with_unsaved_lists);
    AddEach(scene.xrefs15);
    AddEach(scene.xrefs20);
    AddEach(scene.xrefObjects);
}

void FillSoundScene(TEV2& scene)
{
    scene.environment.timeRange = {0.0f, 1.0f};
    scene.information.creatorText = Wide(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    scene.information.infoText = Wide(u"USERNAME:\tann\r\nFBX_FILE:\twalk.bvh\r\n");

    const char* names[] = {"Scene", "Hips", "Camera"};
    for (std::int32_t i = 0; i < 3; ++i)
    {
        TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
        node.name = TEV2_WIDE_STRING::FromBytes(names[i]);
        node.parentIndex = i - 1;
        node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
            {{0.0f, {0.0f, 1.0f, 0.0f}}, {0.5f, {1.0f, 1.0f, 0.0f}}, {1.0f, {0.0f, 1.0f, -2.0f}}});
        node.rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0f, {0.0f, 0.0f, 0.0f, 1.0f}},
                                                                     {0.5f, {0.0f, 0.0f, 0.6f, 0.8f}},
                                                                     {1.0f, {0.0f, 0.0f, 0.0f, 1.0f}}});
    }

    TEV2_EXTENDED_PROPERTIES& properties = scene.matrixHierarchy.nodes[1].properties;
    TEV2_NAMED_STRING_ARRAY& texts = properties.stringArrays.emplace_back();
    texts.name = Wide(u"Quality");
    texts.strings = {Wide(u"Low"), Wide(u"High")};
    properties.intValues.emplace_back().name = Wide(u"Visible");
    properties.intValues[0].track = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 1}, {0.5f, -7}});
    properties.floatValues.emplace_back().name = Wide(u"Blend");
    properties.floatValues[0].track = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 0.25f}});
    properties.vector3Values.emplace_back().name = Wide(u"Offset");
    properties.vector3Values[0].track =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1.0f, 2.0f, 3.0f}}});
    properties.vector4Values.emplace_back().name = Wide(u"Tint");
    properties.vector4Values[0].track =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({{0.0f, {1.0f, 0.5f, 0.0f, 1.0f}}});

    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->name = Wide(u"Camera");
    camera->value = 2;
    camera->inverseAspect = 0.75f;
    camera->distance = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 4.0f}, {0.5f, 4.0f}, {1.0f, 5.0f}});
    camera->fieldOfView =
        MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 0.7f}, {0.5f, 0.7f}, {1.0f, 0.7f}});
    camera->clipRange = MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(
        {{0.0f, {0.1f, 40.0f}}, {0.5f, {0.1f, 40.0f}}, {1.0f, {0.1f, 40.0f}}});
    scene.cameras.push_back(std::move(camera));
    scene.cameraMan.cameraIndex = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 0}, {0.5f, -1}, {1.0f, 0}});
}

Bytes SceneOfVersion(float version)
{
    const Bytes properties = version >= 1.04f ? Bytes::Of(1u, u"notes", 1u, u"one", 0u, 1u, u"weight",
                                                          FloatTrackBytes(0.5f, 0.75f), 0u, 0u)
                                              : Bytes();
    const Bytes bounds =
        version >= 1.13f ? SampleTrackBytes(11, Bytes().F32({0, 0, 0, 1, 1, 1, 1, 1, 1, 2, 2, 2})) : Bytes();
    const Bytes range = SampleTrackBytes(1, Bytes().F32({1, 2, 3, 4}));
    const Bytes effects = Bytes::Of(2u, 1u, 0u, kOurLayout, FloatTrackBytes(0.25f, 0.5f), 0u);
    const Bytes placed = Bytes::Of(u"placed", u"", u"c", 1u, properties, bounds);
    const Bytes camera = Bytes::Of(placed, 0.5f, FloatTrackBytes(1, 2), 0u, range, 0u, effects);
    const Bytes scale = version >= 1.15f ? SampleTrackBytes(3, Bytes().F32({1, 1, 1, 2, 3, 4})) : Bytes();
    const Bytes matrix =
        version <= 1.05f ? Bytes().F32({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}) : Bytes();
    const Bytes translation = SampleTrackBytes(3, Bytes().F32({1, 2, 3, 4, 5, 6}));
    const auto node = [&](std::uint32_t parent)
    {
        const Bytes rotation = SampleTrackBytes(parent == 0 ? 5 : 6, Bytes().F32({0, 0, 0, 1, 1, 0, 0, 0}));
        return Bytes::Of(u"node", parent, translation, rotation, scale, matrix, u"user", properties);
    };
    const Bytes colour = SampleTrackBytes(2, Bytes().F32({1, 0, 0, 1, 0, 1, 0, 1}));
    const Bytes reserved = version >= 1.16f ? Bytes().U8({1, 2, 3, 4, 5, 6, 7, 8}) : Bytes();
    const std::uint32_t lengths = version >= 1.12f ? 23 : version >= 1.1f ? 21 : 18;
    return FileOfVersion(version)
        .Chunk(1, Bytes().U32(0xABCDu).U32(1).Zeros((lengths - 1) * 4))
        .Chunk(2, Bytes::Of(0.5f, 2.5f, colour, 0u, reserved))
        .Chunk(22, SampleTrackBytes(8, Bytes().U32({0, 0xFFFFFFFFu})))
        .Chunk(5, Bytes::Of(0u, placed, Bytes().Zeros(3)))
        .Chunk(6, camera)
        .Chunk(10, Bytes(placed).Zeros(5))
        .Chunk(12, Bytes::Of(2u, node(0xFFFFFFFFu), node(0)))
        .Chunk(16, Bytes::Of(3u, placed, Bytes().Zeros(2)));
}

std::vector<std::uint8_t> SceneImage(const TEV2& scene)
{
    return SavedBytes(scene);
}

std::vector<std::uint8_t> SoundImage()
{
    TEV2 scene;
    FillSoundScene(scene);
    return SceneImage(scene);
}

std::unique_ptr<LoadOutcome> LoadImageOf(const std::vector<std::uint8_t>& image, bool apply_start_time,
                                         const TEV2_LOAD_LIMITS& limits)
{
    auto outcome = std::make_unique<LoadOutcome>();
    TEV2_MEMORY_CURSOR cursor(image.data(), image.size(), &outcome->report, limits);
    outcome->loaded = outcome->scene.Load(cursor, apply_start_time);
    return outcome;
}

} // namespace tv2_tests
