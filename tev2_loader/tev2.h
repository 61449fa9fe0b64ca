#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/array_length_helper.h"
#include "tev2_loader/records/camera.h"
#include "tev2_loader/records/camera_man.h"
#include "tev2_loader/records/environment.h"
#include "tev2_loader/records/inf.h"
#include "tev2_loader/records/instances.h"
#include "tev2_loader/records/lights.h"
#include "tev2_loader/records/materials.h"
#include "tev2_loader/records/matrix_hierarchy.h"
#include "tev2_loader/records/meshes.h"
#include "tev2_loader/records/xrefs.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

// A scene made, saved, and played.
//
//     #include "tev2_loader/file.h"
//     #include "tev2_loader/names.h"
//
//     TEV2_LOADER::TEV2 made;
//     TEV2_LOADER::TEV2_MATRIX_NODE& hips = made.matrixHierarchy.nodes.emplace_back();
//     if (!TEV2_LOADER::SetName(hips, "Hips"))
//         return 1;
//     auto walk = std::make_unique<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
//     walk->Append(0.0f, {0.0f, 1.0f, 0.0f}); // seconds, metres
//     walk->Append(1.0f, {0.0f, 1.0f, 2.0f});
//     hips.translation = std::move(walk);
//     made.environment.timeRange = {0.0f, 1.0f};
//     if (!TEV2_LOADER::SaveFile(made, "hips.tv2"))
//         return 1;
//     for (float time = 0.0f; time <= 1.0f; time += 0.25f)
//     {
//         made.SetTime(time);
//         std::printf("%g\n", hips.worldMatrix.m[2][3]); // 0, 0.5, 1, 1.5, 2
//     }

namespace TEV2_LOADER
{

/// A whole scene: it owns every record of a file.
///
/// A file is the magic and then chunks, each u32 size (of all of it), u32 kind and a body. Lengths are
/// metres, angles radians, times seconds. UpAxis (up_axis.h) says which way is up. One scene may be loaded, changed and saved any number of times; one
/// thread at a time.
class TEV2 : public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// A list of owned objects; entries may be null and are then skipped.
    template <typename Object>
    using Array = std::vector<std::unique_ptr<Object>>;

    static constexpr std::size_t kInstanceLists = kInstanceListCount;

    TEV2_INF information;
    TEV2_ENVIRONMENT environment;
    std::unique_ptr<TEV2_AMBIENT_LIGHT> ambientLight;        ///< may be null
    std::unique_ptr<TEV2_GLOBAL_LIGHT_TINT> globalLightTint; ///< may be null
    Array<TEV2_LIGHT> lights;
    Array<TEV2_CAMERA> cameras;
    Array<TEV2_RIGID> rigids;
    Array<TEV2_ANIM_MESH> animMeshes;
    Array<TEV2_MORPH_MESH> morphMeshes;
    Array<TEV2_WEIGHTED_MESH> weightedMeshes;
    Array<TEV2_BEZIER_SPLINE_OBJECT> bezierSplines;
    Array<TEV2_HELPER> helpers;
    Array<TEV2_XREF_SPEEDTREE> speedTreeReferences;
    TEV2_MATRIX_HIERARCHY matrixHierarchy;
    Array<TEV2_MATERIAL> materials;
    std::array<Array<TEV2_INSTANCE>, kInstanceLists>
        instanceLists; ///< lists 7 and 9 are loaded but never saved
    Array<TEV2_XREF<15>> xrefs15;
    Array<TEV2_XREF<20>> xrefs20;
    Array<TEV2_XREF_OBJECT> xrefObjects;
    TEV2_CAMERA_MAN cameraMan;

    /// The inverse world matrix of each node at the start of the time range, made by a load that found
    /// weighted meshes; otherwise empty.
    std::vector<TEV2_MATRIX_3X4> inverseBindMatrices;

    TEV2() = default;
    TEV2(const TEV2&) = delete;
    TEV2& operator=(const TEV2&) = delete;

    /// Writes the whole file. Goes on after a failure; the result is that of the records. The magic is
    /// written at the end, and only if the stream has latched no error until then: a file whose save failed
    /// does not load. One save makes one file: the result is false also when the writer appends or is not at the
    /// start of its file, as after another save, because such a file does not load.
    ///
    /// True is no word on the file: texts, names and whole blocks count in the stream's latch alone, and a full
    /// disk may show only when the file is closed. The file is good when Save was true, stream->lastError was 0
    /// after it, and stream->Close() was true.
    bool Save(TEV2_FILE_WRITER& writer) const;

    /// Clears the scene and reads a whole file, which must begin at the cursor's image. With applyStartTime
    /// it is then evaluated at the start of its time range. On failure: false, the reason in the cursor's
    /// report, and what was read before stays. Throws std::bad_alloc where memory runs out; the scene may then
    /// be loaded again, cleared or destroyed.
    bool Load(TEV2_MEMORY_CURSOR& cursor, bool applyStartTime);

    /// Back to the empty scene.
    void Clear();

    /// Reach every record but helpers, instance list 2, cross-reference objects and user properties: of the
    /// properties of a node or an object that are animated, call properties.SetTime.
    ///
    /// Play a scene with SetTime. Update wraps each track at its own end, and tracks end apart: key reduction takes
    /// keys from the end of a track that has come to rest. Played with Update such a skeleton comes apart.
    void Update(float delta_time) override;
    void SetTime(float time) override;

private:
    bool LoadChunk(TEV2_MEMORY_CURSOR& cursor, std::uint32_t id, float version);
    bool LoadHierarchy(TEV2_MEMORY_CURSOR& cursor, float version);
    bool AfterLoad(TEV2_MEMORY_CURSOR& cursor);

    template <typename Call>
    void Broadcast(Call call, bool camerasFirst);
};

} // namespace TEV2_LOADER
