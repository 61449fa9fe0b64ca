#pragma once

/// Where a node is in the world over time, with all that is above it.

#include "gltf/convert/to_gltf_nodes.h"

#include <memory>
#include <optional>
#include <vector>

namespace tev2_gltf
{

struct WorldPose
{
    TEV2_VECTOR_3 translation;
    TEV2_QUATERNION rotation; // without the scales of the nodes above, and without mirroring
};

class WorldPoses
{
public:
    /// Of a node of a source; beyond its nodes: always at the origin.
    WorldPoses(const ToGltfContext& context, const GltfNodes& nodes, std::size_t source, std::uint32_t node);

    bool Moves() const { return !times_.empty(); }

    /// Ascending times of all keys of tracks with two or more, in the time of the source.
    const std::vector<float>& Times() const { return times_; }

    std::size_t NodeCount() const { return chain_.size(); }

    WorldPose At(float time);

private:
    struct Joint
    {
        std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3> translation;
        std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION> rotation;
        std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3> scale;
    };

    std::vector<Joint> chain_; // from top level down
    std::vector<float> times_;
};

} // namespace tev2_gltf
