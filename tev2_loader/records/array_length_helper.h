#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/object_bases.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace TEV2_LOADER
{

class TEV2;

/// How many objects each array of a scene holds, written ahead of them so that a reader can make room.
class TEV2_ARRAY_LENGTH_HELPER final : public TEV2_CHUNK_OBJECT, public TEV2_SERIALISABLE_OBJECT
{
public:
    static constexpr std::size_t kCounts = 23;

    /// In file order: lights, cameras, rigids, anim meshes, morph meshes, weighted meshes, bezier splines,
    /// helpers, materials, instance lists 3, 2, 5, 0, 4, 6, 1, 7, xrefs15, xrefs20, xrefObjects (these and
    /// the next from version 1.1 but for xrefs15), instance list 8, SpeedTree references, instance list 9
    /// (both from 1.12).
    std::array<std::uint32_t, kCounts> counts{};

    TEV2_ARRAY_LENGTH_HELPER() = default;

    /// The present lengths of a scene's arrays, null entries included.
    explicit TEV2_ARRAY_LENGTH_HELPER(const TEV2& scene);

    /// Reserves the scene's arrays, as long as none of them has any memory, for no more objects in all than the rest
    /// of the file has room for: counts are only claims. False, and the cursor failed, when its limits are exceeded.
    bool Reserve(TEV2& scene, TEV2_MEMORY_CURSOR& cursor) const;

    /// Always true. Save is true when all 96 bytes were written.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::uint32_t GetChunkId() const override { return kArrayLengthsChunk; }
};

} // namespace TEV2_LOADER
