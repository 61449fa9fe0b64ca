#pragma once

#include <string>

namespace TEV2_LOADER::file_system
{

/// On Windows alone: a path in the bytes of the active code page, as UTF-16. Everything that opens, examines or renames
/// the same file converts its path here.
std::wstring WidePath(const std::string& path);

} // namespace TEV2_LOADER::file_system
