#pragma once

#include <string_view>

// A metallic-roughness material of glTF is a shader material of this shader. Its parameters have the names that glTF
// uses: baseColorFactor (vector 4), emissiveFactor (vector 3), metallicFactor, roughnessFactor and alphaCutoff
// (floats), alphaMode (text), and the maps baseColorTexture, metallicRoughnessTexture, normalTexture, occlusionTexture
// and emissiveTexture, bitmaps whose amount is the scale of normals and the strength of occlusion. What is absent has
// the value that glTF gives it. Members of extensions are called "KHR_materials_clearcoat.clearcoatFactor" and so on:
// floats, vectors of 3 and 4, texts, maps, and truth values as integers. KHR_materials_unlit, which has no members, is
// an integer of that name.

namespace tev2_gltf
{

inline constexpr std::string_view kMetallicRoughness = "metallic-roughness";

inline constexpr std::string_view kUnlitExtension = "KHR_materials_unlit";

/// The text with the material's extras as JSON.
inline constexpr std::string_view kExtrasParameter = "extras";

} // namespace tev2_gltf
