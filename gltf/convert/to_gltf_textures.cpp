#include "gltf/convert/to_gltf_textures.h"

#include "gltf/convert/to_gltf_extras.h"
#include "gltf/convert/to_gltf_tracks.h"
#include "text/image_path.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

std::string UriText(std::string_view path)
{
    std::string uri;
    for (const char c : path)
    {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           std::string_view("-._~/").find(c) != std::string_view::npos;
        std::array<char, 4> escaped{};
        std::snprintf(escaped.data(), escaped.size(), "%%%02X",
                      static_cast<unsigned>(static_cast<unsigned char>(c)));
        uri += plain ? std::string(1, c) : escaped.data();
    }
    return uri;
}

/// glTF has PNG and JPEG. A name without an extension says nothing against it.
bool IsReadable(std::string_view name)
{
    const std::string_view file = name.substr(name.find_last_of('/') + 1);
    const std::size_t dot = file.find_last_of('.');
    if (dot == std::string_view::npos)
        return true;
    std::string extension(file.substr(dot));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension == ".png" || extension == ".jpg" || extension == ".jpeg";
}

int WrapOf(TEV2_UV_WRAP wrap)
{
    switch (wrap)
    {
    case TEV2_UV_WRAP::Repeat:
        return 10497;
    case TEV2_UV_WRAP::Mirror:
        return 33648;
    default:
        return 33071;
    }
}

int MinifyOf(TEV2_BITMAP_MINIFY minify)
{
    constexpr std::array kFilters = {9987, 9985, 9986, 9984, 9729, 9728};
    return kFilters[static_cast<std::size_t>(minify)];
}

} // namespace

std::nullopt_t GltfTextures::Lose(const std::string& where, const std::string& why)
{
    context_.report.Add(Code::TextureLost, where, why);
    return std::nullopt;
}

const TEV2_BITMAP_MATERIAL_MAP* GltfTextures::BitmapOf(const TEV2_MATERIAL_MAP* map, TextureRole role,
                                                       const std::string& where)
{
    if (map == nullptr || !map->IsTyped())
        return nullptr;
    if (map->GetType() == TEV2_BITMAP_MATERIAL_MAP::kType)
        return static_cast<const TEV2_BITMAP_MATERIAL_MAP*>(map);
    if (map->GetType() != TEV2_NORMAL_MATERIAL_MAP::kType || role != TextureRole::Normals)
        return nullptr;
    const auto& normals = static_cast<const TEV2_NORMAL_MATERIAL_MAP&>(*map);
    if (normals.space != TEV2_NORMAL_SPACE::Tangent)
        return nullptr;
    if (normals.direction.redLeft || normals.direction.greenDown || normals.direction.swapped)
        context_.report.Add(Code::TextureReduced, where,
                            "the directions of its channels have no place in glTF");
    return normals.image.get();
}

std::optional<std::string> GltfTextures::UriOf(const TEV2_BITMAP_MATERIAL_MAP& map, const std::string& where)
{
    std::string name = ReadableText(map.params.fileName.Text());
    if (const std::string why = WhyItLeaves(name); !why.empty())
    {
        name = name.substr(name.find_last_of("/\\") + 1);
        if (WhyItLeaves(name).empty() && !name.empty())
            context_.report.Add(Code::ImageRenamed, where,
                                "its name " + why + "; " + name + " is what remains");
    }
    if (name.empty() || !WhyItLeaves(name).empty())
        return Lose(where, "its image has no usable name");
    if (!IsReadable(name))
        return Lose(where, name + " is neither PNG nor JPEG");
    return UriText(context_.options.image_folder + name);
}

std::size_t GltfTextures::Element(const char* list, Json element)
{
    const auto [found, is_new] = elements_.try_emplace(list + element.dump(), 0);
    if (is_new)
        found->second = context_.out.Append(list, std::move(element));
    return found->second;
}

/// None where glTF's own defaults say the same.
std::optional<std::size_t> GltfTextures::SamplerOf(const TEV2_BITMAP_MATERIAL_MAP& map,
                                                   const std::string& where)
{
    const TEV2_UV_MATERIAL_WRAP_MODE& wrap = map.coordinates.wrap;
    if (wrap.u == TEV2_UV_WRAP::Nothing || wrap.v == TEV2_UV_WRAP::Nothing)
        context_.report.Add(Code::TextureReduced, where, "outside of the image its edge continues");
    if (wrap.u == TEV2_UV_WRAP::Repeat && wrap.v == TEV2_UV_WRAP::Repeat &&
        map.params.magnify == TEV2_BITMAP_MAGNIFY::Linear &&
        map.params.minify == TEV2_BITMAP_MINIFY::LinearMipLinear)
        return std::nullopt;
    return Element("samplers",
                   {{"magFilter", map.params.magnify == TEV2_BITMAP_MAGNIFY::Linear ? 9729 : 9728},
                    {"minFilter", MinifyOf(map.params.minify)},
                    {"wrapS", WrapOf(wrap.u)},
                    {"wrapT", WrapOf(wrap.v)}});
}

void GltfTextures::ReportReductions(const TEV2_BITMAP_MATERIAL_MAP& map, TextureRole role,
                                    const std::string& where)
{
    const TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS& params = map.params;
    const bool is_srgb = params.encoding == TEV2_BITMAP_ENCODING::Srgb;
    const bool expects_srgb = role == TextureRole::Colour;
    const auto reduce = [&](bool there, const char* what)
    {
        if (there)
            context_.report.Add(Code::TextureReduced, where, what);
    };
    reduce(is_srgb != expects_srgb, "glTF reads it in another encoding");
    reduce(params.alpha != TEV2_BITMAP_ALPHA::Straight, "its alpha is not that of the image as it is");
    reduce(params.crop != nullptr, "its crop has no place in glTF");
    reduce(map.time != nullptr, "it is a film; its image stands still");
    reduce(Moves(map.coordinates.offset) || Moves(map.coordinates.tiling) || Moves(map.coordinates.angle),
           "it moves over the surface; its place at the start is kept");
}

void GltfTextures::SetTransform(Json& info, const TEV2_BITMAP_MATERIAL_MAP_COORDINATES& coordinates)
{
    constexpr const char* kTransformExtension = "KHR_texture_transform";
    const float time = context_.RestTime();
    Json transform = Json::object();
    if (coordinates.offset)
        transform["offset"] = ToJson(ValueAt(coordinates.offset, time, {}));
    if (coordinates.angle)
        transform["rotation"] = ToJson(ValueAt(coordinates.angle, time, 0.0f));
    if (coordinates.tiling)
        transform["scale"] = ToJson(ValueAt(coordinates.tiling, time, {1.0f, 1.0f}));
    if (transform.empty())
        return;
    info["extensions"][kTransformExtension] = std::move(transform);
    context_.out.UseExtension(kTransformExtension);
}

std::optional<Json> GltfTextures::Use(const TEV2_MATERIAL_MAP* map, TextureRole role, std::size_t uv_sets,
                                      const std::string& where)
{
    const TEV2_BITMAP_MATERIAL_MAP* const bitmap = BitmapOf(map, role, where);
    if (bitmap == nullptr)
        return Lose(where, "its map is of a kind that glTF does not have here");
    if (bitmap->coordinates.projection != TEV2_MAP_PROJECTION::TextureCoordinates)
        return Lose(where, "it is not placed by texture coordinates");
    if (bitmap->coordinates.uvSet >= uv_sets)
        return Lose(where, "it needs a set of texture coordinates that the mesh does not have");
    const std::optional<std::string> uri = UriOf(*bitmap, where);
    if (!uri)
        return std::nullopt;
    ReportReductions(*bitmap, role, where);
    Json texture = Json::object();
    if (const auto sampler = SamplerOf(*bitmap, where))
        texture["sampler"] = *sampler;
    texture["source"] = Element("images", {{"uri", *uri}});
    Json info = {{"index", Element("textures", std::move(texture))}};
    if (bitmap->coordinates.uvSet != 0)
        info["texCoord"] = bitmap->coordinates.uvSet;
    SetTransform(info, bitmap->coordinates);
    return info;
}

} // namespace tev2_gltf
