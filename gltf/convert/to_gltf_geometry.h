#pragma once

/// Vertices and targets as accessors.

#include "gltf/convert/exchange.h"
#include "gltf/convert/to_gltf_context.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tev2_gltf
{

/// What the primitives of a mesh share.
struct GltfGeometry
{
    std::size_t count = 0; // vertices
    std::size_t uv_sets = 0;
    Json attributes = Json::object();
    Json targets = Json::array();
};

/// Exchanges the columns of a mesh. Reports what is not finite, not of length 1 or out of range.
GltfGeometry WriteGeometry(ToGltfContext& context, const TEV2_LOADER::TEV2_RIGID_VERTICES& vertices,
                           std::span<const TEV2_LOADER::TEV2_MORPH_TARGET> targets, Exchange own,
                           const std::string& where);

/// Joints and weights of a skin as more attributes: entries of a vertex keep their places, those without weight are 0,
/// several of one bone become one. Weights whose sum is not 1 are divided by it, which is reported.
void WriteWeights(ToGltfContext& context, const TEV2_LOADER::TEV2_SKIN& skin, GltfGeometry& geometry,
                  const std::string& where);

} // namespace tev2_gltf
