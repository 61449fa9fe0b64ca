#pragma once

/// Maps as textures: images beside the document, samplers, transforms of texture coordinates.

#include "gltf/convert/to_gltf_context.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tev2_gltf
{

/// What a material reads from a texture.
enum class TextureRole : std::uint8_t
{
    Colour, // encoded as sRGB
    Linear,
    Normals,
};

class GltfTextures
{
public:
    explicit GltfTextures(ToGltfContext& context) : context_(context) {}

    /// The value of "baseColorTexture" and its like, without "scale" and "strength". Nothing, reported, for a map that
    /// glTF cannot have, and for one that needs a later set of texture coordinates than `uv_sets` has.
    std::optional<Json> Use(const TEV2_LOADER::TEV2_MATERIAL_MAP* map, TextureRole role, std::size_t uv_sets,
                            const std::string& where);

private:
    const TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP* BitmapOf(const TEV2_LOADER::TEV2_MATERIAL_MAP* map,
                                                          TextureRole role, const std::string& where);
    std::optional<std::string> UriOf(const TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP& map,
                                     const std::string& where);
    std::size_t Element(const char* list, Json element);
    std::optional<std::size_t> SamplerOf(const TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP& map,
                                         const std::string& where);
    void ReportReductions(const TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP& map, TextureRole role,
                          const std::string& where);
    void SetTransform(Json& info, const TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP_COORDINATES& coordinates);
    std::nullopt_t Lose(const std::string& where, const std::string& why);

    ToGltfContext& context_;
    std::map<std::string, std::size_t> elements_; // by list and JSON
};

} // namespace tev2_gltf
