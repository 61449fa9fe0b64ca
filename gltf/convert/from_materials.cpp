#include "gltf/convert/from_materials.h"

#include "gltf/convert/shader_parameters.h"
#include "gltf/json_text.h"
#include "gltf/uri.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"
#include "text/image_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace tev2_gltf
{

using gltf::JsonKind;
using gltf::JsonValue;
using gltf::Place;
using namespace TEV2_LOADER;

namespace
{

constexpr std::string_view kTextureTransform = "KHR_texture_transform";

TEV2_UV_WRAP WrapOf(gltf::Wrap wrap)
{
    switch (wrap)
    {
    case gltf::Wrap::Mirror:
        return TEV2_UV_WRAP::Mirror;
    case gltf::Wrap::Clamp:
        return TEV2_UV_WRAP::Clamp;
    case gltf::Wrap::Repeat:
        break;
    }
    return TEV2_UV_WRAP::Repeat;
}

TEV2_BITMAP_MINIFY MinifyOf(gltf::Filter filter)
{
    switch (filter)
    {
    case gltf::Filter::Nearest:
        return TEV2_BITMAP_MINIFY::Nearest;
    case gltf::Filter::Linear:
        return TEV2_BITMAP_MINIFY::Linear;
    case gltf::Filter::NearestMipNearest:
        return TEV2_BITMAP_MINIFY::NearestMipNearest;
    case gltf::Filter::LinearMipNearest:
        return TEV2_BITMAP_MINIFY::LinearMipNearest;
    case gltf::Filter::NearestMipLinear:
        return TEV2_BITMAP_MINIFY::NearestMipLinear;
    case gltf::Filter::LinearMipLinear:
        break;
    }
    return TEV2_BITMAP_MINIFY::LinearMipLinear;
}

TEV2_VECTOR_2 Vector2(const std::array<double, 2>& numbers, const Place& place)
{
    return {Single(numbers[0], place), Single(numbers[1], place)};
}

template <typename Track, typename Family>
void AddParameter(std::vector<TEV2_NAMED_ANIMATABLE<Family>>& parameters, const TEV2_WIDE_STRING& name,
                  const typename Track::Value& value)
{
    auto& added = parameters.emplace_back();
    added.name = name;
    added.track = ConstantTrack<Track>(value);
}

/// Makes the maps of one material.
class MapMaker
{
public:
    MapMaker(FromContext& context, FromImages& images, const Place& place)
        : context_(context), images_(images), place_(place)
    {
    }

    /// Null, and reported, for a texture without an image that glTF itself knows.
    std::unique_ptr<TEV2_BITMAP_MATERIAL_MAP> Make(const gltf::TextureUse& use, std::string_view name,
                                                   bool is_colour)
    {
        const gltf::Texture texture = gltf::TextureAt(context_.document, use.texture);
        context_.ReportRest(use.json, place_, {kTextureTransform}, true);
        context_.ReportRest(texture.json, context_.document.PlaceOf("textures", use.texture), {}, true);
        if (!texture.image)
        {
            context_.Report(Code::ExtensionLost, place_, std::string(name) + ": a texture without an image");
            return nullptr;
        }
        context_.budget.Take(TEV2_MATERIAL_MAP::kMostBytes + 4 * TEV2_ANIMATABLE::kMostBytes, place_);
        auto map = std::make_unique<TEV2_BITMAP_MATERIAL_MAP>();
        map->name = context_.WideText(name, place_);
        if (use.amount)
            map->amount = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(Single(*use.amount, place_));
        map->params.fileName = context_.WideText(images_.FileName(*texture.image), place_);
        map->params.encoding = is_colour ? TEV2_BITMAP_ENCODING::Srgb : TEV2_BITMAP_ENCODING::Linear;
        if (texture.magnify == gltf::Filter::Nearest)
            map->params.magnify = TEV2_BITMAP_MAGNIFY::Nearest;
        if (texture.minify)
            map->params.minify = MinifyOf(*texture.minify);
        SetCoordinates(map->coordinates, use, texture);
        return map;
    }

private:
    void SetCoordinates(TEV2_BITMAP_MATERIAL_MAP_COORDINATES& coordinates, const gltf::TextureUse& use,
                        const gltf::Texture& texture) const
    {
        coordinates.uvSet = static_cast<std::uint32_t>(std::min<std::size_t>(use.uv_set, kMostColumns));
        coordinates.wrap.u = WrapOf(texture.wrap_u);
        coordinates.wrap.v = WrapOf(texture.wrap_v);
        if (use.offset)
            coordinates.offset = ConstantTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>(Vector2(*use.offset, place_));
        if (use.scale)
            coordinates.tiling = ConstantTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>(Vector2(*use.scale, place_));
        if (use.rotation)
            coordinates.angle = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(Single(*use.rotation, place_));
    }

    FromContext& context_;
    FromImages& images_;
    const Place& place_;
};

struct NamedTexture
{
    std::string_view name;
    const std::optional<gltf::TextureUse>& use;
    bool is_colour;
    TEV2_MATERIAL_CHANNEL channel; // of a standard material; kNoChannel: it has none
};

constexpr auto kNoChannel = static_cast<TEV2_MATERIAL_CHANNEL>(kNone);

std::array<NamedTexture, 5> TexturesOf(const gltf::Material& material)
{
    using enum TEV2_MATERIAL_CHANNEL;
    return {{{"baseColorTexture", material.base_colour_texture, true, Diffuse},
             {"metallicRoughnessTexture", material.metallic_roughness_texture, false, kNoChannel},
             {"normalTexture", material.normal_texture, false, Normals},
             {"occlusionTexture", material.occlusion_texture, false, Occlusion},
             {"emissiveTexture", material.emissive_texture, true, Emission}}};
}

/// glTF's material, one to one.
class ShaderMaterialMaker
{
public:
    ShaderMaterialMaker(FromContext& context, FromImages& images, const Place& place)
        : context_(context), place_(place), maps_(context, images, place)
    {
    }

    std::unique_ptr<TEV2_MATERIAL> Make(const gltf::Material& source)
    {
        auto material = std::make_unique<TEV2_SHADER_MATERIAL>();
        material->shader = TEV2_WIDE_STRING::FromBytes(kMetallicRoughness);
        if (!source.alpha_mode.empty())
            AddText(*material, "alphaMode", source.alpha_mode);
        if (source.json["extras"])
            AddText(*material, kExtrasParameter, gltf::JsonText(source.json["extras"]));
        AddFloat(*material, "metallicFactor", source.metallic);
        AddFloat(*material, "roughnessFactor", source.roughness);
        AddFloat(*material, "alphaCutoff", source.alpha_cutoff);
        if (source.base_colour)
            AddVector4(*material, "baseColorFactor", *source.base_colour);
        if (source.emissive)
            AddVector3(*material, "emissiveFactor", *source.emissive);
        for (const NamedTexture& texture : TexturesOf(source))
        {
            if (texture.use)
                AddMap(*material, *texture.use, texture.name, texture.is_colour);
        }
        const JsonValue extensions = source.json["extensions"];
        for (std::size_t i = 0; i < extensions.Size(); ++i)
            AddExtension(*material, extensions.Name(i), extensions[i]);
        return material;
    }

private:
    TEV2_WIDE_STRING Named(std::string_view name)
    {
        context_.budget.Take(
            sizeof(TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>) + TEV2_ANIMATABLE::kMostBytes, place_);
        return context_.WideText(name, place_);
    }

    void AddText(TEV2_SHADER_MATERIAL& material, std::string_view name, std::string_view text)
    {
        if (text.size() > kMostStringUnits)
        {
            context_.Report(name == kExtrasParameter ? Code::ExtrasLost : Code::ExtensionLost, place_,
                            std::string(name) + ": the text is too long");
            return;
        }
        TEV2_SHADER_STRING_PARAM& added = material.strings.emplace_back();
        added.name = Named(name);
        added.value = context_.WideText(text, place_);
    }

    void AddFloat(TEV2_SHADER_MATERIAL& material, std::string_view name, std::optional<double> number)
    {
        if (number)
            AddParameter<TEV2_ANIMATABLE_FLOAT32_LINEAR>(material.floats, Named(name),
                                                         Single(*number, place_));
    }

    void AddVector3(TEV2_SHADER_MATERIAL& material, std::string_view name, const std::array<double, 3>& v)
    {
        AddParameter<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
            material.vector3s, Named(name),
            {Single(v[0], place_), Single(v[1], place_), Single(v[2], place_)});
    }

    void AddVector4(TEV2_SHADER_MATERIAL& material, std::string_view name, const std::array<double, 4>& v)
    {
        AddParameter<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(
            material.vector4s, Named(name),
            {Single(v[0], place_), Single(v[1], place_), Single(v[2], place_), Single(v[3], place_)});
    }

    void AddMap(TEV2_SHADER_MATERIAL& material, const gltf::TextureUse& use, std::string_view name,
                bool is_colour)
    {
        if (auto map = maps_.Make(use, name, is_colour))
            material.maps.push_back(std::move(map));
    }

    void AddExtension(TEV2_SHADER_MATERIAL& material, std::string_view extension, JsonValue members)
    {
        if (members.Kind() != JsonKind::Object)
        {
            context_.Report(Code::ExtensionLost, place_, std::string(extension));
            return;
        }
        if (extension == kUnlitExtension)
            AddParameter<TEV2_ANIMATABLE_INT32_RLE>(material.ints, Named(extension), 1);
        else if (members.Size() == 0)
            context_.Report(Code::ExtensionLost, place_, std::string(extension) + ", which is empty");
        for (std::size_t i = 0; i < members.Size(); ++i)
        {
            const std::string name = std::string(extension) + "." + std::string(members.Name(i));
            if (!AddMember(material, name, members[i]))
                context_.Report(Code::ExtensionLost, place_, name);
        }
    }

    bool AddMember(TEV2_SHADER_MATERIAL& material, const std::string& name, JsonValue value)
    {
        if (const std::optional<bool> truth = value.Truth())
            AddParameter<TEV2_ANIMATABLE_INT32_RLE>(material.ints, Named(name), *truth ? 1 : 0);
        else if (value.Number())
            AddFloat(material, name, value.Number());
        else if (value.Kind() == JsonKind::Text)
            AddText(material, name, value.Text());
        else if (value.Kind() == JsonKind::Object && value["index"].Kind() == JsonKind::Whole)
            AddMap(material, gltf::TextureUseOf(context_.document, value, place_), name,
                   name.find("olor") != std::string::npos || name.ends_with("diffuseTexture"));
        else
            return AddVector(material, name, value);
        return true;
    }

    bool AddVector(TEV2_SHADER_MATERIAL& material, const std::string& name, JsonValue value)
    {
        if (value.Kind() != JsonKind::Array || (value.Size() != 3 && value.Size() != 4))
            return false;
        std::array<double, 4> numbers{};
        for (std::size_t i = 0; i < value.Size(); ++i)
        {
            if (!value[i].Number())
                return false;
            numbers[i] = *value[i].Number();
        }
        if (value.Size() == 4)
            AddVector4(material, name, numbers);
        else
            AddVector3(material, name, {numbers[0], numbers[1], numbers[2]});
        return true;
    }

    FromContext& context_;
    const Place& place_;
    MapMaker maps_;
};

/// The nearest standard material.
std::unique_ptr<TEV2_MATERIAL> MakeStandard(FromContext& context, FromImages& images,
                                            const gltf::Material& source, const Place& place)
{
    const std::array<double, 4> base = source.base_colour.value_or(std::array<double, 4>{1.0, 1.0, 1.0, 1.0});
    const double metallic = std::clamp(source.metallic.value_or(1.0), 0.0, 1.0);
    const double roughness = std::clamp(source.roughness.value_or(1.0), 0.0, 1.0);
    constexpr double kDielectric = 0.04;
    const auto colour = [&](const auto& component)
    {
        return ConstantTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>(
            {Single(component(0), place), Single(component(1), place), Single(component(2), place), 1.0f});
    };
    const double power = 2.0 / std::pow(std::max(roughness, 0.01), 4.0) - 2.0; // of the highlight
    context.budget.Take(sizeof(TEV2_STANDARD_MATERIAL) + 6 * TEV2_ANIMATABLE::kMostBytes, place);
    auto material = std::make_unique<TEV2_STANDARD_MATERIAL>();
    if (source.json["extensions"].Find(kUnlitExtension))
        material->shading = TEV2_SHADING::Unlit;
    material->diffuse = colour([&](std::size_t i) { return base[i] * (1.0 - metallic); });
    material->specular =
        colour([&](std::size_t i) { return kDielectric + (base[i] - kDielectric) * metallic; });
    material->shininess = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(
        static_cast<float>(std::clamp(std::log2(std::max(power, 1.0)) / 10.0, 0.0, 1.0)));
    material->shininessStrength = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(1.0f);
    if (source.alpha_mode == "BLEND")
        material->opacity = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(Single(base[3], place));
    if (source.emissive)
        material->emission = colour([&](std::size_t i) { return (*source.emissive)[i]; });
    MapMaker maps(context, images, place);
    for (const NamedTexture& texture : TexturesOf(source))
    {
        if (!texture.use || texture.channel == kNoChannel)
            continue;
        auto map = maps.Make(*texture.use, texture.name, texture.is_colour);
        if (!map)
            continue;
        if (texture.channel != TEV2_MATERIAL_CHANNEL::Normals)
        {
            material->maps.push_back({texture.channel, std::move(map)});
            continue;
        }
        auto normals = std::make_unique<TEV2_NORMAL_MATERIAL_MAP>();
        normals->name = map->name;
        normals->amount = std::move(map->amount);
        normals->image = std::move(map);
        material->maps.push_back({texture.channel, std::move(normals)});
    }
    context.Report(Code::MaterialApproximated, place, "became a standard material");
    context.ReportRest(source.json, place, {kUnlitExtension}, true);
    return material;
}

/// The part of a path after its last separator, without what any system takes for more than a name.
std::string LastPart(std::string_view path)
{
    const std::size_t separator = path.find_last_of("/\\");
    std::string name(path.substr(separator == std::string_view::npos ? 0 : separator + 1));
    std::ranges::replace_if(
        name, [](char c) { return c == ':' || c == '%' || static_cast<unsigned char>(c) < ' '; }, '_');
    return name.empty() || !WhyItLeaves(name).empty() ? "_" + name : name;
}

} // namespace

const std::string& FromImages::FileName(std::size_t image)
{
    const auto [found, is_new] = names_.try_emplace(image);
    if (!is_new)
        return found->second;
    const gltf::Image source = gltf::ImageAt(context_.document, image);
    const Place place = context_.document.PlaceOf("images", image);
    context_.ReportRest(source.json, place, {}, true);
    found->second = source.IsInside() ? InsideName(source, image, place) : BesideName(source.uri, place);
    return found->second;
}

std::string FromImages::InsideName(const gltf::Image& image, std::size_t index, const Place& place)
{
    std::string decoded;
    bytes_[index] = gltf::BytesOf(context_.document, image, place, decoded);
    if (!image.view)
        bytes_[index] = decoded_[index] = std::move(decoded);
    std::string name = context_.options.image_stem + "_image" + std::to_string(index);
    name += gltf::ExtensionOf(image, bytes_[index]);
    context_.Report(Code::ImageWritten, place, name);
    return name;
}

std::string FromImages::BesideName(std::string_view uri, const Place& place) const
{
    std::string path(uri);
    try
    {
        path = context_.options.image_folder + gltf::RelativePathOf(uri);
        if (WhyItLeaves(path).empty())
            return path;
    }
    catch (const gltf::Error&) // it leads out of the folder
    {
    }
    std::string name = LastPart(path);
    context_.Report(Code::ImageRenamed, place, name);
    return name;
}

std::vector<InsideImage> FromImages::Inside()
{
    std::vector<InsideImage> images;
    for (const auto& [image, bytes] : bytes_)
        images.push_back({names_.at(image), bytes});
    return images;
}

std::vector<std::unique_ptr<TEV2_MATERIAL>> MakeMaterials(FromContext& context, FromImages& images)
{
    const std::size_t count = context.document.Count("materials");
    std::vector<std::unique_ptr<TEV2_MATERIAL>> materials;
    for (std::size_t i = 0; i < count; ++i)
    {
        const Place place = context.document.PlaceOf("materials", i);
        context.budget.Take(sizeof(TEV2_SHADER_MATERIAL), place);
        const gltf::Material source = gltf::MaterialAt(context.document, i);
        context.ReportRest(source.json["pbrMetallicRoughness"], place, {}, true);
        materials.push_back(context.options.standard_materials
                                ? MakeStandard(context, images, source, place)
                                : ShaderMaterialMaker(context, images, place).Make(source));
        materials.back()->name = context.WideText(source.name, place);
        materials.back()->twoSided = source.double_sided;
    }
    return materials;
}

} // namespace tev2_gltf
