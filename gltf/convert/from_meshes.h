#pragma once

/// Meshes of glTF at their nodes: rigids, morph meshes, weighted meshes, and instances of those.

#include "gltf/convert/from_context.h"
#include "gltf/convert/from_geometry.h"
#include "gltf/convert/from_nodes.h"
#include "gltf/mesh.h"
#include "gltf/skin.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace tev2_gltf
{

/// Places the meshes of one document, scene after scene.
class FromMeshes
{
public:
    /// `moved_weights`: nodes whose weights an animation of the document moves. They get objects of their own.
    FromMeshes(FromContext& context, const NodePlan& plan, std::set<std::size_t> moved_weights);

    void AddTo(TEV2_LOADER::TEV2& scene, const gltf::Animation* animation,
               const std::map<std::size_t, NodeMotion>& motions);

private:
    /// What a scene can show again: vertices, in which axes, with which skin, with whose weights.
    struct Key
    {
        std::size_t vertices = 0; // meshes that share their vertices share this number
        Exchange exchange = Exchange::SwapYZ;
        std::size_t skin = kNoIndex;
        std::size_t weights = kNoIndex; // node that has its own

        bool operator<(const Key& other) const
        {
            return std::tie(vertices, exchange, skin, weights) <
                   std::tie(other.vertices, other.exchange, other.skin, other.weights);
        }
    };

    /// An object that is there.
    struct Source
    {
        std::uint32_t list = 0;  // of instances
        std::uint32_t index = 0; // in its array
        std::size_t mesh = 0;
    };

    struct Known
    {
        gltf::Mesh mesh;
        std::unique_ptr<MeshLayout> layout, skinned_layout;
        std::size_t vertices = 0;
    };

    static constexpr std::size_t kNoIndex = ~std::size_t{0};

    const MeshLayout& LayoutOf(std::size_t mesh, bool is_skinned);
    void AddNode(const NodePlan::Entry& entry, const gltf::Node& node);
    Source AddObject(const NodePlan::Entry& entry, const MeshLayout& layout, std::optional<std::size_t> skin);
    void AddInstance(const NodePlan::Entry& entry, const MeshLayout& layout, const Source& source,
                     bool is_skinned);
    void SetWeights(std::size_t node, const gltf::Mesh& mesh,
                    std::vector<TEV2_LOADER::TEV2_MORPH_TARGET>& targets);
    void SetBones(const gltf::Skin& source, TEV2_LOADER::TEV2_SKIN& result);

    FromContext& context_;
    const NodePlan& plan_;
    const std::set<std::size_t> moved_weights_;
    std::map<std::size_t, Known> known_; // by mesh
    std::map<std::string, std::size_t> vertices_known_;
    std::set<std::size_t> reported_skins_;

    // Of the scene that is being made.
    TEV2_LOADER::TEV2* scene_ = nullptr;
    const gltf::Animation* animation_ = nullptr;
    const std::map<std::size_t, NodeMotion>* motions_ = nullptr;
    std::map<Key, Source> sources_;
};

} // namespace tev2_gltf
