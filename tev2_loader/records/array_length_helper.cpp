#include "tev2_loader/records/array_length_helper.h"

#include "tev2_loader/tev2.h"

#include <algorithm>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kLeastChunk = 8; ///< of an object in the file: size and id
constexpr std::size_t kCountsAlways = 18;
constexpr std::size_t kCountsSince1_1 = 21;

/// Calls visit with each array of a scene, in the order of the counts.
template <typename Scene, typename Visit>
void VisitArrays(Scene& scene, Visit visit)
{
    const auto visit_all = [&visit](auto&... arrays) { (visit(arrays), ...); };
    auto& lists = scene.instanceLists;
    visit_all(scene.lights, scene.cameras, scene.rigids, scene.animMeshes, scene.morphMeshes,
              scene.weightedMeshes, scene.bezierSplines, scene.helpers, scene.materials, lists[3], lists[2],
              lists[5], lists[0], lists[4], lists[6], lists[1], lists[7], scene.xrefs15, scene.xrefs20,
              scene.xrefObjects, lists[8], scene.speedTreeReferences, lists[9]);
}

} // namespace

TEV2_ARRAY_LENGTH_HELPER::TEV2_ARRAY_LENGTH_HELPER(const TEV2& scene)
{
    auto count = counts.begin();
    VisitArrays(scene, [&count](const auto& array) { *count++ = static_cast<std::uint32_t>(array.size()); });
}

bool TEV2_ARRAY_LENGTH_HELPER::Reserve(TEV2& scene, TEV2_MEMORY_CURSOR& cursor) const
{
    bool untouched = true;
    VisitArrays(scene, [&untouched](const auto& array) { untouched = untouched && array.capacity() == 0; });
    if (!untouched)
        return true;
    std::size_t most = cursor.Remaining() / kLeastChunk;
    auto count = counts.begin();
    VisitArrays(scene,
                [&](auto& array)
                {
                    const std::size_t room = std::min<std::size_t>(*count++, most);
                    most -= room;
                    if (cursor.TakeMemory(room * sizeof array[0]))
                        array.reserve(room);
                });
    return !cursor.Failed();
}

bool TEV2_ARRAY_LENGTH_HELPER::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    cursor.ReadU32();
    const std::size_t present = version >= kSinceSpeedTreeLengths   ? kCounts
                                : version >= kSinceReferenceLengths ? kCountsSince1_1
                                                                    : kCountsAlways;
    counts = {};
    for (std::size_t index = 0; index < present; ++index)
        counts[index] = cursor.ReadU32();
    return true;
}

bool TEV2_ARRAY_LENGTH_HELPER::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = writer.WriteU32(kCounts);
    for (const std::uint32_t count : counts)
        saved &= writer.WriteU32(count);
    return saved;
}

} // namespace TEV2_LOADER
