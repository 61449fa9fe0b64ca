#pragma once

/// The camera switcher: cuts in extras, and a camera node that follows the active camera.

#include "gltf/convert/to_gltf_animation.h"
#include "gltf/convert/to_gltf_cameras.h"
#include "gltf/convert/to_gltf_nodes.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tev2_gltf
{

class GltfSwitcher
{
public:
    GltfSwitcher(ToGltfContext& context, GltfNodes& nodes, const CameraIndices& cameras);

    /// Adds the node, if a camera is ever active. `shift` has the time shift of each source.
    void Write(const std::vector<double>& shift);

    void Animate(GltfAnimation& animation);

    /// What belongs into the extras of the scene.
    Json Extras() const { return extras_; }

private:
    struct Cut
    {
        float time;
        std::int32_t camera; // -1: none
    };

    std::vector<Cut> CutsOf(std::size_t source, double shift);
    Json Describe(std::size_t source, const std::vector<Cut>& cuts) const;
    std::vector<Cut> ShotsOf(std::size_t source) const;
    bool IsCamera(std::int32_t camera) const;

    ToGltfContext& context_;
    GltfNodes& nodes_;
    const CameraIndices& cameras_;
    std::vector<std::vector<Cut>> cuts_; // of each source
    std::optional<std::size_t> node_;
    Json extras_ = Json::object();
};

} // namespace tev2_gltf
