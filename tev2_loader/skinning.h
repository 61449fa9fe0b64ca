#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_loader/records/meshes.h"

#include <cstddef>
#include <cstdint>
#include <span>

// What the vertices of meshes look like at the present time, as a shader works it out. These functions are the
// reference for such shaders; they allocate nothing.
//
//     scene.SetTime(time); // moves the weights of the targets and forms the palette
//     const TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes[0];
//     std::vector<TEV2_VECTOR_3> positions(mesh.vertices->Count());
//     SkinVertices(mesh, {.positions = positions}); // in the world
//
// A vertex goes through two steps.
//
// Morphing adds the weighted offsets of the targets to the vertices that they list, in the order of the targets:
//
//     position = position + weight[0] * offset[0] + weight[1] * offset[1] ...
//     normal, tangent = the same
//     binormal = cross(normal, tangent), negated where that of the unmorphed vertex points away from its binormal
//
// The binormal is formed anew where a target that has normals or tangents lists the vertex, whatever its weight, and
// stays elsewhere.
//
// Skinning blends the matrices of the palette and applies the result:
//
//     M = weight[0] * palette[bone[0]] + weight[1] * palette[bone[1]] ...
//     position = M * (position, 1)
//     normal, tangent, binormal = 3x3 part of M * it
//
// Weights are used as they stand, whatever their sum is. Both steps end by making normals, tangents and binormals 1
// long; those of length 0, or not finite, stay as they are. Everything is computed in single precision in the order
// written here, lengths in double precision.

namespace TEV2_LOADER
{

/// The vertices of a mesh, column by column; entry i of each belongs to vertex i. Absent columns are empty.
struct VerticesIn
{
    std::span<const TEV2_VECTOR_3> positions{};
    std::span<const TEV2_VECTOR_3> normals{};
    std::span<const TEV2_VERTEX_FRAME> frames{};
};

/// Where results go; columns that are not wanted are empty.
struct VerticesOut
{
    std::span<TEV2_VECTOR_3> positions{};
    std::span<TEV2_VECTOR_3> normals{};
    std::span<TEV2_VERTEX_FRAME> frames{};
};

/// What a target adds: weight times entry i of each column to vertex vertices[i]. Absent columns are empty.
struct MorphTarget
{
    float weight = 0.0f; ///< 0 adds nothing, not even what is not finite
    std::span<const std::uint32_t> vertices{};
    std::span<const TEV2_VECTOR_3> positions{};
    std::span<const TEV2_VECTOR_3> normals{};
    std::span<const TEV2_VECTOR_3> tangents{};
};

/// Which bones move which vertices, and the matrices of the bones. The entries of vertex i begin at i * influences.
struct PosedSkin
{
    std::size_t influences = 0;
    std::span<const std::uint32_t> bones{}; ///< indices in the palette
    std::span<const float> weights{};
    std::span<const TEV2_MATRIX_3X4> palette{}; ///< a bone beyond it has the identity
};

/// Morphs every column that is in both `in` and `out`, as many vertices as both have; the rest of `out` is not touched.
/// Vertices that only a target has are ignored. Binormals are formed from the normals in `out`: give room for normals
/// wherever frames are wanted.
void MorphVertices(const VerticesIn& in, std::span<const MorphTarget> targets, const VerticesOut& out);

/// Skins every column that is in both `in` and `out`, as many vertices as both and the entries of the skin suffice for;
/// the rest of `out` is not touched. `out` may be the memory of `in`.
void SkinVertices(const VerticesIn& in, const PosedSkin& skin, const VerticesOut& out);

/// The vertices of a mesh at the present time, in the axes of its node: MorphVertices with its targets.
void MorphVertices(const TEV2_MORPH_MESH& mesh, const VerticesOut& out);

/// The vertices of a mesh at the present time, in the world: MorphVertices, if it has targets, then SkinVertices with
/// the palette that the scene's last SetTime or Update has formed.
void SkinVertices(const TEV2_WEIGHTED_MESH& mesh, const VerticesOut& out);

} // namespace TEV2_LOADER
