#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/camera.h"
#include "tev2_loader/records/camera_man.h"
#include "tev2_loader/records/environment.h"
#include "tev2_loader/records/helper.h"
#include "tev2_loader/records/inf.h"
#include "tev2_loader/records/instances.h"
#include "tev2_loader/records/lights.h"
#include "tev2_loader/records/materials.h"
#include "tev2_loader/records/matrix_hierarchy.h"
#include "tev2_loader/records/meshes.h"
#include "tev2_loader/records/splines.h"
#include "tev2_loader/records/xrefs.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
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

/// What a save has to say beside its result. Objects are named as `lights[2] "Sun"`.
struct TEV2_SAVE_REPORT
{
    /// The first object whose Save was false although its bytes were written, its field, and what is wrong with it:
    /// `rigids[0] "Wall", normals: not one for each vertex`. Empty: none.
    std::string refused;

    /// Objects whose bodies are kept as bytes, and whose fields were changed: the file does not have these changes. The
    /// objects' Forget would save them.
    std::vector<std::string> ignored;
};

/// A whole scene: it owns every record of a file.
///
/// A file is the magic and then chunks, each u32 size (of all of it), u32 kind and a body. Lengths are
/// metres, angles radians, times seconds. UpAxis (up_axis.h) says which way is up. One scene may be loaded, changed
/// and saved any number of times; one thread at a time.
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
    /// True does not mean a good file: texts, names and whole blocks count in the stream's latch alone, and a full
    /// disk may show only when the file is closed. The file is good when Save was true, stream->lastError was 0
    /// after it, and stream->Close() was true.
    ///
    /// The report, if given, is replaced.
    bool Save(TEV2_FILE_WRITER& writer, TEV2_SAVE_REPORT* report = nullptr) const;

    /// Clears the scene and reads a whole file, which must begin at the cursor's image. With applyStartTime
    /// it is then evaluated at the start of its time range. On failure: false, the reason in the cursor's
    /// report, and what was read before stays. Throws std::bad_alloc where memory runs out; the scene may then
    /// be loaded again, cleared or destroyed.
    bool Load(TEV2_MEMORY_CURSOR& cursor, bool applyStartTime);

    /// Whether any object, map or effect is kept as bytes. These may hold indices of nodes, materials, lights and
    /// objects that nobody can see: ask before changing the order of any of those.
    bool HasKeptBodies() const;

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
    bool AfterLoad(TEV2_MEMORY_CURSOR& cursor);
    void BindMeshes();
};

/// How the objects of a list are read.
enum class TEV2_READING : std::uint8_t
{
    InPlace,    ///< in its list (or member) before it is read
    WhenLoaded, ///< replaces the earlier one once it was read
    WithType,   ///< a u32 type in front; in its list once it was read
    WithList,   ///< a u32 list index in front: an instance
};

/// A member of a scene that chunks are read into: one record, or an array of them. A place is a position in one of four
/// orders, 0 where the member is left out.
struct TEV2_LIST
{
    TEV2_KIND kind;    ///< its chunk; of instances the first of four
    const char* label; ///< in paths
    TEV2_READING reading;
    int save;    ///< place in the file
    int count;   ///< place in the array lengths
    int update;  ///< place in Update
    int setTime; ///< place in SetTime
};

template <typename Member>
struct TEV2_LIST_OF : TEV2_LIST
{
    Member TEV2::*member;

    template <typename Scene>
    auto& In(Scene& scene) const
    {
        return scene.*member;
    }
};

struct TEV2_INSTANCE_LIST : TEV2_LIST
{
    std::uint32_t index;

    template <typename Scene>
    auto& In(Scene& scene) const
    {
        return scene.instanceLists[index];
    }
};

template <typename Member>
constexpr TEV2_LIST_OF<Member> Row(Member TEV2::*member, const TEV2_LIST& list)
{
    return {list, member};
}

/// All lists of a scene, in the order in which tools show them. A new kind of record takes a member of TEV2 and a row.
// clang-format off
constexpr auto MakeSceneLists()
{
    using enum TEV2_READING;
    return std::make_tuple(
        //                              chunk                   label          reading  save, count, update, setTime
        Row(&TEV2::information,         {kInformationChunk,     "information",         InPlace,     1,  0,  0,  0}),
        Row(&TEV2::environment,         {kEnvironmentChunk,     "environment",         InPlace,     2,  0,  2,  2}),
        Row(&TEV2::globalLightTint,     {kGlobalLightTintChunk, "globalLightTint",     InPlace,     3,  0,  4,  4}),
        Row(&TEV2::ambientLight,        {kAmbientLightChunk,    "ambientLight",        WhenLoaded,  4,  0,  3,  3}),
        Row(&TEV2::cameraMan,           {kCameraManChunk,       "cameraMan",           InPlace,     5,  0, 26, 26}),
        Row(&TEV2::lights,              {kLightChunk,           "lights",              WithType,    6,  1,  5,  5}),
        Row(&TEV2::cameras,             {kCameraChunk,          "cameras",             InPlace,     7,  2,  6,  7}),
        Row(&TEV2::rigids,              {kRigidChunk,           "rigids",              InPlace,     8,  3,  7,  6}),
        Row(&TEV2::animMeshes,          {kAnimMeshChunk,        "animMeshes",          InPlace,     9,  4,  8,  8}),
        Row(&TEV2::morphMeshes,         {kMorphMeshChunk,       "morphMeshes",         InPlace,    10,  5,  9,  9}),
        Row(&TEV2::weightedMeshes,      {kWeightedMeshChunk,    "weightedMeshes",      InPlace,    11,  6, 10, 10}),
        Row(&TEV2::bezierSplines,       {kBezierSplineChunk,    "bezierSplines",       InPlace,    12,  7, 11, 11}),
        Row(&TEV2::helpers,             {kHelperChunk,          "helpers",             InPlace,    13,  8,  0,  0}),
        Row(&TEV2::speedTreeReferences, {kXrefSpeedTreeChunk,   "speedTreeReferences", InPlace,    14, 22, 13, 13}),
        Row(&TEV2::matrixHierarchy,     {kMatrixHierarchyChunk, "matrixHierarchy",     InPlace,    15,  0,  1,  1}),
        Row(&TEV2::materials,           {kMaterialChunk,        "materials",           WithType,   16,  9, 12, 12}),
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   20, 13, 18, 18}, 0},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   23, 16, 21, 21}, 1},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   18, 11,  0,  0}, 2},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   17, 10, 16, 16}, 3},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   21, 14, 19, 19}, 4},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   19, 12, 17, 17}, 5},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   22, 15, 20, 20}, 6},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,    0, 17, 22, 22}, 7},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,   27, 21, 23, 23}, 8},
        TEV2_INSTANCE_LIST{             {kInstanceChunk,        "instanceLists",       WithList,    0, 23, 15, 15}, 9},
        Row(&TEV2::xrefs15,             {kXref15Chunk,          "xrefs15",             InPlace,    24, 18, 24, 24}),
        Row(&TEV2::xrefs20,             {kXref20Chunk,          "xrefs20",             InPlace,    25, 19, 25, 25}),
        Row(&TEV2::xrefObjects,         {kXrefObjectChunk,      "xrefObjects",         InPlace,    26, 20,  0,  0}));
}

inline constexpr auto kSceneLists = MakeSceneLists();
// clang-format on

/// Calls visit(list, member) for each list of a scene, in the order of kSceneLists. `list` is the row, `member` the
/// record, the pointer or the array.
template <typename Scene, typename Visit>
void VisitLists(Scene& scene, const Visit& visit)
{
    std::apply([&](const auto&... list) { (visit(list, list.In(scene)), ...); }, kSceneLists);
}

/// The rows of kSceneLists that have a place in an order, by that place.
template <int TEV2_LIST::*kPlace>
struct TEV2_LIST_ORDER
{
    std::array<std::size_t, std::tuple_size_v<decltype(kSceneLists)>> rows{};
    std::size_t count = 0;

    constexpr TEV2_LIST_ORDER()
    {
        const auto places =
            std::apply([](const auto&... list) { return std::array{(list.*kPlace)...}; }, kSceneLists);
        for (std::size_t row = 0; row < places.size(); ++row)
        {
            if (places[row] == 0)
                continue;
            std::size_t at = count++;
            for (; at > 0 && places[rows[at - 1]] > places[row]; --at)
                rows[at] = rows[at - 1];
            rows[at] = row;
        }
    }
};

/// Calls visit(list, member) for each list that has a place in an order, by that place:
///     VisitListsBy<&TEV2_LIST::save>(scene, [](const TEV2_LIST& list, const auto& member) {});
template <int TEV2_LIST::*kPlace, typename Scene, typename Visit>
void VisitListsBy(Scene& scene, const Visit& visit)
{
    static constexpr TEV2_LIST_ORDER<kPlace> kOrder;
    const auto visit_all = [&]<std::size_t... kRow>(std::index_sequence<kRow...>)
    {
        (visit(std::get<kOrder.rows[kRow]>(kSceneLists), std::get<kOrder.rows[kRow]>(kSceneLists).In(scene)),
         ...);
    };
    visit_all(std::make_index_sequence<kOrder.count>());
}

/// What reports call an object of a list: "lights[2]", "instanceLists[3][0]".
std::string PathOf(const TEV2_LIST& list, std::size_t index);
std::string PathOf(const TEV2_INSTANCE_LIST& list, std::size_t index);

/// The kind of a chunk id; null for an id that the format does not know.
const TEV2_KIND* FindChunkKind(std::uint32_t id);

/// What a chunk holds in a word or two, "cameras"; "unknown chunk 99" for an id that the format does not know.
std::string ChunkTitle(std::uint32_t id);

} // namespace TEV2_LOADER
