#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// The numbers and names of the format that more than one place needs. docs/format.md explains them.

namespace TEV2_LOADER
{

/// The first four bytes of a complete file, written last.
inline constexpr std::uint32_t kMagic = 0x54563201u;

/// The version that is written, and the newest that is read.
inline constexpr float kVersion = 1.16f;

// The versions at which layouts change. A field "since" one is present from that version on; a field "until" one up to
// and including it.
inline constexpr float kSinceProperties = 1.04f;       ///< extended properties of nodes and placed objects
inline constexpr float kUntilLegacyMatrix = 1.05f;     ///< world matrix of nodes
inline constexpr float kSinceReferenceLengths = 1.1f;  ///< array lengths 19 to 21
inline constexpr float kSinceSpeedTreeLengths = 1.12f; ///< array lengths 22 and 23
inline constexpr float kSinceBounds = 1.13f;           ///< bounds of placed objects
inline constexpr float kSinceScale = 1.15f;            ///< scale of nodes
inline constexpr float kSinceReservedBytes = 1.16f;    ///< reserved bytes of the environment

/// Begins the fields of every body whose classes docs/format.md marks with it: "LY", and the edition of the layout. It
/// tells bodies of this layout from all others.
inline constexpr std::uint32_t kLayout = 0x4C590001u;

/// Bytes at the end of the environment that are written as read.
inline constexpr std::size_t kReservedBytes = 8;

/// An index that names nothing.
inline constexpr std::uint32_t kNone = 0xFFFFFFFFu;

/// Columns of one group: colours, texture coordinates, influences of a vertex.
inline constexpr std::uint32_t kMostColumns = 64;

/// A kind of chunk or track: its number in the file, its class, and what it holds in a word or two. Converts to the
/// number.
struct TEV2_KIND
{
    std::uint32_t number;
    const char* className;
    const char* title;

    constexpr operator std::uint32_t() const { return number; } // NOLINT(google-explicit-constructor)
};

/// Bytes of the frame of a chunk: u32 size, u32 number.
inline constexpr std::uint32_t kChunkHeader = 8;

// Chunks: u32 size, this number, a u32 prefix in some, and the record.
inline constexpr TEV2_KIND kInformationChunk{0, "TEV2_INF", "information"};
inline constexpr TEV2_KIND kArrayLengthsChunk{1, "TEV2_ARRAY_LENGTH_HELPER", "array lengths"};
inline constexpr TEV2_KIND kEnvironmentChunk{2, "TEV2_ENVIRONMENT", "environment"};
inline constexpr TEV2_KIND kGlobalLightTintChunk{3, "TEV2_GLOBAL_LIGHT_TINT", "global light tint"};
inline constexpr TEV2_KIND kAmbientLightChunk{4, "TEV2_AMBIENT_LIGHT", "ambient light"};
inline constexpr TEV2_KIND kLightChunk{5, "TEV2_LIGHT", "lights"};
inline constexpr TEV2_KIND kCameraChunk{6, "TEV2_CAMERA", "cameras"};
inline constexpr TEV2_KIND kRigidChunk{7, "TEV2_RIGID", "rigids"};
inline constexpr TEV2_KIND kAnimMeshChunk{8, "TEV2_ANIM_MESH", "anim meshes"};
inline constexpr TEV2_KIND kMorphMeshChunk{9, "TEV2_MORPH_MESH", "morph meshes"};
inline constexpr TEV2_KIND kWeightedMeshChunk{10, "TEV2_WEIGHTED_MESH", "weighted meshes"};
inline constexpr TEV2_KIND kBezierSplineChunk{11, "TEV2_BEZIER_SPLINE_OBJECT", "bezier splines"};
inline constexpr TEV2_KIND kMatrixHierarchyChunk{12, "TEV2_MATRIX_HIERARCHY", "matrix hierarchy"};
inline constexpr TEV2_KIND kMaterialChunk{13, "TEV2_MATERIAL", "materials"};
inline constexpr TEV2_KIND kInstanceChunk{14, "TEV2_INSTANCE", "instances"};
inline constexpr TEV2_KIND kXref15Chunk{15, "TEV2_XREF<15>", "cross-references 15"};
inline constexpr TEV2_KIND kGeomInstanceChunk{16, "TEV2_GEOM_INSTANCE", "geometry instances"};
inline constexpr TEV2_KIND kHelperChunk{17, "TEV2_HELPER", "helpers"};
inline constexpr TEV2_KIND kInstanceMaterialsChunk{18, "TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS",
                                                   "instances with own materials"};
inline constexpr TEV2_KIND kInstanceSubObjectsChunk{19, "TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS",
                                                    "instances with own sub-objects"};
inline constexpr TEV2_KIND kXref20Chunk{20, "TEV2_XREF<20>", "cross-references 20"};
inline constexpr TEV2_KIND kXrefObjectChunk{21, "TEV2_XREF_OBJECT", "cross-reference objects"};
inline constexpr TEV2_KIND kCameraManChunk{22, "TEV2_CAMERA_MAN", "camera switcher"};
inline constexpr TEV2_KIND kXrefSpeedTreeChunk{23, "TEV2_XREF_SPEEDTREE", "SpeedTree references"};

// Tracks: this number precedes the record of a track.
inline constexpr TEV2_KIND kFloatTrack{0, "TEV2_ANIMATABLE_FLOAT32_LINEAR", "float"};
inline constexpr TEV2_KIND kRangeTrack{1, "TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR", "range"};
inline constexpr TEV2_KIND kColourTrack{2, "TEV2_ANIMATABLE_COLOUR_LINEAR", "colour"};
inline constexpr TEV2_KIND kVector3Track{3, "TEV2_ANIMATABLE_VECTOR_3_LINEAR", "3-vector"};
inline constexpr TEV2_KIND kVector2Track{4, "TEV2_ANIMATABLE_VECTOR_2_LINEAR", "2-vector"};
inline constexpr TEV2_KIND kLerpTrack{5, "TEV2_ANIMATABLE_QUATERNION_LERP", "quaternion (lerp)"};
inline constexpr TEV2_KIND kSlerpTrack{6, "TEV2_ANIMATABLE_QUATERNION_SLERP", "quaternion (slerp)"};
inline constexpr TEV2_KIND kRectangleTrack{7, "TEV2_ANIMATABLE_RECTF_LINEAR", "rectangle"};
inline constexpr TEV2_KIND kIntegerTrack{8, "TEV2_ANIMATABLE_INT32_RLE", "stepped integer"};
inline constexpr TEV2_KIND kVector4Track{9, "TEV2_ANIMATABLE_VECTOR_4_LINEAR", "4-vector"};
inline constexpr TEV2_KIND kBinormalTangentTrack{10, "TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR",
                                                 "binormal and tangent"};
inline constexpr TEV2_KIND kBoxTrack{11, "TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR", "bounding box"};

/// All of them; each is at the place of its number.
inline constexpr TEV2_KIND kTrackKinds[] = {
    kFloatTrack, kRangeTrack,     kColourTrack,  kVector3Track, kVector2Track,         kLerpTrack,
    kSlerpTrack, kRectangleTrack, kIntegerTrack, kVector4Track, kBinormalTangentTrack, kBoxTrack};

/// Instances are in lists 0 to 9.
inline constexpr std::uint32_t kInstanceListCount = 10;

// What the exporter writes and readers look for. Its creator text is "MotionBuilder v17.00  Tev2 Exporter v1.14".
inline constexpr std::u16string_view kDefaultCreator = u"NATIVE WIN32";

/// Name of node 0 where a selection was exported.
inline constexpr std::u16string_view kInsertedRootName = u"Exporter Inserted Root";

inline constexpr std::string_view kCreatorBegin = "MotionBuilder v";
inline constexpr std::string_view kCreatorExporter = "  Tev2 Exporter ";

/// The creator text of scenes that were converted from glTF. Its world is that of glTF, mirrored: +Y is up.
inline constexpr std::string_view kConverterCreator = "Tev2 glTF Converter v1";

/// Begins the line of the information text that names the file.
inline constexpr std::string_view kFileNameLine = "TEV_NAME:\t";

} // namespace TEV2_LOADER
