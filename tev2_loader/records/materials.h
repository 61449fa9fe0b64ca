#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/extended_properties.h"
#include "tev2_loader/records/material_maps.h"
#include "tev2_loader/records/record_of.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// The look of a surface. Its type precedes the body: 0 standard, 1 shader; a body of any other type is kept as bytes
/// by a plain TEV2_MATERIAL.
class TEV2_MATERIAL : public TEV2_MOVING_RECORD_OF<TEV2_MATERIAL, TEV2_ENTITY, TEV2_INTERNAL_ANIM_OBJECT,
                                                   TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    using Untyped = TEV2_MATERIAL;

    /// Makes the material of a type; never null.
    static std::unique_ptr<TEV2_MATERIAL> Create(std::uint32_t type);

    std::uint32_t GetType() const { return type_; }
    std::uint32_t GetChunkId() const override { return kMaterialChunk; }

    bool twoSided = false; ///< back faces are drawn, too

    template <typename Self, typename Archive>
    static void Fields(Self& material, Archive& archive)
    {
        TEV2_ENTITY::Fields(material, archive);
        archive.Layout();
        archive.Bool("twoSided", material.twoSided);
    }

protected:
    explicit TEV2_MATERIAL(std::uint32_t type) : type_(type) {}

private:
    template <typename Record>
    friend void Reset(Record& record);

    std::uint32_t type_;
};

/// How a standard material reflects light.
enum class TEV2_SHADING : std::uint32_t
{
    Blinn,
    Phong,
    Unlit,
};

constexpr auto ChoiceNames(TEV2_SHADING)
{
    return std::to_array({"Blinn", "Phong", "unlit"});
}

/// The field of a standard material that a map multiplies. Normals takes a normal map, or a bitmap as heights.
enum class TEV2_MATERIAL_CHANNEL : std::uint32_t
{
    Diffuse,
    Ambient,
    Specular,
    Shininess,
    ShininessStrength,
    Emission,
    Opacity,
    Normals,
    Reflection,
    Refraction,
    Displacement,
    Occlusion,
};

constexpr auto ChoiceNames(TEV2_MATERIAL_CHANNEL)
{
    return std::to_array({"diffuse", "ambient", "specular", "shininess", "shininess strength", "emission",
                          "opacity", "normals", "reflection", "refraction", "displacement", "occlusion"});
}

/// A map and what it is for.
struct TEV2_CHANNEL_MAP
{
    TEV2_MATERIAL_CHANNEL channel = TEV2_MATERIAL_CHANNEL::Diffuse;

    /// Not null: Save fails otherwise.
    std::unique_ptr<TEV2_MATERIAL_MAP> map;

    template <typename Self, typename Archive>
    static void Fields(Self& channelMap, Archive& archive)
    {
        archive.Choice("channel", channelMap.channel);
        archive.Typed("map", channelMap.map);
    }
};

/// The classic material: diffuse and ambient reflection, a highlight and emission. Colours are linear.
class TEV2_STANDARD_MATERIAL final : public TEV2_MOVING_RECORD_OF<TEV2_STANDARD_MATERIAL, TEV2_MATERIAL>
{
public:
    static constexpr std::uint32_t kType = 0;
    TEV2_STANDARD_MATERIAL() : TEV2_MOVING_RECORD_OF(kType) {}

    TEV2_SHADING shading = TEV2_SHADING::Blinn;
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> ambient;    ///< null: as diffuse
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> diffuse;    ///< null: 0.8
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> specular;   ///< null: black
    std::unique_ptr<TEV2_ANIMATABLE_COLOUR> emission;   ///< null: black
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> opacity;   ///< 0 to 1; null: 1
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> shininess; ///< exponent 2^(10 * shininess), 0 to 1; null: 0.1
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> shininessStrength; ///< factor of the highlight; null: 0
    std::vector<TEV2_CHANNEL_MAP> maps;                         ///< no channel twice

    template <typename Self, typename Archive>
    static void Fields(Self& material, Archive& archive)
    {
        TEV2_MATERIAL::Fields(material, archive);
        archive.Choice("shading", material.shading);
        archive.Track("ambient", material.ambient);
        archive.Track("diffuse", material.diffuse);
        archive.Track("specular", material.specular);
        archive.Track("emission", material.emission);
        archive.Track("opacity", material.opacity);
        archive.Track("shininess", material.shininess);
        archive.Track("shininessStrength", material.shininessStrength);
        archive.Records("maps", material.maps);
    }
};

/// A text parameter of a shader.
class TEV2_SHADER_STRING_PARAM : public TEV2_RECORD_OF<TEV2_SHADER_STRING_PARAM, TEV2_ENTITY>
{
public:
    TEV2_WIDE_STRING value;

    template <typename Self, typename Archive>
    static void Fields(Self& param, Archive& archive)
    {
        TEV2_ENTITY::Fields(param, archive);
        archive.Text("value", param.value);
    }
};

/// A light parameter of a shader.
class TEV2_SHADER_LIGHT_PARAM : public TEV2_RECORD_OF<TEV2_SHADER_LIGHT_PARAM, TEV2_ENTITY>
{
public:
    /// Index in the scene's lights, or kNone. May lie beyond them.
    std::uint32_t light = kNone;

    template <typename Self, typename Archive>
    static void Fields(Self& param, Archive& archive)
    {
        TEV2_ENTITY::Fields(param, archive);
        archive.Value("light", param.light);
    }
};

/// A material that a shader of the program draws: its name, and its parameters by name.
class TEV2_SHADER_MATERIAL final : public TEV2_MOVING_RECORD_OF<TEV2_SHADER_MATERIAL, TEV2_MATERIAL>
{
public:
    static constexpr std::uint32_t kType = 1;
    TEV2_SHADER_MATERIAL() : TEV2_MOVING_RECORD_OF(kType) {}

    TEV2_WIDE_STRING shader;    ///< its file or name
    TEV2_WIDE_STRING technique; ///< part of it; may be empty
    std::vector<TEV2_SHADER_STRING_PARAM> strings;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_INT32>> ints;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>> floats;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_VECTOR_3>> vector3s;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_VECTOR_4>> vector4s;
    std::vector<TEV2_SHADER_LIGHT_PARAM> lights;

    /// Each map has the name of its parameter. None is null: Save fails otherwise.
    std::vector<std::unique_ptr<TEV2_MATERIAL_MAP>> maps;

    template <typename Self, typename Archive>
    static void Fields(Self& material, Archive& archive)
    {
        TEV2_MATERIAL::Fields(material, archive);
        archive.Text("shader", material.shader);
        archive.Text("technique", material.technique);
        archive.Records("strings", material.strings);
        archive.Records("ints", material.ints);
        archive.Records("floats", material.floats);
        archive.Records("vector3s", material.vector3s);
        archive.Records("vector4s", material.vector4s);
        archive.Records("lights", material.lights);
        archive.TypedObjects("maps", material.maps);
    }
};

TEV2_CLASSES<TEV2_MATERIAL, TEV2_STANDARD_MATERIAL, TEV2_SHADER_MATERIAL> ClassesOf(const TEV2_MATERIAL&);

} // namespace TEV2_LOADER
