#pragma once

#include <string_view>

namespace tev2_compare
{

/// The namespace of a name with its colon, "ann:" of "ann:Hips"; empty without.
inline std::string_view NameSpace(std::string_view name)
{
    return name.substr(0, name.rfind(':') + 1);
}

/// The name after its namespace.
inline std::string_view BaseName(std::string_view name)
{
    return name.substr(NameSpace(name).size());
}

} // namespace tev2_compare
