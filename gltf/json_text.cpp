#include "gltf/json_text.h"

#include <nlohmann/json.hpp>

namespace gltf
{
namespace
{

void Append(JsonValue value, std::string& text)
{
    switch (value.Kind())
    {
    case JsonKind::Nothing:
        text += "null";
        break;
    case JsonKind::Truth:
        text += *value.Truth() ? "true" : "false";
        break;
    case JsonKind::Whole:
        text += std::to_string(*value.Whole());
        break;
    case JsonKind::Number:
        text += nlohmann::json(*value.Number()).dump();
        break;
    case JsonKind::Text:
        text += nlohmann::json(value.Text()).dump();
        break;
    case JsonKind::Array:
    case JsonKind::Object:
    {
        const bool is_object = value.Kind() == JsonKind::Object;
        text += is_object ? '{' : '[';
        for (std::size_t i = 0; i < value.Size(); ++i)
        {
            if (i > 0)
                text += ',';
            if (is_object)
                text.append(nlohmann::json(value.Name(i)).dump()).append(":");
            Append(value[i], text);
        }
        text += is_object ? '}' : ']';
        break;
    }
    }
}

} // namespace

std::string JsonText(JsonValue value)
{
    std::string text;
    Append(value, text);
    return text;
}

} // namespace gltf
