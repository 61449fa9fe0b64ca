#pragma once

/// Materials, and the textures and images that they use.

#include "gltf/document.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace gltf
{

/// How a material uses a texture. What the document does not state is absent.
struct TextureUse
{
    std::size_t texture = 0;
    std::size_t uv_set = 0;
    std::optional<double> amount;                // scale of normals, strength of occlusion
    std::optional<std::array<double, 2>> offset; // of KHR_texture_transform, as are the next two
    std::optional<std::array<double, 2>> scale;
    std::optional<double> rotation; // radians
    JsonValue json;
};

/// Of the value of "baseColorTexture" and its like.
TextureUse TextureUseOf(const Document& document, JsonValue json, const Place& place);

/// A metallic-roughness material. What the document does not state is absent; glTF has a default for all of it.
struct Material
{
    std::string_view name;
    std::optional<std::array<double, 4>> base_colour;
    std::optional<std::array<double, 3>> emissive;
    std::optional<double> metallic, roughness, alpha_cutoff;
    std::string_view alpha_mode;
    bool double_sided = false;
    std::optional<TextureUse> base_colour_texture, metallic_roughness_texture, normal_texture,
        occlusion_texture, emissive_texture;
    JsonValue json;
};

Material MaterialAt(const Document& document, std::size_t index);

enum class Wrap : std::uint8_t
{
    Repeat,
    Mirror,
    Clamp
};

enum class Filter : std::uint8_t // the first two are those of enlarged images
{
    Nearest,
    Linear,
    NearestMipNearest,
    LinearMipNearest,
    NearestMipLinear,
    LinearMipLinear
};

struct Texture
{
    std::optional<std::size_t> image;
    std::optional<Filter> magnify, minify;
    Wrap wrap_u = Wrap::Repeat;
    Wrap wrap_v = Wrap::Repeat;
    JsonValue json;
};

/// Of a texture below the document's number. Filters and ways to wrap that glTF does not know are absent or Repeat.
Texture TextureAt(const Document& document, std::size_t index);

struct Image
{
    std::string_view name;
    std::string_view mime_type; // may be empty
    std::string_view uri;       // empty: the image is in a buffer view
    std::optional<std::size_t> view;
    JsonValue json;

    bool IsInside() const; // in the document, not in a file beside it
};

/// Throws for an image that is nowhere.
Image ImageAt(const Document& document, std::size_t index);

/// The bytes of an image inside the document. `decoded` receives those of a data URI.
std::string_view BytesOf(Document& document, const Image& image, const Place& place, std::string& decoded);

/// ".png", ".jpg" and so on: what the bytes begin with, else what the document says they are, else ".bin".
std::string_view ExtensionOf(const Image& image, std::string_view bytes);

} // namespace gltf
