#pragma once

#include "tev2_loader/tev2.h"

#include <string>

namespace TEV2_LOADER
{

/// Saves a scene to a file by way of WriteWholeFile. 0 when the file is whole, otherwise an errno value; a file that was
/// there before is then kept. `path` holds bytes as the system's 8-bit calls take them; at most kMostPathBytes are kept.
int WriteSceneFile(const TEV2& scene, const std::string& path);

} // namespace TEV2_LOADER
