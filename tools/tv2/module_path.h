#pragma once

#include <string>

namespace tv2
{

/// A module that belongs to this command, whether it exists or not: in the tree it was built in, or as installed.
std::string ModulePath(const std::string& name);

} // namespace tv2
