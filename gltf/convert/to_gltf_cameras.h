#pragma once

/// Cameras and their instances.

#include "gltf/convert/to_gltf_nodes.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace tev2_gltf
{

/// Gives nodes with cameras their exchange, before anything is placed.
void ClaimCameraNodes(const ToGltfContext& context, GltfNodes& nodes);

struct CameraPlace
{
    std::size_t camera; // in the document
    std::uint32_t node; // in the scene, or kNone
};

/// By index in the scene.
using CameraIndices = std::map<std::size_t, CameraPlace>;

CameraIndices WriteCameras(ToGltfContext& context, GltfNodes& nodes);

} // namespace tev2_gltf
