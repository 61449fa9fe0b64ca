#pragma once

/// The camera switcher, as the conversion to glTF writes it (to_gltf.h).

#include "gltf/convert/from_context.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <string_view>

namespace tev2_gltf
{

/// Whether a node is the camera that follows the active one; it has no children and nothing else of its own.
bool IsSwitcherNode(const gltf::Document& document, std::size_t node);

/// Adds the switcher of an animation to the scene, whose cameras are there.
void AddSwitcher(FromContext& context, std::size_t scene_index, std::string_view animation,
                 TEV2_LOADER::TEV2& scene);

} // namespace tev2_gltf
