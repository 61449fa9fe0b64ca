#pragma once

#include <vector>

#include <fbsdk/fbsdk.h>

namespace mobu_host
{

/// The library objects of all loaded modules, in order of construction.
std::vector<FBLibraryBase*>& Libraries();

} // namespace mobu_host
