#pragma once

#include "tev2_loader/status.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Reads a whole file, or what a pipe delivers, into memory; `path` is UTF-8. On failure the image is empty. Folders and
/// devices are refused, and so are files larger than `mostBytes` (0: 4 GiB, which no scene file reaches).
Status ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::size_t mostBytes = 0);

} // namespace TEV2_LOADER
