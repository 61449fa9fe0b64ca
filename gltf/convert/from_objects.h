#pragma once

/// Cameras and lights of glTF.

#include "gltf/convert/from_context.h"
#include "gltf/convert/from_nodes.h"
#include "tev2_loader/tev2.h"

namespace tev2_gltf
{

/// One for each node that has one, in the order of the plan. An object without a name is called as its node.
void AddCameras(FromContext& context, const NodePlan& plan, TEV2_LOADER::TEV2& scene);
void AddLights(FromContext& context, const NodePlan& plan, TEV2_LOADER::TEV2& scene);

/// The name of an object of a node.
TEV2_LOADER::TEV2_WIDE_STRING ObjectName(FromContext& context, std::string_view name, std::size_t node);

} // namespace tev2_gltf
