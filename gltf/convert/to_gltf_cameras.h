#pragma once

/// Cameras and their instances.

#include "gltf/convert/to_gltf_nodes.h"

namespace tev2_gltf
{

/// Gives nodes with cameras their exchange, before anything is placed.
void ClaimCameraNodes(const ToGltfContext& context, GltfNodes& nodes);

/// Camera n of the scene is camera n of the document.
void WriteCameras(ToGltfContext& context, GltfNodes& nodes);

} // namespace tev2_gltf
