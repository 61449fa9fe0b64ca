#pragma once

#include <cmath>
#include <limits>

namespace mobu_host
{

// Exported files hold single precision: what is not finite there is refused in every format.
inline bool IsExportable(double number)
{
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

} // namespace mobu_host
