#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Reads a whole file into memory. On failure: false, image empty, error says why in words.
bool ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::string& error);

} // namespace TEV2_LOADER
