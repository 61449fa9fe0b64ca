#pragma once

#include "gltf/convert/to_gltf_textures.h"

namespace tev2_gltf
{

/// Adds a shader material to the JSON of a material: its parameters where its shader is metallic-roughness, otherwise
/// its base colour, and the rest in extras.
void WriteShader(ToGltfContext& context, GltfTextures& textures,
                 const TEV2_LOADER::TEV2_SHADER_MATERIAL& material, std::size_t uv_sets,
                 const std::string& where, Json& json);

} // namespace tev2_gltf
