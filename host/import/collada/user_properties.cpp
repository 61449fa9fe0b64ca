#include "host/import/collada/user_properties.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace mobu_host::collada
{
namespace
{

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

template <typename Number>
bool IsNumber(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

PropertyDescription::Value ValueOf(std::string_view text)
{
    if (text == "true" || text == "false")
        return text == "true";
    if (int whole = 0; IsNumber(text, whole))
        return whole;
    if (double number = 0.0; IsNumber(text, number) && std::isfinite(number))
        return number;
    return std::string(text);
}

void AddProperties(std::string_view text, std::vector<PropertyDescription>& properties, bool& left_out)
{
    while (!text.empty())
    {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t equals = line.find('=');
        const std::string_view name = Trimmed(line.substr(0, equals));
        if (equals != std::string_view::npos && !name.empty())
            properties.push_back({std::string(name), ValueOf(Trimmed(line.substr(equals + 1)))});
        else
            left_out = left_out || !Trimmed(line).empty();
    }
}

template <typename Visitor>
void VisitTexts(Element node, const Visitor& visit)
{
    for (const Element extra : node.children("extra"))
        for (const Element technique : extra.children("technique"))
            for (const Element element : technique.children("user_properties"))
                visit(std::string_view(element.text().get()));
}

} // namespace

std::vector<PropertyDescription> ReadUserProperties(Element node, bool& left_out)
{
    std::size_t count = 0;
    VisitTexts(node, [&count](std::string_view text)
               { count += static_cast<std::size_t>(std::count(text.begin(), text.end(), '=')); });
    std::vector<PropertyDescription> properties;
    properties.reserve(count);
    VisitTexts(node, [&](std::string_view text) { AddProperties(text, properties, left_out); });
    return properties;
}

} // namespace mobu_host::collada
