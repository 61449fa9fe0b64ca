#pragma once

#include "python/scene.h"

#include <cstddef>

namespace tev2_python
{

/// Takes a node and all below it out of a scene. Other records then refer to the same nodes as before, by their new
/// indices. Raises ValueError, and changes nothing, where an object needs one of the nodes, or may: one of another
/// layout.
void RemoveNode(Scene& scene, std::size_t index);

/// The same for a camera. Cuts to it become cuts to no camera.
void RemoveCamera(Scene& scene, std::size_t index);

} // namespace tev2_python
