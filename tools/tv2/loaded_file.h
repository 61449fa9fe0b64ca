#pragma once

#include "check/loaded_file.h"

#include <string>

namespace tv2
{

using tev2_check::LoadedFile;

/// The path that stands for standard input.
inline constexpr const char* kStandardInput = "-";

/// Reads and loads a file. Fails only when it cannot be read at all; the reason names the file.
TEV2_LOADER::Status ReadFile(const std::string& argument, LoadedFile& file);

/// Whether two paths are one file, or the same text. A missing file equals no other.
bool IsSameFile(const std::string& a, const std::string& b);

} // namespace tv2
