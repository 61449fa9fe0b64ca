#pragma once

#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// What a camera's lens or film adds to its picture.
class TEV2_CAMERA_EFFECT : public TEV2_SERIALISABLE_OBJECT, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// Makes an empty effect: type 0 motion blur, 1 depth of field; null for any other type.
    static std::unique_ptr<TEV2_CAMERA_EFFECT> Create(std::uint32_t type);

    /// A copy of the same class with copies of its tracks.
    virtual std::unique_ptr<TEV2_CAMERA_EFFECT> Clone() const = 0;

    /// The type that stands before the effect in the file.
    virtual std::uint32_t GetEffectType() const = 0;
};

/// Type 0. Record: shutterTime as an optional track.
class TEV2_CAMERA_MOTION_BLUR_EFFECT final : public TEV2_CAMERA_EFFECT
{
public:
    /// How long the shutter stands open, seconds. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> shutterTime;

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::unique_ptr<TEV2_CAMERA_EFFECT> Clone() const override;
    std::uint32_t GetEffectType() const override { return 0; }

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

/// Type 1. Record: focusDistance and fNumber, each as an optional track.
class TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT final : public TEV2_CAMERA_EFFECT
{
public:
    /// From the camera to the plane that is sharp, metres. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> focusDistance;

    /// Focal length over aperture, as engraved on a lens. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> fNumber;

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::unique_ptr<TEV2_CAMERA_EFFECT> Clone() const override;
    std::uint32_t GetEffectType() const override { return 1; }

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

} // namespace TEV2_LOADER
