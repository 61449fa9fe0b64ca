#pragma once

#include "tools/tv2/text.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace tv2
{

/// JSON whose numbers are single precision: they print as the shortest decimal that reads back to the same
/// bits. Members keep their order.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                  std::uint64_t, float>;

/// What stands for a file that nothing can be told of.
inline Json JsonFailure(const std::string& file, const std::string& error)
{
    return {{"file", file}, {"error", error}};
}

/// Beside each text that is not UTF-8, the bytes of a file name for example, a member "<name>Bytes" with all of its
/// bytes, percent-encoded.
template <class AnyJson>
void AddBytesOfTexts(AnyJson& json)
{
    if (!json.is_structured())
    {
        return;
    }
    std::vector<std::pair<std::string, std::string>> added;
    for (auto member = json.begin(); member != json.end(); ++member)
    {
        AddBytesOfTexts(*member);
        if (json.is_object() && member->is_string() &&
            !IsUtf8(member->template get_ref<const std::string&>()))
        {
            added.emplace_back(member.key() + "Bytes",
                               PercentEncoded(member->template get_ref<const std::string&>()));
        }
    }
    for (const auto& [key, bytes] : added)
    {
        json[key] = bytes;
    }
}

/// JSON as the command prints it. Bytes that are not UTF-8 become U+FFFD, and are given beside it.
template <class AnyJson>
std::string JsonText(AnyJson json)
{
    AddBytesOfTexts(json);
    return json.dump(2, ' ', false, AnyJson::error_handler_t::replace);
}

/// An f32; a non-finite one as the string of FloatText.
inline Json JsonFloat(float value)
{
    return std::isfinite(value) ? Json(value) : Json(FloatText(value));
}

} // namespace tv2
