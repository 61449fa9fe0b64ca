#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Reads a whole file, or what a pipe delivers, into memory. On failure: false, image empty, error says why
/// in words. Devices and folders are refused, and so is anything of 4 GiB or more, which no scene can be.
bool ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::string& error);

} // namespace TEV2_LOADER
