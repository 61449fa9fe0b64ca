#pragma once

#include <string>

#include <fbsdk/fbversion.h>

// Shared libraries of the operating system.

namespace mobu_host
{

/// Null on failure; `cause` is the system's error text.
FBSDK_DLL void* OpenModule(const std::string& path, std::string& cause);
FBSDK_DLL void* ModuleSymbol(void* module, const char* name); // null when there is none
void CloseModule(void* module);
bool SameModule(const void* first, const void* second); // two addresses of code or data

} // namespace mobu_host
