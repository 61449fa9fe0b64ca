#include "gltf/convert/to_gltf_materials.h"

#include "gltf/convert/to_gltf_shader.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <algorithm>
#include <cmath>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

constexpr GltfMaterials::Surface kAnySurface{~std::size_t{0}, true};

/// A standard material as the nearest metallic-roughness one.
class StandardMaterial
{
public:
    StandardMaterial(ToGltfContext& context, GltfTextures& textures, const TEV2_STANDARD_MATERIAL& material,
                     std::size_t uv_sets, const std::string& where)
        : context_(context),
          textures_(textures),
          material_(material),
          uv_sets_(uv_sets),
          where_(where),
          time_(context.RestTime())
    {
    }

    void Write(Json& json)
    {
        SetSurface(json);
        SetEmission(json);
        SetMaps(json);
        if (material_.shading == TEV2_SHADING::Unlit)
            json["extensions"]["KHR_materials_unlit"] = Json::object();
        if (Moves(material_.diffuse) || Moves(material_.emission) || Moves(material_.opacity) ||
            Moves(material_.shininess))
            context_.report.Add(Code::AnimationLost, where_,
                                "it changes in time; its values at the start are kept");
        context_.report.Add(
            Code::MaterialApproximated, where_,
            "diffuse, opacity, shininess and emission are kept; ambient and specular are not");
    }

private:
    static Json Number(float value) { return gltf::FloatNumber(std::clamp(value, 0.0f, 1.0f)); }

    void SetSurface(Json& json)
    {
        const TEV2_COLOUR diffuse = ValueAt(material_.diffuse, time_, {0.8f, 0.8f, 0.8f, 1.0f});
        const float opacity = ValueAt(material_.opacity, time_, 1.0f);
        const float shininess = std::clamp(ValueAt(material_.shininess, time_, 0.1f), 0.0f, 1.0f);
        const float roughness = std::pow(2.0f / (std::exp2(10.0f * shininess) + 2.0f), 0.25f);
        json["pbrMetallicRoughness"] = {
            {"baseColorFactor",
             {Number(diffuse.red), Number(diffuse.green), Number(diffuse.blue), Number(opacity)}},
            {"metallicFactor", 0.0},
            {"roughnessFactor", Number(roughness)}};
        if (opacity < 1.0f)
            json["alphaMode"] = "BLEND";
    }

    void SetEmission(Json& json)
    {
        const TEV2_COLOUR emission = ValueAt(material_.emission, time_, {0.0f, 0.0f, 0.0f, 1.0f});
        if (emission.red > 0.0f || emission.green > 0.0f || emission.blue > 0.0f)
            json["emissiveFactor"] = {Number(emission.red), Number(emission.green), Number(emission.blue)};
    }

    void SetMaps(Json& json)
    {
        for (const TEV2_CHANNEL_MAP& channel : material_.maps)
        {
            const std::string where =
                where_ + ", " +
                ChoiceNames(TEV2_MATERIAL_CHANNEL{})[static_cast<std::size_t>(channel.channel)] + " map";
            switch (channel.channel)
            {
            case TEV2_MATERIAL_CHANNEL::Diffuse:
                Set(json["pbrMetallicRoughness"], "baseColorTexture", channel, TextureRole::Colour, where);
                break;
            case TEV2_MATERIAL_CHANNEL::Emission:
                Set(json, "emissiveTexture", channel, TextureRole::Colour, where);
                break;
            case TEV2_MATERIAL_CHANNEL::Normals:
                Set(json, "normalTexture", channel, TextureRole::Normals, where);
                break;
            case TEV2_MATERIAL_CHANNEL::Occlusion:
                Set(json, "occlusionTexture", channel, TextureRole::Linear, where);
                break;
            default:
                context_.report.Add(Code::TextureLost, where, "glTF has no such map");
            }
        }
    }

    void Set(Json& json, const char* member, const TEV2_CHANNEL_MAP& channel, TextureRole role,
             const std::string& where)
    {
        const bool is_heights = role == TextureRole::Normals && channel.map &&
                                channel.map->GetType() == TEV2_BITMAP_MATERIAL_MAP::kType;
        if (is_heights)
            return context_.report.Add(Code::TextureLost, where, "it holds heights");
        if (auto info = textures_.Use(channel.map.get(), role, uv_sets_, where))
            json[member] = std::move(*info);
    }

    ToGltfContext& context_;
    GltfTextures& textures_;
    const TEV2_STANDARD_MATERIAL& material_;
    std::size_t uv_sets_;
    const std::string& where_;
    float time_;
};

bool IsKnown(const TEV2_MATERIAL* material)
{
    return material != nullptr && material->IsTyped() && material->GetType() <= TEV2_SHADER_MATERIAL::kType;
}

const TEV2_BITMAP_MATERIAL_MAP* BitmapIn(const TEV2_MATERIAL_MAP* map)
{
    if (map == nullptr || !map->IsTyped())
        return nullptr;
    if (map->GetType() == TEV2_NORMAL_MATERIAL_MAP::kType)
        return static_cast<const TEV2_NORMAL_MATERIAL_MAP&>(*map).image.get();
    return static_cast<const TEV2_BITMAP_MATERIAL_MAP*>(map);
}

/// Sets of texture coordinates that a material asks for.
std::size_t SetsNeeded(const TEV2_MATERIAL& material)
{
    std::size_t needed = 0;
    const auto ask = [&needed](const TEV2_MATERIAL_MAP* map)
    {
        if (const TEV2_BITMAP_MATERIAL_MAP* const bitmap = BitmapIn(map))
            needed = std::max<std::size_t>(needed, std::size_t{bitmap->coordinates.uvSet} + 1);
    };
    if (material.GetType() == TEV2_STANDARD_MATERIAL::kType)
        for (const TEV2_CHANNEL_MAP& map : static_cast<const TEV2_STANDARD_MATERIAL&>(material).maps)
            ask(map.map.get());
    else
        for (const auto& map : static_cast<const TEV2_SHADER_MATERIAL&>(material).maps)
            ask(map.get());
    return needed;
}

/// The set of texture coordinates of the first texture with normals; nothing where the material needs no tangents.
std::optional<std::size_t> NormalSetOf(const Json& json)
{
    const Json extensions = json.value("extensions", Json::object());
    const Json coat = extensions.value("KHR_materials_clearcoat", Json::object());
    for (const Json& texture :
         {json.value("normalTexture", Json()), coat.value("clearcoatNormalTexture", Json())})
        if (!texture.is_null())
            return texture.value("texCoord", std::size_t{0});
    return extensions.contains("KHR_materials_anisotropy") ? std::optional<std::size_t>(0) : std::nullopt;
}

/// Whether there was anything that needs tangents.
bool DropTangentSpace(Json& json)
{
    bool dropped = json.erase("normalTexture") > 0;
    if (!json.contains("extensions"))
        return dropped;
    Json& extensions = json["extensions"];
    if (extensions.contains("KHR_materials_clearcoat"))
        dropped |= extensions["KHR_materials_clearcoat"].erase("clearcoatNormalTexture") > 0;
    dropped |= extensions.erase("KHR_materials_anisotropy") > 0;
    if (extensions.empty())
        json.erase("extensions");
    return dropped;
}

} // namespace

GltfMaterials::GltfMaterials(ToGltfContext& context) : context_(context), textures_(context)
{
    const auto& materials = context.Scene().materials;
    for (std::uint32_t i = 0; i < materials.size(); ++i)
    {
        if (!IsKnown(materials[i].get()))
            continue;
        sets_needed_[i] = SetsNeeded(*materials[i]);
        variants_[{i, kAnySurface}] = Write(i, kAnySurface);
    }
}

std::size_t GltfMaterials::Write(std::uint32_t index, const Surface& surface)
{
    const TEV2_MATERIAL& material = *context_.Scene().materials[index];
    const std::string where = WhereOf("materials", index, material);
    Json json = Named(NameFor(context_, material, where));
    if (material.GetType() == TEV2_STANDARD_MATERIAL::kType)
        StandardMaterial(context_, textures_, static_cast<const TEV2_STANDARD_MATERIAL&>(material),
                         surface.uv_sets, where)
            .Write(json);
    else
        WriteShader(context_, textures_, static_cast<const TEV2_SHADER_MATERIAL&>(material), surface.uv_sets,
                    where, json);
    if (material.twoSided)
        json["doubleSided"] = true;
    if (!surface.has_tangents && DropTangentSpace(json))
        context_.report.Add(Code::TextureLost, where, "a mesh without normals can have no normal map");
    const Json extensions = json.value("extensions", Json::object());
    for (const auto& extension : extensions.items())
        context_.out.UseExtension(extension.key());
    const std::optional<std::size_t> set = NormalSetOf(json);
    const std::size_t written = context_.out.Append("materials", std::move(json));
    if (set)
        tangent_sets_[written] = *set;
    return written;
}

std::optional<std::size_t> GltfMaterials::For(std::uint32_t material, const Surface& surface)
{
    const auto needed = sets_needed_.find(material);
    if (needed == sets_needed_.end())
        return std::nullopt;
    const std::size_t whole = variants_.at({material, kAnySurface});
    if (needed->second <= surface.uv_sets && (surface.has_tangents || !TangentSetOf(whole)))
        return whole;
    const auto [found, is_new] = variants_.try_emplace({material, surface}, 0);
    if (is_new)
        found->second = Write(material, surface);
    return found->second;
}

std::optional<std::size_t> GltfMaterials::TangentSetOf(std::size_t written) const
{
    const auto found = tangent_sets_.find(written);
    return found != tangent_sets_.end() ? std::optional(found->second) : std::nullopt;
}

} // namespace tev2_gltf
