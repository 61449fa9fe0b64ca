#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/interfaces.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// An effect that a camera's lens or film has on the picture.
class TEV2_CAMERA_EFFECT : public TEV2_SERIALISABLE_OBJECT, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// Makes an empty effect: type 0 motion blur, 1 depth of field; null for any other type.
    static std::unique_ptr<TEV2_CAMERA_EFFECT> Create(std::uint32_t type);

    /// A copy of the same class with copies of its tracks.
    virtual std::unique_ptr<TEV2_CAMERA_EFFECT> Clone() const = 0;

    /// The type in front of the effect in the file.
    virtual std::uint32_t GetEffectType() const = 0;
    std::uint32_t GetType() const { return GetEffectType(); }

    /// What a load finds where no effect has the type.
    static constexpr TEV2_LOAD_CODE kUnknownType = TEV2_LOAD_CODE::UnknownEffectType;

    /// Size of the largest class of effects, for memory limits.
    static constexpr std::size_t kMostBytes = 96;
};

class TEV2_CAMERA_MOTION_BLUR_EFFECT final : public TEV2_CAMERA_EFFECT
{
public:
    static constexpr std::uint32_t kType = 0;

    /// How long the shutter is open, seconds. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> shutterTime;

    template <typename Self, typename Archive>
    static void Fields(Self& effect, Archive& archive)
    {
        archive.Layout();
        archive.Track("shutterTime", effect.shutterTime);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::unique_ptr<TEV2_CAMERA_EFFECT> Clone() const override;
    std::uint32_t GetEffectType() const override { return kType; }

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

class TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT final : public TEV2_CAMERA_EFFECT
{
public:
    static constexpr std::uint32_t kType = 1;

    /// From the camera to the plane that is sharp, metres. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> focusDistance;

    /// Focal length over aperture, as engraved on a lens. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> fNumber;

    template <typename Self, typename Archive>
    static void Fields(Self& effect, Archive& archive)
    {
        archive.Layout();
        archive.Track("focusDistance", effect.focusDistance);
        archive.Track("fNumber", effect.fNumber);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::unique_ptr<TEV2_CAMERA_EFFECT> Clone() const override;
    std::uint32_t GetEffectType() const override { return kType; }

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

TEV2_CLASSES<TEV2_CAMERA_EFFECT, TEV2_CAMERA_MOTION_BLUR_EFFECT, TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>
ClassesOf(const TEV2_CAMERA_EFFECT&);

} // namespace TEV2_LOADER
