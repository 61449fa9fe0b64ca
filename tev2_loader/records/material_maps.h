#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/material_map.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/tracks/animatable.h"

#include <array>
#include <cstdint>
#include <memory>

// Images that materials, lights and the environment use. (0, 0) is the upper left corner of an image; v runs down.
// Where a track may be null, the comment gives the value that counts instead.

namespace TEV2_LOADER
{

/// A rectangle that crops or places an image.
class TEV2_BITMAP_CROP_PLACE : public TEV2_MOVING_RECORD_OF<TEV2_BITMAP_CROP_PLACE, TEV2_INTERNAL_ANIM_OBJECT,
                                                            TEV2_SERIALISABLE_OBJECT>
{
public:
    /// False: the map shows this part of the image alone. True: the image is scaled into this part of the map, with
    /// nothing around it.
    bool place = false;

    /// In parts of the image, 0 to 1. Null: all of it.
    std::unique_ptr<TEV2_ANIMATABLE_RECTF> rect;

    template <typename Self, typename Archive>
    static void Fields(Self& crop, Archive& archive)
    {
        archive.Bool("place", crop.place);
        archive.Track("rect", crop.rect);
    }
};

/// How colours are stored in the image.
enum class TEV2_BITMAP_ENCODING : std::uint32_t
{
    Srgb,
    Linear,
};

constexpr auto ChoiceNames(TEV2_BITMAP_ENCODING)
{
    return std::to_array({"sRGB", "linear"});
}

/// Where the alpha of the map comes from.
enum class TEV2_BITMAP_ALPHA : std::uint32_t
{
    Straight,
    Premultiplied,
    FromBrightness,
    Opaque,
};

constexpr auto ChoiceNames(TEV2_BITMAP_ALPHA)
{
    return std::to_array({"straight", "premultiplied", "from brightness", "opaque"});
}

/// What a use of one number, such as opacity, reads from an image.
enum class TEV2_BITMAP_CHANNEL : std::uint32_t
{
    Brightness,
    Red,
    Green,
    Blue,
    Alpha,
};

constexpr auto ChoiceNames(TEV2_BITMAP_CHANNEL)
{
    return std::to_array({"brightness", "red", "green", "blue", "alpha"});
}

/// Filter where the image is enlarged.
enum class TEV2_BITMAP_MAGNIFY : std::uint32_t
{
    Linear,
    Nearest,
};

constexpr auto ChoiceNames(TEV2_BITMAP_MAGNIFY)
{
    return std::to_array({"linear", "nearest"});
}

/// Filter where the image is reduced: within a mip level, and between levels.
enum class TEV2_BITMAP_MINIFY : std::uint32_t
{
    LinearMipLinear,
    LinearMipNearest,
    NearestMipLinear,
    NearestMipNearest,
    Linear,
    Nearest,
};

constexpr auto ChoiceNames(TEV2_BITMAP_MINIFY)
{
    return std::to_array({"linear, mip linear", "linear, mip nearest", "nearest, mip linear",
                          "nearest, mip nearest", "linear", "nearest"});
}

/// The image file, and how to read it.
class TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS
    : public TEV2_MOVING_RECORD_OF<TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS, TEV2_INTERNAL_ANIM_OBJECT,
                                   TEV2_SERIALISABLE_OBJECT>
{
public:
    TEV2_WIDE_STRING fileName; ///< relative to the folder of the scene file, with / between folders
    TEV2_BITMAP_ENCODING encoding = TEV2_BITMAP_ENCODING::Srgb;
    TEV2_BITMAP_ALPHA alpha = TEV2_BITMAP_ALPHA::Straight;
    TEV2_BITMAP_CHANNEL channel = TEV2_BITMAP_CHANNEL::Brightness;
    TEV2_BITMAP_MAGNIFY magnify = TEV2_BITMAP_MAGNIFY::Linear;
    TEV2_BITMAP_MINIFY minify = TEV2_BITMAP_MINIFY::LinearMipLinear;
    std::unique_ptr<TEV2_BITMAP_CROP_PLACE> crop; ///< null: all of the image

    template <typename Self, typename Archive>
    static void Fields(Self& params, Archive& archive)
    {
        archive.Text("fileName", params.fileName);
        archive.Choice("encoding", params.encoding);
        archive.Choice("alpha", params.alpha);
        archive.Choice("channel", params.channel);
        archive.Choice("magnify", params.magnify);
        archive.Choice("minify", params.minify);
        archive.Optional("crop", params.crop);
    }
};

/// What a lookup outside the image gives.
enum class TEV2_UV_WRAP : std::uint32_t
{
    Repeat,
    Mirror,
    Clamp,
    Nothing,
};

constexpr auto ChoiceNames(TEV2_UV_WRAP)
{
    return std::to_array({"repeat", "mirror", "clamp", "nothing"});
}

/// Wrapping along both texture coordinates.
class TEV2_UV_MATERIAL_WRAP_MODE : public TEV2_RECORD_OF<TEV2_UV_MATERIAL_WRAP_MODE, TEV2_SERIALISABLE_OBJECT>
{
public:
    TEV2_UV_WRAP u = TEV2_UV_WRAP::Repeat;
    TEV2_UV_WRAP v = TEV2_UV_WRAP::Repeat;

    template <typename Self, typename Archive>
    static void Fields(Self& wrap, Archive& archive)
    {
        archive.Choice("u", wrap.u);
        archive.Choice("v", wrap.v);
    }
};

enum class TEV2_MAP_PROJECTION : std::uint32_t
{
    TextureCoordinates,
    Sphere, ///< around the scene
    Screen,
};

constexpr auto ChoiceNames(TEV2_MAP_PROJECTION)
{
    return std::to_array({"texture coordinates", "sphere", "screen"});
}

/// How the image is projected and moved.
class TEV2_BITMAP_MATERIAL_MAP_COORDINATES
    : public TEV2_MOVING_RECORD_OF<TEV2_BITMAP_MATERIAL_MAP_COORDINATES, TEV2_INTERNAL_ANIM_OBJECT,
                                   TEV2_SERIALISABLE_OBJECT>
{
public:
    TEV2_MAP_PROJECTION projection = TEV2_MAP_PROJECTION::TextureCoordinates;
    std::uint32_t uvSet = 0; ///< of the mesh
    TEV2_UV_MATERIAL_WRAP_MODE wrap;

    // What KHR_texture_transform of glTF calls offset, scale and rotation.
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_2> offset; ///< null: 0
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_2> tiling; ///< null: 1
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> angle;   ///< radians; null: 0

    template <typename Self, typename Archive>
    static void Fields(Self& coordinates, Archive& archive)
    {
        archive.Choice("projection", coordinates.projection);
        archive.Value("uvSet", coordinates.uvSet);
        archive.Record("wrap", coordinates.wrap);
        archive.Track("offset", coordinates.offset);
        archive.Track("tiling", coordinates.tiling);
        archive.Track("angle", coordinates.angle);
    }
};

/// What a film does after its last image.
enum class TEV2_BITMAP_END : std::uint32_t
{
    Restart,
    BackAndForth,
    Hold,
};

constexpr auto ChoiceNames(TEV2_BITMAP_END)
{
    return std::to_array({"restart", "back and forth", "hold"});
}

/// When a film, or a series of numbered images, plays.
class TEV2_BITMAP_MATERIAL_MAP_TIME
    : public TEV2_RECORD_OF<TEV2_BITMAP_MATERIAL_MAP_TIME, TEV2_SERIALISABLE_OBJECT>
{
public:
    float start = 0.0f; ///< time of the scene at which the first image shows, seconds
    float rate = 1.0f;  ///< playback speed; 1 is that of the film
    TEV2_BITMAP_END end = TEV2_BITMAP_END::Restart;

    template <typename Self, typename Archive>
    static void Fields(Self& time, Archive& archive)
    {
        archive.Value("start", time.start);
        archive.Value("rate", time.rate);
        archive.Choice("end", time.end);
    }
};

/// A map that reads an image.
class TEV2_BITMAP_MATERIAL_MAP final
    : public TEV2_MOVING_RECORD_OF<TEV2_BITMAP_MATERIAL_MAP, TEV2_MATERIAL_MAP>
{
public:
    static constexpr std::uint32_t kType = 0;
    TEV2_BITMAP_MATERIAL_MAP() : TEV2_MOVING_RECORD_OF(kType) {}

    /// Makes a map of type 0; null for any other type. For fields that take bitmap maps alone.
    static std::unique_ptr<TEV2_BITMAP_MATERIAL_MAP> Create(std::uint32_t type);

    TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS params;
    TEV2_BITMAP_MATERIAL_MAP_COORDINATES coordinates;
    std::unique_ptr<TEV2_BITMAP_MATERIAL_MAP_TIME>
        time; ///< of films and numbered images; null: a still image

    template <typename Self, typename Archive>
    static void Fields(Self& map, Archive& archive)
    {
        TEV2_MATERIAL_MAP::Fields(map, archive);
        archive.Record("params", map.params);
        archive.Record("coordinates", map.coordinates);
        archive.Optional("time", map.time);
    }
};

/// The axes that the normals of an image are in.
enum class TEV2_NORMAL_SPACE : std::uint32_t
{
    Tangent,
    Object,
    World,
};

constexpr auto ChoiceNames(TEV2_NORMAL_SPACE)
{
    return std::to_array({"tangent", "object", "world"});
}

/// What the channels of a normal map mean. All false: red is right, green is up, as in glTF.
class TEV2_NORMAL_CHANNEL_DIRECTION
    : public TEV2_RECORD_OF<TEV2_NORMAL_CHANNEL_DIRECTION, TEV2_SERIALISABLE_OBJECT>
{
public:
    bool redLeft = false;
    bool greenDown = false;
    bool swapped = false; ///< red is up and green is right

    template <typename Self, typename Archive>
    static void Fields(Self& direction, Archive& archive)
    {
        archive.Bool("redLeft", direction.redLeft);
        archive.Bool("greenDown", direction.greenDown);
        archive.Bool("swapped", direction.swapped);
    }
};

/// Normals of a surface, from an image.
class TEV2_NORMAL_MATERIAL_MAP final
    : public TEV2_MOVING_RECORD_OF<TEV2_NORMAL_MATERIAL_MAP, TEV2_MATERIAL_MAP>
{
public:
    static constexpr std::uint32_t kType = 1;
    TEV2_NORMAL_MATERIAL_MAP() : TEV2_MOVING_RECORD_OF(kType) {}

    TEV2_NORMAL_SPACE space = TEV2_NORMAL_SPACE::Tangent;
    TEV2_NORMAL_CHANNEL_DIRECTION direction;
    std::unique_ptr<TEV2_BITMAP_MATERIAL_MAP> image; ///< null: none

    template <typename Self, typename Archive>
    static void Fields(Self& map, Archive& archive)
    {
        TEV2_MATERIAL_MAP::Fields(map, archive);
        archive.Choice("space", map.space);
        archive.Record("direction", map.direction);
        archive.Track("image", map.image);
    }
};

TEV2_CLASSES<TEV2_MATERIAL_MAP, TEV2_BITMAP_MATERIAL_MAP, TEV2_NORMAL_MATERIAL_MAP>
ClassesOf(const TEV2_MATERIAL_MAP&);

} // namespace TEV2_LOADER
