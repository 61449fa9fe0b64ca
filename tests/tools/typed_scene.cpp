#include "tests/tools/typed_scene.h"

#include "tests/support/sample_scenes.h"

using namespace TEV2_LOADER;

namespace tv2_tests
{

namespace
{

template <typename Object>
Object& Add(TEV2::Array<Object>& objects, std::unique_ptr<Object> object, std::u16string_view name,
            std::uint32_t node)
{
    object->name = Wide(name);
    object->value = node;
    return *objects.emplace_back(std::move(object));
}

template <typename Object>
Object& Add(TEV2::Array<Object>& objects, std::u16string_view name, std::uint32_t node)
{
    return Add(objects, std::make_unique<Object>(), name, node);
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> Float(float value)
{
    return MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, value}});
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> Range(float first, float second)
{
    return MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({{0.0f, {first, second}}});
}

std::unique_ptr<TEV2_ANIMATABLE_COLOUR> Colour(float red, float green, float blue)
{
    return MakeTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>(
        {{0.0f, {red, green, blue, 1.0f}}, {1.0f, {0.0f, 0.0f, 0.0f, 1.0f}}});
}

std::unique_ptr<TEV2_BITMAP_MATERIAL_MAP> Image(std::u16string_view name, std::u16string_view file,
                                                std::uint32_t uv_set)
{
    auto map = std::make_unique<TEV2_BITMAP_MATERIAL_MAP>();
    map->name = Wide(name);
    map->amount = Float(1.0f);
    map->params.fileName = Wide(file);
    map->params.minify = TEV2_BITMAP_MINIFY::NearestMipLinear;
    map->coordinates.uvSet = uv_set;
    map->coordinates.wrap.v = TEV2_UV_WRAP::Clamp;
    return map;
}

void FillLights(TEV2& scene)
{
    scene.ambientLight = std::make_unique<TEV2_AMBIENT_LIGHT>();
    scene.ambientLight->colour = Colour(0.1f, 0.1f, 0.2f);
    scene.globalLightTint = std::make_unique<TEV2_GLOBAL_LIGHT_TINT>();
    auto spot = std::make_unique<TEV2_SPOT_LIGHT>();
    spot->intensity = Float(40.0f);
    spot->range = Float(25.0f);
    spot->cone = Range(0.25f, 0.5f);
    spot->shadow = std::make_unique<TEV2_LIGHT_SHADOW_PARAMS>();
    spot->shadow->method = TEV2_SHADOW_METHOD::Traced;
    spot->shadow->object.density = Float(0.75f);
    spot->shadow->atmosphere = std::make_unique<TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS>();
    spot->shadow->map = std::make_unique<TEV2_LIGHT_SHADOW_MAP_PARAMS>();
    spot->max = std::make_unique<TEV2_MAX_LIGHT_PARAMS>();
    spot->max->attenuation.farRange = Range(10.0f, 20.0f);
    spot->max->projector = Image(u"gobo", u"gobo.png", 7); // no mesh needs that set
    Add<TEV2_LIGHT>(scene.lights, std::move(spot), u"Key", 2);
    auto sun = std::make_unique<TEV2_DIRECTIONAL_LIGHT>();
    sun->beam = Range(5.0f, 5.0f);
    Add<TEV2_LIGHT>(scene.lights, std::move(sun), u"Sun", kNone);
}

void FillMaterials(TEV2& scene)
{
    auto skin = std::make_unique<TEV2_STANDARD_MATERIAL>();
    skin->name = Wide(u"Skin");
    skin->shading = TEV2_SHADING::Phong;
    skin->diffuse = Colour(0.8f, 0.6f, 0.5f);
    skin->opacity = Float(1.0f);
    skin->maps.resize(2);
    skin->maps[0].map = Image(u"", u"maps/skin.png", 0);
    auto normals = std::make_unique<TEV2_NORMAL_MATERIAL_MAP>();
    normals->direction.greenDown = true;
    normals->image = Image(u"", u"maps/skin_normals.png", 0);
    skin->maps[1] = {TEV2_MATERIAL_CHANNEL::Normals, std::move(normals)};
    scene.materials.push_back(std::move(skin));

    auto metal = std::make_unique<TEV2_SHADER_MATERIAL>();
    metal->name = Wide(u"Metal");
    metal->twoSided = true;
    metal->shader = Wide(u"metallic-roughness");
    metal->strings.emplace_back().name = Wide(u"alphaMode");
    metal->strings[0].value = Wide(u"OPAQUE");
    metal->floats.resize(2);
    metal->floats[0].name = Wide(u"metallicFactor");
    metal->floats[1].name = Wide(u"roughnessFactor");
    metal->floats[1].track = Float(0.4f);
    metal->lights.emplace_back().name = Wide(u"key");
    metal->lights[0].light = 0;
    metal->maps.push_back(Image(u"baseColorTexture", u"metal.png", 1));
    scene.materials.push_back(std::move(metal));
}

/// A square metre whose front is +Z.
template <typename Mesh>
void FillQuad(Mesh& mesh, std::uint32_t material, std::size_t uv_sets)
{
    mesh.vertices->positions = {
        {0.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 0.0f}, {0.0f, 1.0f, 0.0f}};
    mesh.vertices->normals.assign(4, {0.0f, 0.0f, 1.0f});
    mesh.vertices->uvs.assign(uv_sets, {{0.0f, 1.0f}, {1.0f, 1.0f}, {1.0f, 0.0f}, {0.0f, 0.0f}});
    mesh.subObjects.resize(1);
    mesh.subObjects[0].material = material;
    mesh.subObjects[0].triangles = {{0, 1, 2}, {0, 2, 3}};
}

TEV2_MORPH_TARGET Target(std::u16string_view name)
{
    TEV2_MORPH_TARGET target;
    target.name = Wide(name);
    target.track = Float(0.5f);
    target.offsets.vertices = {1, 3};
    target.offsets.positions = {{0.0f, 0.0f, 0.25f}, {0.0f, 0.0f, -0.25f}};
    return target;
}

void FillMeshes(TEV2& scene)
{
    TEV2_RIGID& box = Add(scene.rigids, u"Box", 1);
    FillQuad(box, 1, 2);
    box.lights = {0, 1};
    box.bounds =
        MakeTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({{0.0f, {{0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 0.0f}}}});

    TEV2_ANIM_MESH& flag = Add(scene.animMeshes, u"Flag", 1);
    flag.bounds =
        MakeTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({{0.0f, {{0.0f, 0.0f, 0.0f}, {3.0f, 1.0f, 0.0f}}}});
    flag.vertices->tracks.resize(3);
    for (std::size_t i = 0; i < 3; ++i)
    {
        const auto x = static_cast<float>(i);
        flag.vertices->tracks[i].position =
            MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {x, 0.0f, 0.0f}}, {1.0f, {x, 1.0f, 0.0f}}});
    }
    flag.subObjects.resize(1);
    flag.subObjects[0].triangles = {{0, 1, 2}};

    TEV2_MORPH_MESH& face = Add(scene.morphMeshes, u"Face", 1);
    FillQuad(face, 0, 1);
    face.targets.push_back(Target(u"Smile"));
    face.targets.push_back(Target(u"Blink"));

    TEV2_WEIGHTED_MESH& body = Add(scene.weightedMeshes, u"Body", kNone);
    FillQuad(body, 0, 1);
    body.skin->influences = 2;
    body.skin->boneIndices = {0, 1, 0, 1, 1, 0, 1, 0};
    body.skin->weights = {0.75f, 0.25f, 0.5f, 0.5f, 1.0f, 0.0f, 1.0f, 0.0f};
    body.skin->bones = {0, 1};
    body.skin->bindMatrices.resize(2);
    body.targets.push_back(Target(u"Breath"));
}

void FillSplines(TEV2& scene)
{
    TEV2_BEZIER_SPLINE_OBJECT& path = Add(scene.bezierSplines, u"Path", kNone);
    auto rigid = std::make_unique<TEV2_RIGID_BEZIER_SPLINE>();
    rigid->closed = true;
    rigid->curves.resize(2);
    rigid->curves[0].end = {1.0f, 2.0f, 3.0f};
    rigid->curves[1].start = {1.0f, 2.0f, 3.0f};
    path.splines.push_back(std::move(rigid));
    auto moving = std::make_unique<TEV2_ANIM_BEZIER_SPLINE>();
    moving->curves.resize(2);
    const auto point = [] {
        return MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {}}, {1.0f, {4.0f, 0.0f, 0.0f}}});
    };
    moving->curves[0].end = point();
    moving->curves[1].start = point();
    path.splines.push_back(std::move(moving));
}

template <typename Instance>
Instance& AddInstance(TEV2::Array<TEV2_INSTANCE>& list, std::u16string_view name)
{
    auto made = std::make_unique<Instance>();
    Instance& instance = *made;
    instance.source = 0;
    Add<TEV2_INSTANCE>(list, std::move(made), name, 1);
    return instance;
}

void FillReferences(TEV2& scene)
{
    scene.xrefs15.push_back(std::make_unique<TEV2_XREF<15>>());
    scene.xrefs15[0]->fileName = Wide(u"../sets/hall.tv2");
    scene.xrefs15[0]->node = 0;
    scene.xrefs15[0]->timeOffset = 0.5f;
    scene.xrefs20.push_back(std::make_unique<TEV2_XREF<20>>());
    scene.xrefs20[0]->fileName = Wide(u"props.tv2");
    TEV2_XREF_OBJECT& chair = Add(scene.xrefObjects, u"Chair 1", 1);
    chair.library = 0;
    chair.chunkId = kRigidChunk;
    chair.objectName = Wide(u"Chair");
    Add(scene.speedTreeReferences, u"Oak", 0).fileName = Wide(u"oak.spt");
}

} // namespace

void FillTypedScene(TEV2& scene)
{
    FillSoundScene(scene);
    auto sky = Image(u"sky", u"sky.png", 0);
    sky->coordinates.projection = TEV2_MAP_PROJECTION::Sphere;
    scene.environment.environmentMap = std::move(sky);
    FillLights(scene);
    FillMaterials(scene);
    FillMeshes(scene);
    FillSplines(scene);
    Add(scene.helpers, u"Grip", 1).shape = TEV2_HELPER_SHAPE::Box;
    AddInstance<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>(scene.instanceLists[5], u"Box 2").materials = {1};
    TEV2_TRI_SUB_OBJECT half;
    half.triangles = {{0, 1, 3}};
    AddInstance<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>(scene.instanceLists[5], u"Box 3").subObjects = {
        half};
    FillReferences(scene);
}

} // namespace tv2_tests
