#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/camera_effects.h"
#include "tev2_loader/records/positional_object.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// The effects of a camera from the first one on that is of another layout.
struct TEV2_KEPT_EFFECTS
{
    std::uint32_t count = 0; ///< null entries included
    std::vector<std::uint8_t> bytes;
};

/// A camera. Its position and rotation are those of the node whose index is `value`.
class TEV2_CAMERA : public TEV2_POSITIONAL_OBJECT, public TEV2_CHUNK_OBJECT
{
public:
    /// Height of the picture over its width.
    float inverseAspect = 0.0f;

    // Each track may be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> distance;             ///< metres
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> fieldOfView;          ///< radians
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> secondaryRange; ///< kept, not used
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> clipRange;      ///< near and far, metres

    /// Entries may be null.
    std::vector<std::unique_ptr<TEV2_CAMERA_EFFECT>> effects;

    /// Saved unchanged after `effects`.
    TEV2_KEPT_EFFECTS keptEffects;

    template <typename Self, typename Archive>
    static void Fields(Self& camera, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(camera, archive);
        archive.Value("inverseAspect", camera.inverseAspect, Counts::kSave);
        archive.Track("distance", camera.distance, Counts::kBoth);
        archive.Track("fieldOfView", camera.fieldOfView, Counts::kBoth);
        archive.Track("secondaryRange", camera.secondaryRange, Counts::kBoth);
        archive.Track("clipRange", camera.clipRange, Counts::kBoth);
        archive.Effects("effects", camera.effects, camera.keptEffects, Counts::kBoth);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::uint32_t GetChunkId() const override { return kCameraChunk; }

    /// Reach the tracks and effects, not the bounds.
    void Update(float delta_time) override;
    void SetTime(float time) override;
};

} // namespace TEV2_LOADER
