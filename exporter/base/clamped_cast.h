#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace tev2_exporter
{

/// Truncates toward zero and clamps to the range of the type; NaN becomes 0.
inline std::int32_t ToInt32(double value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value))
        return 0;
    return static_cast<std::int32_t>(
        std::fmax(static_cast<double>(Limits::min()), std::fmin(static_cast<double>(Limits::max()), value)));
}

} // namespace tev2_exporter
