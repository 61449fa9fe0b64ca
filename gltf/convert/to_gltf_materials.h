#pragma once

/// Materials: metallic-roughness shader materials as they are, all others as the nearest one.

#include "gltf/convert/to_gltf_textures.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

namespace tev2_gltf
{

class GltfMaterials
{
public:
    /// Writes the scene's materials, in their order.
    explicit GltfMaterials(ToGltfContext& context);

    /// The material at an index in the scene for a mesh with that many sets of texture coordinates, which its textures
    /// may not exceed. Nothing for kNone, an index beyond the materials and a kept body.
    std::optional<std::size_t> For(std::uint32_t material, std::size_t uv_sets);

private:
    ToGltfContext& context_;
    GltfTextures textures_;
    std::map<std::pair<std::uint32_t, std::size_t>, std::size_t> variants_; // by index and sets
};

} // namespace tev2_gltf
