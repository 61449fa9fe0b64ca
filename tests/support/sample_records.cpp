#include "tests/support/sample_records.h"

#include "tests/support/records.h"
#include "tests/support/tracks.h"

using namespace TEV2_LOADER;

namespace tv2_tests
{

void Fill(TEV2_EXTENDED_PROPERTIES& properties)
{
    properties.stringArrays.emplace_back().name = Wide(u"notes");
    properties.stringArrays[0].strings = {Wide(u"one"), Wide(u""), Wide(u"\u4E2D")};
    properties.intValues.emplace_back().name = Wide(u"count");
    properties.intValues[0].track = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(3, -4);
    properties.floatValues.emplace_back().name = Wide(u"weight");
    properties.floatValues[0].track = FloatTrack(0.5f, 0.75f);
    properties.floatValues.emplace_back().name = Wide(u"empty");
    properties.vector3Values.emplace_back().name = Wide(u"aim");
    properties.vector3Values[0].track = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    properties.vector4Values.emplace_back().name = Wide(u"tint");
    properties.vector4Values[0].track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({1, 2, 3, 4}, {5, 6, 7, 8});
}

void FillPlaced(TEV2_POSITIONAL_OBJECT& object, std::u16string_view name)
{
    object.name = Wide(name);
    object.secondText = Wide(u"b");
    object.thirdText = Wide(u"c");
    object.value = 1;
    object.properties.floatValues.emplace_back().name = Wide(u"f");
    object.properties.floatValues[0].track = FloatTrack(7, 8);
    object.bounds =
        SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({{0, 0, 0}, {1, 1, 1}}, {{1, 1, 1}, {2, 2, 2}});
}

void Fill(TEV2_CAMERA& camera)
{
    FillPlaced(camera, u"Camera");
    camera.properties = {};
    Fill(camera.properties);
    camera.inverseAspect = 0.5625f;
    camera.distance = FloatTrack(1.0f, 2.0f);
    camera.fieldOfView = FloatTrack(0.5f, 0.75f);
    camera.secondaryRange = RangeTrack(1, 2);
    camera.clipRange = RangeTrack(0.1f, 100);

    auto blur = std::make_unique<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    blur->shutterTime = FloatTrack(0.01f, 0.02f);
    auto depth = std::make_unique<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    depth->focusDistance = FloatTrack(5.0f, 6.0f);
    depth->fNumber = FloatTrack(2.8f, 4.0f);
    camera.effects.push_back(std::move(blur));
    camera.effects.push_back(nullptr);
    camera.effects.push_back(std::move(depth));
}

void Fill(TEV2_AMBIENT_LIGHT& light)
{
    light.colour = ColourTrack(0.1f, 0.2f);
}

void Fill(TEV2_GLOBAL_LIGHT_TINT& light)
{
    light.tint = ColourTrack(1, 2);
}

namespace
{

void FillShadow(TEV2_LIGHT_SHADOW_PARAMS& shadow)
{
    shadow.method = TEV2_SHADOW_METHOD::Traced;
    shadow.object.colour = ColourTrack(0.3f, 0.4f);
    shadow.object.density = FloatTrack(0.5f, 0.6f);
    shadow.object.usesLightColour = true;
    shadow.atmosphere = std::make_unique<TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS>();
    shadow.atmosphere->opacity = FloatTrack(0.1f, 0.2f);
    shadow.atmosphere->colourAmount = FloatTrack(0.3f, 0.4f);
    shadow.map = std::make_unique<TEV2_LIGHT_SHADOW_MAP_PARAMS>();
    shadow.map->size = 512;
    shadow.map->bias = FloatTrack(0.01f, 0.02f);
    shadow.map->softness = FloatTrack(3, 4);
}

void FillMax(TEV2_MAX_LIGHT_PARAMS& max)
{
    max.contrast = FloatTrack(0.1f, 0.2f);
    max.diffuseSoftness = FloatTrack(0.3f, 0.4f);
    max.affectsDiffuse = false;
    max.affectsSpecular = true;
    max.ambientOnly = true;
    max.decay = TEV2_DECAY::InverseSquare;
    max.decayStart = FloatTrack(5, 6);
    max.attenuation.nearRange = RangeTrack(1, 2);
    max.attenuation.farRange = RangeTrack(30, 40);
    max.projector = Filled<TEV2_BITMAP_MATERIAL_MAP>();
}

void FillLight(TEV2_LIGHT& light, std::u16string_view name)
{
    FillPlaced(light, name);
    light.colour = ColourTrack(0.7f, 0.8f);
    light.intensity = FloatTrack(100, 200);
    light.on = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(1, 0);
    FillShadow(*(light.shadow = std::make_unique<TEV2_LIGHT_SHADOW_PARAMS>()));
    FillMax(*(light.max = std::make_unique<TEV2_MAX_LIGHT_PARAMS>()));
}

} // namespace

void Fill(TEV2_POINT_LIGHT& light)
{
    FillLight(light, u"Bulb");
    light.range = FloatTrack(9, 10);
}

void Fill(TEV2_DIRECTIONAL_LIGHT& light)
{
    FillLight(light, u"Sun");
    light.beam = RangeTrack(11, 12);
}

void Fill(TEV2_SPOT_LIGHT& light)
{
    FillLight(light, u"Spot");
    light.range = FloatTrack(9, 10);
    light.cone = RangeTrack(0.2f, 0.4f);
}

void Fill(TEV2_BITMAP_MATERIAL_MAP& map)
{
    map.name = Wide(u"image");
    map.amount = FloatTrack(0.25f, 0.5f);
    map.params.fileName = Wide(u"a/b.png");
    map.params.encoding = TEV2_BITMAP_ENCODING::Linear;
    map.params.alpha = TEV2_BITMAP_ALPHA::Opaque;
    map.params.channel = TEV2_BITMAP_CHANNEL::Alpha;
    map.params.magnify = TEV2_BITMAP_MAGNIFY::Nearest;
    map.params.minify = TEV2_BITMAP_MINIFY::Nearest;
    map.params.crop = std::make_unique<TEV2_BITMAP_CROP_PLACE>();
    map.params.crop->place = true;
    map.params.crop->rect = SampleTrack<TEV2_ANIMATABLE_RECTF_LINEAR>({{0, 0}, {1, 1}}, {{0, 0}, {0.5f, 1}});
    map.coordinates.projection = TEV2_MAP_PROJECTION::Sphere;
    map.coordinates.uvSet = 2;
    map.coordinates.wrap.u = TEV2_UV_WRAP::Mirror;
    map.coordinates.wrap.v = TEV2_UV_WRAP::Nothing;
    map.coordinates.offset = SampleTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>({0.1f, 0.2f}, {0.3f, 0.4f});
    map.coordinates.tiling = SampleTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>({5, 6}, {7, 8});
    map.coordinates.angle = FloatTrack(1.5f, 1.75f);
    map.time = std::make_unique<TEV2_BITMAP_MATERIAL_MAP_TIME>();
    map.time->start = 0.125f;
    map.time->rate = 24;
    map.time->end = TEV2_BITMAP_END::Hold;
}

void Fill(TEV2_NORMAL_MATERIAL_MAP& map)
{
    map.name = Wide(u"bumps");
    map.amount = FloatTrack(0.75f, 1);
    map.space = TEV2_NORMAL_SPACE::World;
    map.direction.redLeft = true;
    map.direction.swapped = true;
    map.image = Filled<TEV2_BITMAP_MATERIAL_MAP>();
}

void Fill(TEV2_STANDARD_MATERIAL& material)
{
    material.name = Wide(u"Skin");
    material.twoSided = true;
    material.shading = TEV2_SHADING::Unlit;
    material.ambient = ColourTrack(1, 2);
    material.diffuse = ColourTrack(3, 4);
    material.specular = ColourTrack(5, 6);
    material.emission = ColourTrack(7, 8);
    material.opacity = FloatTrack(0.1f, 0.2f);
    material.shininess = FloatTrack(0.3f, 0.4f);
    material.shininessStrength = FloatTrack(0.5f, 0.6f);
    material.maps.resize(2);
    material.maps[0].channel = TEV2_MATERIAL_CHANNEL::Occlusion;
    material.maps[0].map = Filled<TEV2_BITMAP_MATERIAL_MAP>();
    material.maps[1].channel = TEV2_MATERIAL_CHANNEL::Normals;
    material.maps[1].map = Filled<TEV2_NORMAL_MATERIAL_MAP>();
}

void Fill(TEV2_SHADER_MATERIAL& material)
{
    material.name = Wide(u"Glass");
    material.twoSided = true;
    material.shader = Wide(u"glass.fx");
    material.technique = Wide(u"clear");
    material.strings.emplace_back().name = Wide(u"s");
    material.strings[0].value = Wide(u"text");
    material.ints.emplace_back().name = Wide(u"i");
    material.ints[0].track = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(3, -4);
    material.floats.emplace_back().name = Wide(u"f");
    material.floats[0].track = FloatTrack(1, 2);
    material.vector3s.emplace_back().name = Wide(u"v3");
    material.vector3s[0].track = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    material.vector4s.emplace_back().name = Wide(u"v4");
    material.vector4s[0].track = SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({1, 2, 3, 4}, {5, 6, 7, 8});
    material.lights.emplace_back().name = Wide(u"l");
    material.lights[0].light = 2;
    material.maps.push_back(Filled<TEV2_BITMAP_MATERIAL_MAP>());
    material.maps.push_back(Filled<TEV2_NORMAL_MATERIAL_MAP>());
}

namespace
{

/// All but the vertices, of which there must be three.
void FillMesh(TEV2_TRI_OBJECT& mesh, std::u16string_view name)
{
    FillPlaced(mesh, name);
    mesh.lights = {0, 2};
    mesh.visibility = FloatTrack(0.25f, 0.75f);
    mesh.castsShadow = false;
    mesh.subObjects.resize(2);
    mesh.subObjects[0].material = 1;
    mesh.subObjects[0].triangles = {{0, 1, 2}};
    mesh.subObjects[1].triangles = {{2, 1, 0}, {0, 2, 1}};
}

void FillSets(TEV2_VERT_COLUMNS& vertices)
{
    vertices.colours = {{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}}};
    vertices.uvs = {{{0, 0}, {1, 0}, {0, 1}}, {{0.5f, 0}, {1, 0.5f}, {0, 0.5f}}};
}

void FillVertices(TEV2_RIGID_VERTICES& vertices)
{
    FillSets(vertices);
    vertices.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    vertices.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0.6f, 0.8f}};
    vertices.frames = {{{0, 1, 0}, {1, 0, 0}}, {{0, 1, 0}, {1, 0, 0}}, {{0, 0.8f, -0.6f}, {1, 0, 0}}};
}

/// One target that moves two of three vertices.
void FillTargets(std::vector<TEV2_MORPH_TARGET>& targets)
{
    TEV2_MORPH_TARGET& target = targets.emplace_back();
    target.name = Wide(u"smile");
    target.track = FloatTrack(0, 1);
    target.offsets.vertices = {0, 2};
    target.offsets.positions = {{0, 0, 1}, {0, 0, 2}};
    target.offsets.normals = {{1, 0, 0}, {0, 1, 0}};
    target.offsets.tangents = {{0, 0, 1}, {0, 1, 1}};
}

} // namespace

void Fill(TEV2_RIGID& mesh)
{
    FillMesh(mesh, u"Wall");
    FillVertices(*mesh.vertices);
}

void Fill(TEV2_ANIM_MESH& mesh)
{
    FillMesh(mesh, u"Flag");
    FillSets(*mesh.vertices);
    mesh.vertices->tracks.resize(3);
    TEV2_VERTEX_TRACKS& vertex = mesh.vertices->tracks[1];
    vertex.position = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    vertex.normal = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0, 0, 1}, {0, 1, 0});
    vertex.frame =
        SampleTrack<TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR>({{0, 1, 0}, {1, 0, 0}}, {{0, 0, 1}, {1, 0, 0}});
}

void Fill(TEV2_MORPH_MESH& mesh)
{
    FillMesh(mesh, u"Face");
    FillVertices(*mesh.vertices);
    FillTargets(mesh.targets);
}

void Fill(TEV2_WEIGHTED_MESH& mesh)
{
    FillMesh(mesh, u"Body");
    FillVertices(*mesh.vertices);
    mesh.skin->influences = 2;
    mesh.skin->boneIndices = {0, 1, 1, 0, 0, 0};
    mesh.skin->weights = {0.25f, 0.75f, 1, 0, 1, 0};
    mesh.skin->bones = {1, 0};
    mesh.skin->bindMatrices.resize(2);
    mesh.skin->bindMatrices[1].m[1][3] = 2.0f;
    FillTargets(mesh.targets);
}

void Fill(TEV2_BEZIER_SPLINE_OBJECT& object)
{
    FillPlaced(object, u"Path");
    auto rigid = std::make_unique<TEV2_RIGID_BEZIER_SPLINE>();
    rigid->closed = true;
    rigid->curves = {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}},
                     {{10, 11, 12}, {13, 14, 15}, {16, 17, 18}, {1, 2, 3}}};
    auto moving = std::make_unique<TEV2_ANIM_BEZIER_SPLINE>();
    TEV2_ANIM_BEZIER_CURVE& curve = moving->curves.emplace_back();
    curve.start = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 0, 0}, {2, 0, 0});
    curve.startTangent = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({3, 0, 0}, {4, 0, 0});
    curve.endTangent = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({5, 0, 0}, {6, 0, 0});
    curve.end = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({7, 0, 0}, {8, 0, 0});
    object.splines.push_back(std::move(rigid));
    object.splines.push_back(std::move(moving));
}

void Fill(TEV2_HELPER& helper)
{
    FillPlaced(helper, u"Door");
    helper.shape = TEV2_HELPER_SHAPE::Box;
}

void Fill(TEV2_INSTANCE& instance)
{
    FillPlaced(instance, u"Again");
    instance.source = 3;
}

void Fill(TEV2_GEOM_INSTANCE& instance)
{
    Fill(static_cast<TEV2_INSTANCE&>(instance));
    instance.lights = {0, 2};
}

void Fill(TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS& instance)
{
    Fill(static_cast<TEV2_GEOM_INSTANCE&>(instance));
    instance.materials = {1, kNone};
}

void Fill(TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS& instance)
{
    Fill(static_cast<TEV2_GEOM_INSTANCE&>(instance));
    instance.subObjects.resize(2);
    instance.subObjects[0].material = 1;
    instance.subObjects[0].triangles = {{0, 1, 2}, {2, 1, 3}};
}

namespace
{

template <std::uint32_t kChunkId>
void FillReference(TEV2_XREF<kChunkId>& reference)
{
    reference.fileName = Wide(u"sets/town.tv2");
    reference.node = 2;
    reference.timeOffset = 1.5f;
}

} // namespace

void Fill(TEV2_XREF<15>& reference)
{
    FillReference(reference);
}

void Fill(TEV2_XREF<20>& reference)
{
    FillReference(reference);
}

void Fill(TEV2_XREF_OBJECT& object)
{
    FillPlaced(object, u"Lamp");
    object.lights = {1};
    object.library = 4;
    object.chunkId = 7;
    object.objectName = Wide(u"lamp");
}

void Fill(TEV2_XREF_SPEEDTREE& tree)
{
    FillPlaced(tree, u"Oak");
    tree.lights = {1};
    tree.fileName = Wide(u"oak.spt");
    tree.seed = 99;
    tree.height = 12.5f;
}

} // namespace tv2_tests
