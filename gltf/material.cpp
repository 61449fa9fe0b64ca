#include "gltf/material.h"

#include "gltf/uri.h"

#include <algorithm>
#include <array>
#include <utility>

namespace gltf
{
namespace
{

template <std::size_t kCount>
std::optional<std::array<double, kCount>> NumbersIn(JsonValue object, const char* member, const Place& place)
{
    std::array<double, kCount> numbers;
    return ReadNumbersIn(object, member, numbers, place) ? std::optional(numbers) : std::nullopt;
}

std::optional<TextureUse> TextureUseIn(const Document& document, JsonValue owner, const char* member,
                                       const Place& place)
{
    if (!owner[member])
        return std::nullopt;
    return TextureUseOf(document, owner[member], place);
}

std::optional<Filter> FilterOf(JsonValue value)
{
    constexpr std::array<std::pair<int, Filter>, 6> kFilters = {{{9728, Filter::Nearest},
                                                                 {9729, Filter::Linear},
                                                                 {9984, Filter::NearestMipNearest},
                                                                 {9985, Filter::LinearMipNearest},
                                                                 {9986, Filter::NearestMipLinear},
                                                                 {9987, Filter::LinearMipLinear}}};
    for (const auto& [number, filter] : kFilters)
    {
        if (value.Whole() == number)
            return filter;
    }
    return std::nullopt;
}

Wrap WrapOf(JsonValue value)
{
    constexpr std::int64_t kMirror = 33648;
    constexpr std::int64_t kClamp = 33071;
    return value.Whole() == kMirror ? Wrap::Mirror : value.Whole() == kClamp ? Wrap::Clamp : Wrap::Repeat;
}

} // namespace

TextureUse TextureUseOf(const Document& document, JsonValue json, const Place& place)
{
    TextureUse use;
    use.json = json;
    use.texture = IndexIn(json, "index", document.Count("textures"), place);
    use.uv_set = SizeIn(json, "texCoord", 0, 0, place);
    use.amount = NumberIn(json, "scale", place);
    if (!use.amount)
        use.amount = NumberIn(json, "strength", place);
    const JsonValue transform = json["extensions"]["KHR_texture_transform"];
    use.offset = NumbersIn<2>(transform, "offset", place);
    use.scale = NumbersIn<2>(transform, "scale", place);
    use.rotation = NumberIn(transform, "rotation", place);
    use.uv_set = SizeIn(transform, "texCoord", 0, use.uv_set, place);
    return use;
}

Material MaterialAt(const Document& document, std::size_t index)
{
    Material material;
    material.json = document.Root()["materials"][index];
    material.name = material.json["name"].Text();
    const Place place = document.PlaceOf("materials", index);
    const JsonValue base = material.json["pbrMetallicRoughness"];
    material.base_colour = NumbersIn<4>(base, "baseColorFactor", place);
    material.metallic = NumberIn(base, "metallicFactor", place);
    material.roughness = NumberIn(base, "roughnessFactor", place);
    material.base_colour_texture = TextureUseIn(document, base, "baseColorTexture", place);
    material.metallic_roughness_texture = TextureUseIn(document, base, "metallicRoughnessTexture", place);
    material.normal_texture = TextureUseIn(document, material.json, "normalTexture", place);
    material.occlusion_texture = TextureUseIn(document, material.json, "occlusionTexture", place);
    material.emissive_texture = TextureUseIn(document, material.json, "emissiveTexture", place);
    material.emissive = NumbersIn<3>(material.json, "emissiveFactor", place);
    material.alpha_cutoff = NumberIn(material.json, "alphaCutoff", place);
    material.alpha_mode = material.json["alphaMode"].Text();
    material.double_sided = TruthIn(material.json, "doubleSided", place);
    return material;
}

Texture TextureAt(const Document& document, std::size_t index)
{
    Texture texture;
    texture.json = document.Root()["textures"][index];
    const Place place = document.PlaceOf("textures", index);
    texture.image = OptionalIndexIn(texture.json, "source", document.Count("images"), place);
    const std::optional<std::size_t> sampler =
        OptionalIndexIn(texture.json, "sampler", document.Count("samplers"), place);
    if (!sampler)
        return texture;
    const JsonValue json = document.Root()["samplers"][*sampler];
    texture.magnify = FilterOf(json["magFilter"]);
    texture.minify = FilterOf(json["minFilter"]);
    texture.wrap_u = WrapOf(json["wrapS"]);
    texture.wrap_v = WrapOf(json["wrapT"]);
    return texture;
}

bool Image::IsInside() const
{
    return view || IsDataUri(uri);
}

Image ImageAt(const Document& document, std::size_t index)
{
    Image image;
    image.json = document.Root()["images"][index];
    image.name = image.json["name"].Text();
    image.mime_type = image.json["mimeType"].Text();
    image.uri = image.json["uri"].Text();
    const Place place = document.PlaceOf("images", index);
    if (image.uri.empty())
        image.view = IndexIn(image.json, "bufferView", document.Count("bufferViews"), place);
    return image;
}

std::string_view BytesOf(Document& document, const Image& image, const Place& place, std::string& decoded)
{
    if (image.view)
        return document.ViewBytes(*image.view);
    try
    {
        decoded = DataOf(image.uri);
    }
    catch (const Error& error)
    {
        place.Fail("uri", error.what());
    }
    return decoded;
}

std::string_view ExtensionOf(const Image& image, std::string_view bytes)
{
    struct Kind
    {
        std::string_view begin, mime_type, extension;
    };
    using namespace std::string_view_literals;
    constexpr Kind kKinds[] = {{"\x89PNG"sv, "image/png"sv, ".png"sv},
                               {"\xFF\xD8\xFF"sv, "image/jpeg"sv, ".jpg"sv},
                               {"\xABKTX 20"sv, "image/ktx2"sv, ".ktx2"sv},
                               {"RIFF"sv, "image/webp"sv, ".webp"sv}};
    for (const Kind& kind : kKinds)
    {
        if (bytes.starts_with(kind.begin))
            return kind.extension;
    }
    const std::string_view stated =
        image.view ? image.mime_type : image.uri.substr(std::min<std::size_t>(image.uri.size(), 5));
    for (const Kind& kind : kKinds)
    {
        if (stated.starts_with(kind.mime_type))
            return kind.extension;
    }
    return ".bin";
}

} // namespace gltf
