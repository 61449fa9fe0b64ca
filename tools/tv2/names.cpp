#include "tools/tv2/names.h"

#include <iterator>

namespace tv2
{

namespace
{

struct Name
{
    const char* class_name;
    const char* title;
};

constexpr Name kChunks[kLastChunkId + 1] = {
    {"TEV2_INF", "information"},
    {"TEV2_ARRAY_LENGTH_HELPER", "array lengths"},
    {"TEV2_ENVIRONMENT", "environment"},
    {"TEV2_GLOBAL_LIGHT_TINT", "global light tint"},
    {"TEV2_AMBIENT_LIGHT", "ambient light"},
    {"TEV2_LIGHT", "lights"},
    {"TEV2_CAMERA", "cameras"},
    {"TEV2_RIGID", "rigids"},
    {"TEV2_ANIM_MESH", "anim meshes"},
    {"TEV2_MORPH_MESH", "morph meshes"},
    {"TEV2_WEIGHTED_MESH", "weighted meshes"},
    {"TEV2_BEZIER_SPLINE_OBJECT", "bezier splines"},
    {"TEV2_MATRIX_HIERARCHY", "matrix hierarchy"},
    {"TEV2_MATERIAL", "materials"},
    {"TEV2_INSTANCE", "instances"},
    {"TEV2_XREF<15>", "cross-references 15"},
    {"TEV2_GEOM_INSTANCE", "geometry instances"},
    {"TEV2_HELPER", "helpers"},
    {"TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS", "instances with own materials"},
    {"TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS", "instances with own sub-objects"},
    {"TEV2_XREF<20>", "cross-references 20"},
    {"TEV2_XREF_OBJECT", "cross-reference objects"},
    {"TEV2_CAMERA_MAN", "camera switcher"},
    {"TEV2_XREF_SPEEDTREE", "SpeedTree references"},
};

constexpr Name kTracks[] = {
    {"TEV2_ANIMATABLE_FLOAT32_LINEAR", "float"},
    {"TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR", "range"},
    {"TEV2_ANIMATABLE_COLOUR_LINEAR", "colour"},
    {"TEV2_ANIMATABLE_VECTOR_3_LINEAR", "3-vector"},
    {"TEV2_ANIMATABLE_VECTOR_2_LINEAR", "2-vector"},
    {"TEV2_ANIMATABLE_QUATERNION_LERP", "quaternion (lerp)"},
    {"TEV2_ANIMATABLE_QUATERNION_SLERP", "quaternion (slerp)"},
    {"TEV2_ANIMATABLE_RECTF_LINEAR", "rectangle"},
    {"TEV2_ANIMATABLE_INT32_RLE", "stepped integer"},
    {"TEV2_ANIMATABLE_VECTOR_4_LINEAR", "4-vector"},
    {"TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR", "binormal and tangent"},
    {"TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR", "bounding box"},
};

} // namespace

std::string ChunkClassName(std::uint32_t id)
{
    return id <= kLastChunkId ? kChunks[id].class_name : "";
}

std::string ChunkTitle(std::uint32_t id)
{
    return id <= kLastChunkId ? kChunks[id].title : "unknown chunk " + std::to_string(id);
}

std::string TrackClassName(std::uint32_t kind)
{
    return kind < std::size(kTracks) ? kTracks[kind].class_name : "";
}

std::string TrackTitle(std::uint32_t kind)
{
    return kind < std::size(kTracks) ? kTracks[kind].title : "unknown kind " + std::to_string(kind);
}

} // namespace tv2
