#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/math/values.h"
#include "tev2_loader/records/material_maps.h"
#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/tracks/animatable.h"

#include <array>
#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// The time range of a scene and its surroundings.
class TEV2_ENVIRONMENT : public TEV2_INTERNAL_ANIM_OBJECT,
                         public TEV2_SERIALISABLE_OBJECT,
                         public TEV2_CHUNK_OBJECT
{
public:
    /// Start and end of the scene, seconds.
    TEV2_FLOAT32_RANGE timeRange;

    /// May be null.
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> environmentColour;

    /// Background and reflections. May be null. One of another layout is kept as bytes.
    std::unique_ptr<TEV2_MATERIAL_MAP> environmentMap;

    /// Written as read; from version 1.16.
    std::array<std::uint8_t, kReservedBytes> reserved{};

    template <typename Self, typename Archive>
    static void Fields(Self& environment, Archive& archive)
    {
        archive.Value("timeRange", environment.timeRange, Counts::kSave);
        archive.Track("environmentColour", environment.environmentColour, Counts::kBoth);
        archive.Map("environmentMap", environment.environmentMap, Counts::kBoth);
        if (archive.Since(kSinceReservedBytes))
            archive.Bytes("reserved", environment.reserved, Counts::kNever);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::uint32_t GetChunkId() const override { return kEnvironmentChunk; }

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

} // namespace TEV2_LOADER
