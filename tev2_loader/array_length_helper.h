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

    /// In the order of TEV2_LIST::count (tev2.h): numbers 19 to 21 from version 1.1, 22 and 23 from 1.12.
    std::array<std::uint32_t, kCounts> counts{};

    TEV2_ARRAY_LENGTH_HELPER() = default;

    /// The current lengths of a scene's arrays, null entries included.
    explicit TEV2_ARRAY_LENGTH_HELPER(const TEV2& scene);

    /// Reserves the scene's arrays, as long as none of them has any memory, for no more objects in all than the rest
    /// of the file has room for: counts are only claims. False, and the cursor failed, when its limits are exceeded.
    bool Reserve(TEV2& scene, TEV2_MEMORY_CURSOR& cursor) const;

    template <typename Self, typename Archive>
    static void Fields(Self& lengths, Archive& archive)
    {
        std::uint32_t count = kCounts; // ignored when read
        archive.Constant("count", count, count, Counts::kSave);
        for (std::size_t index = 0; index < kCounts; ++index)
            if (index < kCountsAlways ||
                archive.Since(index < kCountsWithReferences ? kSinceReferenceLengths
                                                            : kSinceSpeedTreeLengths))
                archive.Value("counts", lengths.counts[index], Counts::kSave);
    }

    /// Always true. Save is true when all 96 bytes were written.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::uint32_t GetChunkId() const override { return kArrayLengthsChunk; }

private:
    static constexpr std::size_t kCountsAlways = 18;
    static constexpr std::size_t kCountsWithReferences = 21;
};

} // namespace TEV2_LOADER
