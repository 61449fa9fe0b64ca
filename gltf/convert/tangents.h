#pragma once

#include "gltf/convert/exchange.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace tev2_gltf
{

/// A direction of length 1 at right angles to a normal of length 1.
TEV2_VECTOR_3 AnyTangent(const TEV2_VECTOR_3& normal);

/// Tangents for normal maps, in the axes of glTF: for each vertex the direction in which u grows, at right angles to
/// its normal, and 1 or -1 for the side of the direction in which v falls. Empty where the mesh has no normals or no
/// such set of texture coordinates.
std::vector<float> MakeTangents(const TEV2_LOADER::TEV2_RIGID_VERTICES& vertices,
                                std::span<const TEV2_LOADER::TEV2_TRI_SUB_OBJECT> parts, Exchange own,
                                std::size_t uv_set);

} // namespace tev2_gltf
