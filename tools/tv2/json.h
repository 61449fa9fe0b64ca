#pragma once

#include "tools/tv2/text.h"

#include <nlohmann/json.hpp>

#include <cmath>

/// JSON whose numbers are single precision: they print as the shortest decimal that reads back to the same
/// bits. Members keep their order.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

/// An f32; a non-finite one as the string of FloatText.
inline Json JsonFloat(float value)
{
    return std::isfinite(value) ? Json(value) : Json(FloatText(value));
}
