#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/material_map.h"
#include "tev2_loader/records/positional_object.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/tracks/animatable.h"

#include <array>
#include <cstdint>
#include <memory>

// Lights. Where a track may be null, the comment says what counts then. Tracks with one key are constants.

namespace TEV2_LOADER
{

/// Light that comes from everywhere, added to that of all lights.
class TEV2_AMBIENT_LIGHT final
    : public TEV2_MOVING_RECORD_OF<TEV2_AMBIENT_LIGHT, TEV2_SERIALISABLE_OBJECT, TEV2_INTERNAL_ANIM_OBJECT,
                                   TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    /// Null: black.
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> colour;

    template <typename Self, typename Archive>
    static void Fields(Self& light, Archive& archive)
    {
        archive.Layout();
        archive.Track("colour", light.colour);
    }

    std::uint32_t GetChunkId() const override { return kAmbientLightChunk; }
};

/// The tint of all lights.
class TEV2_GLOBAL_LIGHT_TINT final
    : public TEV2_MOVING_RECORD_OF<TEV2_GLOBAL_LIGHT_TINT, TEV2_INTERNAL_ANIM_OBJECT,
                                   TEV2_SERIALISABLE_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    /// Multiplies the colour of every light; may exceed 1. Null: white.
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> tint;

    template <typename Self, typename Archive>
    static void Fields(Self& light, Archive& archive)
    {
        archive.Layout();
        archive.Track("tint", light.tint);
    }

    std::uint32_t GetChunkId() const override { return kGlobalLightTintChunk; }
};

/// The shadows that objects cast.
class TEV2_LIGHT_OBJECT_SHADOW_PARAMS
    : public TEV2_MOVING_RECORD_OF<TEV2_LIGHT_OBJECT_SHADOW_PARAMS, TEV2_SERIALISABLE_OBJECT,
                                   TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> colour;   ///< null: black
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> density; ///< 0 is no shadow; null: 1
    bool usesLightColour = false;                     ///< mixes the light's colour in

    template <typename Self, typename Archive>
    static void Fields(Self& params, Archive& archive)
    {
        archive.Track("colour", params.colour);
        archive.Track("density", params.density);
        archive.Bool("usesLightColour", params.usesLightColour);
    }
};

/// The shadows that fog casts.
class TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS
    : public TEV2_MOVING_RECORD_OF<TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS, TEV2_SERIALISABLE_OBJECT,
                                   TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> opacity;      ///< 0 to 1; null: 1
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> colourAmount; ///< 0 to 1; null: 1

    template <typename Self, typename Archive>
    static void Fields(Self& params, Archive& archive)
    {
        archive.Track("opacity", params.opacity);
        archive.Track("colourAmount", params.colourAmount);
    }
};

/// How the shadow map of a light is made.
class TEV2_LIGHT_SHADOW_MAP_PARAMS
    : public TEV2_MOVING_RECORD_OF<TEV2_LIGHT_SHADOW_MAP_PARAMS, TEV2_SERIALISABLE_OBJECT,
                                   TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    std::uint32_t size = 1024;                         ///< pixels along an edge
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> bias;     ///< metres off the surface; null: 0
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> softness; ///< radius of the filter, pixels; null: 0

    template <typename Self, typename Archive>
    static void Fields(Self& params, Archive& archive)
    {
        archive.Value("size", params.size);
        archive.Track("bias", params.bias);
        archive.Track("softness", params.softness);
    }
};

enum class TEV2_SHADOW_METHOD : std::uint32_t
{
    ShadowMap,
    Traced,
};

constexpr auto ChoiceNames(TEV2_SHADOW_METHOD)
{
    return std::to_array({"shadow map", "traced"});
}

/// How a light casts shadows.
class TEV2_LIGHT_SHADOW_PARAMS
    : public TEV2_MOVING_RECORD_OF<TEV2_LIGHT_SHADOW_PARAMS, TEV2_SERIALISABLE_OBJECT,
                                   TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    TEV2_SHADOW_METHOD method = TEV2_SHADOW_METHOD::ShadowMap;
    TEV2_LIGHT_OBJECT_SHADOW_PARAMS object;
    std::unique_ptr<TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS> atmosphere; ///< null: fog casts none
    std::unique_ptr<TEV2_LIGHT_SHADOW_MAP_PARAMS> map;                ///< null: the renderer's own settings

    template <typename Self, typename Archive>
    static void Fields(Self& params, Archive& archive)
    {
        archive.Choice("method", params.method);
        archive.Record("object", params.object);
        archive.Optional("atmosphere", params.atmosphere);
        archive.Optional("map", params.map);
    }
};

/// Distances between which a light fades in and out, metres. (Windows defines `near` and `far` as macros.)
class MAX_ATTENUATION
    : public TEV2_MOVING_RECORD_OF<MAX_ATTENUATION, TEV2_SERIALISABLE_OBJECT, TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> nearRange; ///< from nothing to full; null: full everywhere
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> farRange;  ///< from full to nothing; null: no end

    template <typename Self, typename Archive>
    static void Fields(Self& attenuation, Archive& archive)
    {
        archive.Track("nearRange", attenuation.nearRange);
        archive.Track("farRange", attenuation.farRange);
    }
};

enum class TEV2_DECAY : std::uint32_t
{
    None,
    Inverse,
    InverseSquare,
};

constexpr auto ChoiceNames(TEV2_DECAY)
{
    return std::to_array({"none", "inverse", "inverse square"});
}

/// A light as modelling programs describe it: decay and fading as the artist wants them, not as light behaves.
class TEV2_MAX_LIGHT_PARAMS
    : public TEV2_MOVING_RECORD_OF<TEV2_MAX_LIGHT_PARAMS, TEV2_SERIALISABLE_OBJECT, TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> contrast;        ///< 0 to 1; null: 0
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> diffuseSoftness; ///< 0 to 1; null: 0
    bool affectsDiffuse = true;
    bool affectsSpecular = true;
    bool ambientOnly = false;
    TEV2_DECAY decay = TEV2_DECAY::None;
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> decayStart; ///< no decay up to there, metres; null: 1
    MAX_ATTENUATION attenuation;
    std::unique_ptr<TEV2_MATERIAL_MAP> projector; ///< the image that the light projects; null: none

    template <typename Self, typename Archive>
    static void Fields(Self& params, Archive& archive)
    {
        archive.Track("contrast", params.contrast);
        archive.Track("diffuseSoftness", params.diffuseSoftness);
        archive.Bool("affectsDiffuse", params.affectsDiffuse);
        archive.Bool("affectsSpecular", params.affectsSpecular);
        archive.Bool("ambientOnly", params.ambientOnly);
        archive.Choice("decay", params.decay);
        archive.Track("decayStart", params.decayStart);
        archive.Record("attenuation", params.attenuation);
        archive.Track("projector", params.projector);
    }
};

/// A placed light, which shines along -Z of its node. Its type precedes the body: 0 point, 1 directional, 2 spot; a
/// body of any other type is kept as bytes by a plain TEV2_LIGHT.
class TEV2_LIGHT
    : public TEV2_MOVING_RECORD_OF<TEV2_LIGHT, TEV2_POSITIONAL_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    using Untyped = TEV2_LIGHT;

    /// Makes the light of a type; never null.
    static std::unique_ptr<TEV2_LIGHT> Create(std::uint32_t type);

    std::uint32_t GetType() const { return type_; }
    std::uint32_t GetChunkId() const override { return kLightChunk; }

    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> colour; ///< null: white

    /// Candela (point, spot) or lux (directional); with `max` a plain factor. Null: 1.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> intensity;

    std::unique_ptr<TEV2_ANIMATABLE_INT32> on;        ///< 0 is off; null: on
    std::unique_ptr<TEV2_LIGHT_SHADOW_PARAMS> shadow; ///< null: casts none
    std::unique_ptr<TEV2_MAX_LIGHT_PARAMS> max;       ///< null: a physical light

    template <typename Self, typename Archive>
    static void Fields(Self& light, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(light, archive);
        archive.Layout();
        archive.Track("colour", light.colour);
        archive.Track("intensity", light.intensity);
        archive.Track("on", light.on);
        archive.Optional("shadow", light.shadow);
        archive.Optional("max", light.max);
    }

protected:
    explicit TEV2_LIGHT(std::uint32_t type) : type_(type) {}

private:
    template <typename Record>
    friend void Reset(Record& record);

    std::uint32_t type_;
};

/// A light that shines in all directions.
class TEV2_POINT_LIGHT final : public TEV2_MOVING_RECORD_OF<TEV2_POINT_LIGHT, TEV2_LIGHT>
{
public:
    static constexpr std::uint32_t kType = 0;
    TEV2_POINT_LIGHT() : TEV2_MOVING_RECORD_OF(kType) {}

    /// No light beyond this distance, metres. Null: no end.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> range;

    template <typename Self, typename Archive>
    static void Fields(Self& light, Archive& archive)
    {
        TEV2_LIGHT::Fields(light, archive);
        archive.Track("range", light.range);
    }
};

/// A light with parallel rays.
class TEV2_DIRECTIONAL_LIGHT final : public TEV2_MOVING_RECORD_OF<TEV2_DIRECTIONAL_LIGHT, TEV2_LIGHT>
{
public:
    static constexpr std::uint32_t kType = 1;
    TEV2_DIRECTIONAL_LIGHT() : TEV2_MOVING_RECORD_OF(kType) {}

    /// Radii about the Z axis of the node, metres: full inside the first, nothing outside the second. Null: everywhere.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> beam;

    template <typename Self, typename Archive>
    static void Fields(Self& light, Archive& archive)
    {
        TEV2_LIGHT::Fields(light, archive);
        archive.Track("beam", light.beam);
    }
};

/// A light that shines in a cone.
class TEV2_SPOT_LIGHT final : public TEV2_MOVING_RECORD_OF<TEV2_SPOT_LIGHT, TEV2_LIGHT>
{
public:
    static constexpr std::uint32_t kType = 2;
    TEV2_SPOT_LIGHT() : TEV2_MOVING_RECORD_OF(kType) {}

    /// No light beyond this distance, metres. Null: no end.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> range;

    /// Half angles, radians: full inside the first, nothing outside the second. Null: 0 and a quarter of pi.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> cone;

    template <typename Self, typename Archive>
    static void Fields(Self& light, Archive& archive)
    {
        TEV2_LIGHT::Fields(light, archive);
        archive.Track("range", light.range);
        archive.Track("cone", light.cone);
    }
};

TEV2_CLASSES<TEV2_LIGHT, TEV2_POINT_LIGHT, TEV2_DIRECTIONAL_LIGHT, TEV2_SPOT_LIGHT>
ClassesOf(const TEV2_LIGHT&);

} // namespace TEV2_LOADER
