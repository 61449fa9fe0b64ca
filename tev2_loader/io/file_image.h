#pragma once

#include "tev2_loader/status.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Reads a whole file, or a pipe to its end, into memory; `path` is UTF-8. On failure the image is empty. Folders and
/// devices are refused, and so are files larger than `mostBytes` (0: of 4 GiB or more, which no scene file is).
Status ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::size_t mostBytes = 0);

} // namespace TEV2_LOADER
