#pragma once

/// Materials: metallic-roughness shader materials as they are, all others as the nearest one.

#include "gltf/convert/to_gltf_textures.h"

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace tev2_gltf
{

class GltfMaterials
{
public:
    /// Writes the scene's materials, in their order.
    explicit GltfMaterials(ToGltfContext& context);

    /// What a mesh offers to the textures of its materials.
    struct Surface
    {
        std::size_t uv_sets = 0;
        bool has_tangents = false; // or can have them

        bool operator<(const Surface& other) const
        {
            return std::tie(uv_sets, has_tangents) < std::tie(other.uv_sets, other.has_tangents);
        }
    };

    /// The material at an index in the scene for a mesh, without the textures that it cannot have. Nothing for kNone,
    /// an index beyond the materials and a kept body.
    std::optional<std::size_t> For(std::uint32_t material, const Surface& surface);

    /// The set of texture coordinates that tangents for this material of the document follow; nothing where it needs
    /// none.
    std::optional<std::size_t> TangentSetOf(std::size_t written) const;

private:
    std::size_t Write(std::uint32_t material, const Surface& surface);

    ToGltfContext& context_;
    GltfTextures textures_;
    std::map<std::pair<std::uint32_t, Surface>, std::size_t> variants_; // by index
    std::map<std::uint32_t, std::size_t> sets_needed_;                  // by index
    std::map<std::size_t, std::size_t> tangent_sets_;                   // by index in the document
};

} // namespace tev2_gltf
