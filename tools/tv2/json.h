#pragma once

#include "tools/tv2/text.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <string>

/// JSON whose numbers are single precision: they print as the shortest decimal that reads back to the same
/// bits. Members keep their order.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

/// What stands for a file that nothing can be told of.
inline Json JsonFailure(const std::string& file, const std::string& error)
{
    return {{"file", file}, {"error", error}};
}

/// JSON as the command prints it; bytes that are no UTF-8 become U+FFFD.
inline std::string JsonText(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

/// An f32; a non-finite one as the string of FloatText.
inline Json JsonFloat(float value)
{
    return std::isfinite(value) ? Json(value) : Json(FloatText(value));
}
