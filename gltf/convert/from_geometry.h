#pragma once

/// Vertices, triangles, targets and weights of glTF meshes as records have them.

#include "gltf/convert/exchange.h"
#include "gltf/convert/from_context.h"
#include "gltf/mesh.h"
#include "tev2_loader/records/meshes.h"

#include <cstddef>
#include <vector>

namespace tev2_gltf
{

/// The primitives of a mesh that have triangles, and how their vertices are laid out: end to end, once for primitives
/// that share all accessors. Primitives without normals in a mesh with normals get vertices of their own for each
/// corner of a triangle, since flat triangles cannot share them.
class MeshLayout
{
public:
    /// Reports the primitives and attributes that have no place in a record. `is_skinned` keeps joints and weights.
    MeshLayout(FromContext& context, const gltf::Mesh& mesh, bool is_skinned);

    struct Block
    {
        const gltf::Primitive* primitive; // any of those that share it
        std::size_t first = 0;            // vertex
        std::size_t count = 0;
        std::vector<std::uint32_t> corners; // of flat triangles, the primitive's vertex for each; else empty
    };

    struct Part
    {
        const gltf::Primitive* primitive;
        std::size_t block = 0;
    };

    const gltf::Mesh& Mesh() const { return *mesh_; }
    const std::vector<Block>& Blocks() const { return blocks_; }
    const std::vector<Part>& Parts() const { return parts_; }
    std::size_t VertexCount() const { return vertex_count_; }
    bool HasFlatBlocks() const { return has_flat_blocks_; }

private:
    const gltf::Mesh* mesh_;
    std::vector<Block> blocks_;
    std::vector<Part> parts_;
    std::size_t vertex_count_ = 0;
    bool has_flat_blocks_ = false;
};

/// In the axes of a node with `exchange`.
TEV2_LOADER::TEV2_RIGID_VERTICES MakeVertices(FromContext& context, const MeshLayout& layout,
                                              Exchange exchange);

/// One for each part, corners over the vertices of the layout.
std::vector<TEV2_LOADER::TEV2_TRI_SUB_OBJECT> MakeSubObjects(FromContext& context, const MeshLayout& layout);

/// With names and without weights.
std::vector<TEV2_LOADER::TEV2_MORPH_TARGET> MakeTargets(FromContext& context, const MeshLayout& layout,
                                                        Exchange exchange);

/// The entries of the vertices; joints are below `joint_count`. Without bones and matrices.
TEV2_LOADER::TEV2_SKIN MakeWeights(FromContext& context, const MeshLayout& layout, std::size_t joint_count);

} // namespace tev2_gltf
