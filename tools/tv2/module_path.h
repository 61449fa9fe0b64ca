#pragma once

#include <string>

namespace tv2
{

/// The path of a module of this command, in its build tree or its installation; it need not exist.
std::string ModulePath(const std::string& name);

} // namespace tv2
