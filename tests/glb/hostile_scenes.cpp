#include "tests/glb/hostile_scenes.h"

#include "tests/support/hostile_names.h"
#include "tests/support/sample_scenes.h"
#include "tests/tools/typed_scene.h"

#include <cmath>
#include <limits>
#include <numbers>

using namespace TEV2_LOADER;

namespace tv2_tests
{

namespace
{

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kTiny = std::numeric_limits<float>::denorm_min();
constexpr float kPi = std::numbers::pi_v<float>;

using Vectors = TEV2_ANIMATABLE_VECTOR_3_LINEAR;
using Rotations = TEV2_ANIMATABLE_QUATERNION_SLERP;
using Floats = TEV2_ANIMATABLE_FLOAT32_LINEAR;
using Ranges = TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR;
using Colours = TEV2_ANIMATABLE_COLOUR_LINEAR;

TEV2_MATRIX_NODE& Hips(TEV2& scene)
{
    return scene.matrixHierarchy.nodes[1];
}

void NotANumber(TEV2& scene)
{
    FillTypedScene(scene);
    Hips(scene).translation =
        MakeTrack<Vectors>({{0.0f, {0, kNan, 0}}, {0.5f, {1, 2, 3}}, {1.0f, {kInfinity, 0, 0}}});
    Hips(scene).rotation = MakeTrack<Rotations>({{0.0f, {kNan, 0, 0, 1}}, {0.5f, {0, 0, 0.6f, 0.8f}}});
    Hips(scene).scale =
        MakeTrack<Vectors>({{0.0f, {1, 1, -kInfinity}}, {kNan, {1, 1, 1}}, {1.0f, {1, 1, 1}}});
    scene.matrixHierarchy.nodes[2].translation = MakeTrack<Vectors>({{0.0f, {kNan, kNan, kNan}}});
    scene.matrixHierarchy.nodes[2].rotation =
        MakeTrack<Rotations>({{kNan, {0, 0, 0, 1}}, {kInfinity, {0, 0, 0, 1}}});
    scene.morphMeshes[0]->targets[0].track = MakeTrack<Floats>({{0.0f, kNan}, {1.0f, 0.5f}});
    scene.environment.timeRange = {kNan, kInfinity};
}

void EqualTimes(TEV2& scene)
{
    FillTypedScene(scene);
    Hips(scene).translation = MakeTrack<Vectors>(
        {{0.0f, {0, 0, 0}}, {0.5f, {1, 0, 0}}, {0.5f, {2, 0, 0}}, {0.25f, {3, 0, 0}}, {1.0f, {}}});
    Hips(scene).rotation = MakeTrack<Rotations>({{0.5f, {0, 0, 0, 1}}, {0.5f, {0, 1, 0, 0}}});
    scene.morphMeshes[0]->targets[0].track = MakeTrack<Floats>({{1.0f, 0}, {1.0f, 1}, {1.0f, 0.5f}});
    // More times than values, and fewer.
    auto uneven = MakeTrack<Vectors>({{0.0f, {}}, {0.5f, {1, 1, 1}}});
    uneven->m_times.push_back(1.0f);
    scene.matrixHierarchy.nodes[2].translation = std::move(uneven);
    auto short_of_times = MakeTrack<Rotations>({{0.0f, {0, 0, 0, 1}}, {0.5f, {0, 1, 0, 0}}});
    short_of_times->m_times.resize(1);
    scene.matrixHierarchy.nodes[2].rotation = std::move(short_of_times);
}

// Far from 0, times of neighbouring keys become equal when they are shifted.
void NegativeTimes(TEV2& scene)
{
    FillTypedScene(scene);
    scene.environment.timeRange = {-1.0f, 1.0f};
    Hips(scene).translation = MakeTrack<Vectors>({{-1.0f, {0, 0, 0}}, {0.0f, {1, 0, 0}}, {1.0f, {0, 0, 1}}});
    Hips(scene).rotation = MakeTrack<Rotations>(
        {{-1e8f, {0, 0, 0, 1}}, {0.0f, {0, 0, 1, 0}}, {kTiny, {0, 1, 0, 0}}, {1e-3f, {0, 0, 0, 1}}});
}

void Rotations0(TEV2& scene)
{
    FillTypedScene(scene);
    Hips(scene).rotation = MakeTrack<Rotations>({{0.0f, {0, 0, 0, 0}},
                                                 {0.5f, {0, 0, 30, 40}},
                                                 {0.75f, {0, kTiny, 0, 0}},
                                                 {1.0f, {0, kLargest, 0, kLargest}}});
    scene.matrixHierarchy.nodes[2].rotation = MakeTrack<Rotations>({{0.0f, {0, 0, 0, 0}}});
    scene.matrixHierarchy.nodes[0].rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_LERP>(
        {{0.0f, {0, 0, 0, 1}}, {0.5f, {0, 0, -0.001f, -1}}, {1.0f, {0, 0, 0, 1.0001f}}});
}

void Extremes(TEV2& scene)
{
    FillTypedScene(scene);
    Hips(scene).translation =
        MakeTrack<Vectors>({{0.0f, {kLargest, -kLargest, kTiny}}, {1.0f, {-kLargest, 0, 0}}});
    Hips(scene).scale = MakeTrack<Vectors>({{0.0f, {0, 0, 0}}, {1.0f, {-1, kLargest, kTiny}}});
    for (TEV2_VECTOR_3& position : scene.rigids[0]->vertices->positions)
        position = {position.x * 1e38f, position.y / 3.0f, kTiny};
    scene.environment.timeRange = {5.0f, -5.0f};
}

void Weights(TEV2& scene)
{
    FillTypedScene(scene);
    TEV2_SKIN& skin = *scene.weightedMeshes[0]->skin;
    skin.influences = 6;
    skin.boneIndices = {0,      1, 0, 1, 0, 1, /**/ 0, 0, 0, 0, 0, 0,
                        /**/ 2, 2, 1, 0, 0, 1, /**/ 1, 1, 1, 1, 1, 1};
    skin.weights = {0.3f, 0.3f, 0,     0,  0,    0, /**/ 0, 0, 0, 0, 0, 0, /**/
                    0.5f, 0.5f, 0.25f, -1, kNan, 1, /**/ 1, 1, 1, 1, 1, 1};
    skin.bones = {0, 1, 99};
    skin.bindMatrices.resize(3);
    skin.bindMatrices[1].m[0][0] = kNan;
    skin.bindMatrices[2].m[0][0] = 0.0f; // singular
}

void SkinWithoutBones(TEV2& scene)
{
    FillTypedScene(scene);
    TEV2_SKIN& skin = *scene.weightedMeshes[0]->skin;
    skin = {};
    scene.weightedMeshes.push_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    auto all_the_same = std::make_unique<TEV2_WEIGHTED_MESH>();
    all_the_same->vertices->positions.resize(3);
    all_the_same->skin->influences = 1;
    all_the_same->skin->boneIndices = {0, 0, 0};
    all_the_same->skin->weights = {1, 1, 1};
    all_the_same->skin->bones = {2, 2, 2};
    scene.weightedMeshes.push_back(std::move(all_the_same)); // no triangles; its matrices are the scene's
}

template <typename Lens>
void AddCamera(TEV2& scene, Lens lens)
{
    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->name = Wide(u"Odd");
    camera->value = 2;
    camera->inverseAspect = 0.75f;
    camera->fieldOfView = MakeTrack<Floats>({{0.0f, 0.7f}});
    camera->clipRange = MakeTrack<Ranges>({{0.0f, {0.1f, 40.0f}}});
    lens(*camera);
    scene.cameras.push_back(std::move(camera));
}

void Lenses(TEV2& scene)
{
    FillTypedScene(scene);
    for (const float angle : {0.0f, -1.0f, kPi, 3.14f, 7.0f, kNan, kInfinity, kTiny})
        AddCamera(scene,
                  [&](TEV2_CAMERA& camera) {
                      camera.fieldOfView = MakeTrack<Floats>({{0.0f, angle}});
                  });
    for (const float aspect : {0.0f, -1.0f, kNan, kInfinity, kTiny, kLargest})
        AddCamera(scene, [&](TEV2_CAMERA& camera) { camera.inverseAspect = aspect; });
    for (const TEV2_FLOAT32_RANGE& range :
         {TEV2_FLOAT32_RANGE(0, 0), TEV2_FLOAT32_RANGE(-1, 10), TEV2_FLOAT32_RANGE(10, 1),
          TEV2_FLOAT32_RANGE(5, 5), TEV2_FLOAT32_RANGE(0.1f, kInfinity), TEV2_FLOAT32_RANGE(kNan, kNan),
          TEV2_FLOAT32_RANGE(kTiny, kLargest)})
        AddCamera(scene, [&](TEV2_CAMERA& camera) { camera.clipRange = MakeTrack<Ranges>({{0.0f, range}}); });
    AddCamera(scene,
              [](TEV2_CAMERA& camera)
              {
                  camera.fieldOfView = nullptr;
                  camera.clipRange = nullptr;
                  camera.value = kNone;
              });
    AddCamera(scene, [](TEV2_CAMERA& camera) { camera.value = 4711; });
    scene.cameras.push_back(nullptr);
    scene.cameraMan.cameraIndex =
        MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 99}, {0.25f, -7}, {0.25f, 1}, {kNan, 0}, {0.5f, 24}});
}

void Lights(TEV2& scene)
{
    FillTypedScene(scene);
    for (const float value : {0.0f, -3.0f, kNan, kInfinity, kTiny, kPi})
    {
        auto spot = std::make_unique<TEV2_SPOT_LIGHT>();
        spot->name = Wide(u"Odd");
        spot->value = 1;
        spot->intensity = MakeTrack<Floats>({{0.0f, value}});
        spot->range = MakeTrack<Floats>({{0.0f, value}});
        spot->cone = MakeTrack<Ranges>({{0.0f, {value, 0.5f}}, {1.0f, {0.1f, 0.2f}}});
        spot->colour = MakeTrack<Colours>({{0.0f, {value, 2.0f, 0.0f, 1.0f}}});
        scene.lights.push_back(std::move(spot));
        auto narrow = std::make_unique<TEV2_SPOT_LIGHT>();
        narrow->cone = MakeTrack<Ranges>({{0.0f, {0.5f, value}}});
        narrow->value = 4711;
        scene.lights.push_back(std::move(narrow));
    }
}

// The loader allows nodes in any order, in circles, and below nodes that are not there.
void Parents(TEV2& scene)
{
    FillTypedScene(scene);
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes.resize(12);
    const std::int32_t parents[] = {5, 0, 1, 3, 6, 7, 4, -1, -77, 4711, 11, 10};
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        nodes[i].parentIndex = parents[i];
        nodes[i].translation = MakeTrack<Vectors>({{0.0f, {0, 1, 0}}, {1.0f, {1, 1, 0}}});
    }
    scene.matrixHierarchy.LinkParents();
}

void DeepChain(TEV2& scene)
{
    FillSoundScene(scene);
    for (std::int32_t parent = 2; parent < 400; ++parent)
        scene.matrixHierarchy.nodes.emplace_back().parentIndex = parent;
    scene.matrixHierarchy.LinkParents();
}

void Names(TEV2& scene)
{
    FillTypedScene(scene);
    auto& nodes = scene.matrixHierarchy.nodes;
    for (const std::u16string& name : HostileNames())
    {
        TEV2_MATRIX_NODE& node = nodes.emplace_back();
        node.name = Wide(name);
        node.parentIndex = 1;
        node.userText = Wide(name);
        for (int twice = 0; twice < 2; ++twice)
        {
            node.properties.intValues.emplace_back().name = Wide(name);
            node.properties.floatValues.emplace_back().name = Wide(name);
            node.properties.floatValues.back().track = MakeTrack<Floats>({{0.0f, twice ? kNan : kInfinity}});
            node.properties.stringArrays.emplace_back().name = Wide(name);
            node.properties.stringArrays.back().strings = {Wide(name), Wide(u"")};
        }
        scene.morphMeshes[0]->targets.emplace_back().name = Wide(name);
        AddCamera(scene, [&](TEV2_CAMERA& camera) { camera.name = Wide(name); });
        scene.materials.push_back(std::make_unique<TEV2_STANDARD_MATERIAL>());
        scene.materials.back()->name = Wide(name);
    }
    scene.matrixHierarchy.LinkParents();
    scene.information.creatorText = Wide(u"\xD800\x0001");
    scene.information.infoText = Wide(std::u16string(1, u'\0') + u"after");
}

void Vertices(TEV2& scene)
{
    FillTypedScene(scene);
    TEV2_RIGID_VERTICES& box = *scene.rigids[0]->vertices;
    box.positions[0] = {kNan, 0, 0};
    box.positions[1] = {kInfinity, 0, 0};
    box.normals = {{0, 0, 0}, {kNan, 0, 0}, {0, 0, 30}, {kTiny, 0, 0}};
    box.frames.resize(4);
    box.frames[1].tangent = {2, 0, 0};
    box.frames[2].tangent = {0, 0, 1}; // along the normal
    box.frames[3].tangent = {kNan, 0, 0};
    box.uvs[0][0] = {kNan, kInfinity};
    box.colours = {{{2, -1, kNan, 1}, {0, 0, 0, 0}, {kInfinity, 0, 0, 5}, {1, 1, 1, 1}}};
    scene.rigids[0]->subObjects[0].triangles = {{0, 0, 0}, {1, 1, 2}, {3, 2, 1}};
    scene.rigids[0]->subObjects.emplace_back(); // without triangles
    scene.rigids[0]->subObjects.emplace_back().triangles = {{0, 1, 2}};
    scene.rigids[0]->subObjects[2].material = 4711;
    TEV2_MORPH_MESH& face = *scene.morphMeshes[0];
    face.vertices->uvs.assign(9, face.vertices->uvs[0]);
    face.vertices->colours.assign(3, {{}, {}, {}, {}});
    face.vertices->normals.clear();
    face.targets[0].offsets.normals = {{0, 0, 1}, {0, 0, kNan}}; // the mesh has none
    face.targets[1].offsets.positions = {{kNan, 0, 0}, {kLargest, 0, 0}};
    scene.rigids.push_back(std::make_unique<TEV2_RIGID>()); // nothing in it
    scene.rigids.push_back(nullptr);
    scene.morphMeshes.push_back(std::make_unique<TEV2_MORPH_MESH>());
    scene.morphMeshes.back()->targets.resize(2);
}

void MovingVertices(TEV2& scene)
{
    FillTypedScene(scene);
    auto& tracks = scene.animMeshes[0]->vertices->tracks;
    tracks[0].position = MakeTrack<Vectors>({{0.5f, {kNan, 0, 0}}, {0.5f, {1, 0, 0}}, {0.25f, {2, 0, 0}}});
    tracks[1].position = nullptr;
    tracks[2].normal = MakeTrack<Vectors>({{0.0f, {0, 0, 5}}, {1.0f, {0, 0, 0}}});
    auto waving = std::make_unique<TEV2_ANIM_MESH>();
    waving->vertices->tracks.resize(3);
    auto many = std::make_unique<Vectors>();
    for (int key = 0; key < 100; ++key)
        many->Append(static_cast<float>(key) / 30.0f, {static_cast<float>(key % 7), 0, 1});
    waving->vertices->tracks[1].position = std::move(many);
    waving->subObjects.emplace_back().triangles = {{0, 1, 2}};
    scene.animMeshes.push_back(std::move(waving));
}

void Materials(TEV2& scene)
{
    FillTypedScene(scene);
    auto& standard = static_cast<TEV2_STANDARD_MATERIAL&>(*scene.materials[0]);
    standard.diffuse = MakeTrack<Colours>({{0.0f, {-1, 2, kNan, 7}}});
    standard.emission = MakeTrack<Colours>({{0.0f, {3, kInfinity, -2, 0}}});
    standard.opacity = MakeTrack<Floats>({{0.0f, kNan}});
    standard.shininess = MakeTrack<Floats>({{0.0f, kLargest}});
    auto& shader = static_cast<TEV2_SHADER_MATERIAL&>(*scene.materials[1]);
    shader.strings[0].value = Wide(u"SOMETHING");
    shader.strings.emplace_back().name = Wide(u"extras");
    shader.strings.back().value = Wide(u"{\"not\": json");
    shader.strings.emplace_back().name = Wide(u"KHR_materials_clearcoat");
    shader.floats[0].track = MakeTrack<Floats>({{0.0f, 5.0f}});
    shader.floats[1].track = MakeTrack<Floats>({{0.0f, kNan}});
    const auto add = [&](std::u16string_view name, float value)
    {
        shader.floats.emplace_back().name = Wide(name);
        shader.floats.back().track = MakeTrack<Floats>({{0.0f, value}});
    };
    add(u"alphaCutoff", -2.0f);
    add(u"metallicFactor", 0.5f); // a second time
    add(u"KHR_materials_clearcoat.clearcoatFactor", -4.0f);
    add(u"KHR_materials_ior.ior", 0.5f);
    add(u"KHR_no_such_extension.x", 1.0f);
    add(u".", 1.0f);
    shader.vector4s.emplace_back().name = Wide(u"baseColorFactor");
    shader.vector4s[0].track = MakeTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({{0.0f, {2, -1, kNan, 1}}});
    shader.vector3s.emplace_back().name = Wide(u"emissiveFactor");
    shader.vector3s[0].track = MakeTrack<Vectors>({{0.0f, {9, -1, 0}}});
    const char16_t* files[] = {
        u"../../etc/passwd", u"C:\\images\\a b.png",      u"/absolute.png", u"",
        u"data:text/html,x", u"http://example.com/a.png", u"a?b#c%zz.png",  u"image.webp",
        u"\xD800.png"};
    for (const char16_t* file : files)
    {
        auto map = std::make_unique<TEV2_BITMAP_MATERIAL_MAP>();
        map->name = Wide(u"normalTexture");
        map->params.fileName = Wide(file);
        map->coordinates.uvSet = 4711;
        map->amount = MakeTrack<Floats>({{0.0f, -kInfinity}});
        shader.maps.push_back(std::move(map));
    }
}

void Instances(TEV2& scene)
{
    FillTypedScene(scene);
    for (std::size_t list = 0; list < TEV2::kInstanceLists; ++list)
        for (const std::uint32_t source : {0u, 4711u, kNone})
        {
            auto instance = std::make_unique<TEV2_INSTANCE>();
            instance->source = source;
            instance->value = source == 4711 ? 4711 : 2; // all on the node of the camera
            scene.instanceLists[list].push_back(std::move(instance));
        }
    auto beyond = std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>();
    beyond->source = 0;
    beyond->subObjects.emplace_back().triangles = {{0, 1, 4711}};
    scene.instanceLists[5].push_back(std::move(beyond));
    auto materials = std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>();
    materials->source = 0;
    materials->materials = {4711, 0, 1, kNone};
    scene.instanceLists[5].push_back(std::move(materials));
}

void Nothing(TEV2& /*scene*/) {}

void OneBareNode(TEV2& scene)
{
    scene.matrixHierarchy.nodes.resize(1);
}

void MeshWithoutNodes(TEV2& scene)
{
    FillTypedScene(scene);
    scene.matrixHierarchy.nodes.clear();
}

constexpr HostileScene kScenes[] = {
    {"sound", FillSoundScene},
    {"typed", FillTypedScene},
    {"everything", [](TEV2& scene) { FillWithEverything(scene); }},
    {"not_a_number", NotANumber},
    {"equal_times", EqualTimes},
    {"negative_times", NegativeTimes},
    {"rotations", Rotations0},
    {"extremes", Extremes},
    {"weights", Weights},
    {"skin_without_bones", SkinWithoutBones},
    {"lenses", Lenses},
    {"lights", Lights},
    {"parents", Parents},
    {"deep_chain", DeepChain},
    {"names", Names},
    {"vertices", Vertices},
    {"moving_vertices", MovingVertices},
    {"materials", Materials},
    {"instances", Instances},
    {"nothing", Nothing},
    {"one_bare_node", OneBareNode},
    {"mesh_without_nodes", MeshWithoutNodes},
};

} // namespace

std::span<const HostileScene> HostileScenes()
{
    return kScenes;
}

} // namespace tv2_tests
