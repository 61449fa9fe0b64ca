#pragma once

/// The hierarchy of a document's scene, and its animations.

#include "gltf/convert/exchange.h"
#include "gltf/convert/from_context.h"
#include "gltf/convert/from_tracks.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace tev2_gltf
{

/// Which nodes become records, in their order: that of the document where it has parents before their children, else
/// depth first.
struct NodePlan
{
    struct Entry
    {
        std::uint32_t node;  // of the document
        std::int32_t parent; // in the entries, -1 at top level
        Exchange own;
        Exchange parent_exchange;
        bool is_light_child = false; // added below `node` for its light
    };

    std::vector<Entry> entries;
    /// Nodes that were only added for a skinned mesh, which are not among the entries, and the record that the mesh
    /// belongs to; kNone: the world.
    std::map<std::uint32_t, std::uint32_t> skin_nodes;
    std::vector<std::uint32_t> record_of_node; // kNone: the scene does not show it
    std::vector<std::uint32_t> light_record_of_node;
    std::optional<std::uint32_t> switcher_node; // follows the active camera; not among the entries

    std::uint32_t RecordOf(std::size_t node) const { return record_of_node[node]; }
    /// The record of the node that a mesh on this one belongs to.
    std::uint32_t RecordOfMeshAt(std::uint32_t node) const;
    Exchange ExchangeOf(std::size_t node) const { return entries[record_of_node[node]].own; }
};

/// Reports nodes that the scene does not show.
NodePlan MakeNodePlan(FromContext& context);

/// What one animation moves of a node.
struct NodeMotion
{
    std::optional<gltf::Channel> translation, rotation, scale, weights;
};

/// By node. Reports channels that move something else, or that a later one replaces.
std::map<std::size_t, NodeMotion> ReadMotions(const FromContext& context, const NodePlan& plan,
                                              const gltf::Animation& animation);

/// The keys of a channel of an animation as straight keys.
StraightKeys ReadKeys(FromContext& context, const gltf::Animation& animation, const gltf::Channel& channel,
                      std::size_t width, TEV2_LOADER::TEV2_FLOAT32_RANGE& time_range);

/// Adds the nodes with their tracks, and widens the time range of the scene to their keys.
void AddNodes(FromContext& context, const NodePlan& plan, const gltf::Animation* animation,
              const std::map<std::size_t, NodeMotion>& motions, TEV2_LOADER::TEV2& scene);

} // namespace tev2_gltf
