#pragma once

/// Meshes, their instances, and the skins of weighted meshes.

#include "gltf/convert/to_gltf_animation.h"
#include "gltf/convert/to_gltf_geometry.h"
#include "gltf/convert/to_gltf_materials.h"
#include "gltf/convert/to_gltf_nodes.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tev2_gltf
{

/// A mesh of any kind.
struct SourceMesh
{
    const TEV2_LOADER::TEV2_TRI_OBJECT* object = nullptr;
    const TEV2_LOADER::TEV2_RIGID_VERTICES* vertices = nullptr;
    const std::vector<TEV2_LOADER::TEV2_MORPH_TARGET>* targets = nullptr; // null: a kind without
    const TEV2_LOADER::TEV2_SKIN* skin = nullptr;                         // null: not weighted
    std::string where;
    std::string name;
};

class GltfMeshes
{
public:
    GltfMeshes(ToGltfContext& context, GltfNodes& nodes)
        : context_(context), nodes_(nodes), materials_(context)
    {
    }

    /// All meshes, then their instances. Weighted meshes come last, since they look for nodes that have nothing else.
    void Write();

    /// The weights of the targets of all meshes.
    void Animate(GltfAnimation& animation);

private:
    using SubObjects = std::vector<TEV2_LOADER::TEV2_TRI_SUB_OBJECT>;

    /// How an instance differs from its source.
    struct Difference
    {
        const void* instance = nullptr; // null: not at all
        const SubObjects* sub_objects = nullptr;
        const std::vector<std::uint32_t>* materials = nullptr;
    };

    struct Placed
    {
        std::size_t node;
        int kind; // list of the instance: 4 morph meshes, 6 weighted meshes
        std::size_t index;
    };

    void WriteList(int kind);
    std::optional<SourceMesh> Source(int kind, std::size_t index);
    std::optional<SourceMesh> AnimMesh(std::size_t index);
    void WriteInstances(int kind);
    void Place(const SourceMesh& mesh, int kind, std::size_t index,
               const TEV2_LOADER::TEV2_POSITIONAL_OBJECT& object, const std::string& where,
               const Difference& difference);
    void PlaceSkinned(const SourceMesh& mesh, int kind, std::size_t index,
                      const TEV2_LOADER::TEV2_POSITIONAL_OBJECT& object, const std::string& where,
                      const Difference& difference);
    std::optional<std::size_t> MeshOf(const SourceMesh& mesh, Exchange own, const Difference& difference);
    const GltfGeometry& GeometryOf(const SourceMesh& mesh, Exchange own);
    Json PrimitivesOf(const SourceMesh& mesh, Exchange own, const Difference& difference);
    void SetMaterial(Json& primitive, const SourceMesh& mesh, Exchange own, std::uint32_t material);
    std::optional<std::size_t> IndicesOf(const TEV2_LOADER::TEV2_TRI_SUB_OBJECT& part, std::size_t vertices,
                                         const std::string& where);
    void SetTargets(Json& json, const SourceMesh& mesh);
    std::optional<std::size_t> SkinOf(const SourceMesh& mesh);
    std::size_t JointOf(std::uint32_t bone, std::vector<bool>& used, const std::string& where);
    TEV2_LOADER::TEV2_MATRIX_3X4 BindMatrixOf(const TEV2_LOADER::TEV2_SKIN& skin, std::size_t bone);
    std::size_t SkinNode(std::uint32_t value, const std::string& name, const std::string& where);
    void MarkSkinNode(std::size_t node, std::uint32_t value);
    void ReportSwitches(const TEV2_LOADER::TEV2_GEOM_OBJECT& object, const std::string& where);

    ToGltfContext& context_;
    GltfNodes& nodes_;
    GltfMaterials materials_;
    std::map<std::pair<const void*, Exchange>, GltfGeometry> geometries_;            // by object
    std::map<std::tuple<const void*, Exchange, std::size_t>, std::size_t> tangents_; // by object and set
    std::map<std::tuple<const void*, Exchange, const void*>, std::optional<std::size_t>>
        meshes_;                                                    // by object and instance that differs
    std::map<std::string, std::size_t> skins_;                      // by bones and matrices, as bytes
    std::map<const void*, std::optional<std::size_t>> of_;          // skins by object
    std::vector<Placed> placed_;                                    // what has targets
    std::map<std::size_t, TEV2_LOADER::TEV2_RIGID_VERTICES> posed_; // anim meshes at the start, by index
    std::map<const TEV2_LOADER::TEV2_TRI_SUB_OBJECT*, std::optional<std::size_t>> indices_;
};

} // namespace tev2_gltf
