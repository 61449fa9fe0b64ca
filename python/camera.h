#pragma once

#include "python/part.h"
#include "tev2_loader/records/camera.h"

#include <cstddef>

namespace tev2_python
{

using Camera = Part<TEV2_LOADER::TEV2_CAMERA>;

/// The place of a camera in its scene. Raises ReferenceError once it was removed.
std::size_t CameraIndex(const Camera& camera);

} // namespace tev2_python
