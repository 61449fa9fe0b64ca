#pragma once

/// Lights and their instances, by KHR_lights_punctual.

#include "gltf/convert/to_gltf_nodes.h"

namespace tev2_gltf
{

/// Gives nodes with lights their exchange, before anything is placed and after cameras were asked.
void ClaimLightNodes(const ToGltfContext& context, GltfNodes& nodes);

void WriteLights(ToGltfContext& context, GltfNodes& nodes);

} // namespace tev2_gltf
