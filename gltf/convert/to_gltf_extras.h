#pragma once

/// User properties as extras.

#include "gltf/convert/to_gltf_context.h"

#include <string>

namespace tev2_gltf
{

/// An object with a member for each property: a number, an array of 3 or 4, a text or an array of texts. Reports what
/// moves, repeats a name or has no value.
Json ExtrasOf(ToGltfContext& context, const TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties,
              const std::string& where);

/// Sets the member "extras" of `json`, if there are any.
void SetExtras(ToGltfContext& context, Json& json, const TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties,
               const std::string& where);

/// A value of a track as JSON.
inline Json ToJson(float value)
{
    return gltf::FloatNumber(value);
}

inline Json ToJson(std::int32_t value)
{
    return value;
}

template <TEV2_LOADER::ComponentValue Value>
Json ToJson(const Value& value)
{
    Json numbers = Json::array();
    std::apply([&](const auto&... component) { (numbers.push_back(gltf::FloatNumber(component)), ...); },
               value.Components());
    return numbers;
}

} // namespace tev2_gltf
