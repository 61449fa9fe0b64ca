#pragma once

#include "tev2_loader/status.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Called between the blocks of a read with the bytes in memory and those of the file (0 where that is not known, as of
/// a pipe), and every few milliseconds while a pipe has nothing to read (on Windows not until it has). False cancels.
using ReadWatch = std::function<bool(std::uint64_t read, std::uint64_t total)>;

/// Reads a whole file, or a pipe to its end, into memory; `path` is UTF-8. On failure the image is empty. Folders and
/// devices are refused, and so are files larger than `mostBytes` (0: of 4 GiB or more, which no scene file is). A read
/// that `watch` cancels fails with "cancelled".
Status ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::size_t mostBytes = 0,
                     const ReadWatch& watch = {});

} // namespace TEV2_LOADER
