#pragma once

#include "host/math/affine.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace mobu_host
{

/// Exported files hold single precision: what is not finite there is refused in every format.
inline bool IsExportable(double number)
{
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

inline bool IsExportable(const Affine& affine)
{
    const auto is_exportable = [](double number) { return IsExportable(number); };
    return std::all_of(affine.place.begin(), affine.place.end(), is_exportable) &&
           std::all_of(std::begin(affine.linear.at), std::end(affine.linear.at),
                       [&](const auto& row)
                       { return std::all_of(std::begin(row), std::end(row), is_exportable); });
}

} // namespace mobu_host
