#include "exporter/rules/message_text.h"

#include "text/printable.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tev2_exporter
{
namespace
{

constexpr std::size_t kMostNamesShown = 12;

template <typename Number>
std::string Shortest(Number value)
{
    constexpr Number kNeedsExponent = Number(1e15);
    std::array<char, 64> buffer{};
    char* const end = buffer.data() + buffer.size();
    const bool has_fixed_form = value <= -1 || (value >= 1 && value < kNeedsExponent);
    const auto result = has_fixed_form && value > -kNeedsExponent
                            ? std::to_chars(buffer.data(), end, value, std::chars_format::fixed)
                            : std::to_chars(buffer.data(), end, value);
    return std::string(buffer.data(), result.ptr);
}

} // namespace

std::string Quoted(std::string_view text)
{
    return '"' + OneLine(text) + '"';
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), kMostNamesShown); ++i)
        list += (i == 0 ? "" : ", ") + Quoted(names[i]);
    if (names.size() > kMostNamesShown)
        list += " and " + CountText(names.size() - kMostNamesShown) + " more";
    return list;
}

std::string CountText(std::uint64_t value)
{
    std::string text = std::to_string(value);
    for (std::size_t position = text.size(); position > 3;)
    {
        position -= 3;
        text.insert(position, 1, ',');
    }
    return text;
}

std::string CountOf(std::uint64_t count, std::string_view singular, std::string_view plural)
{
    return CountText(count) + " " + std::string(count == 1 ? singular : plural);
}

std::string NumberText(float value)
{
    return Shortest(value);
}

std::string NumberText(double value)
{
    return Shortest(value);
}

} // namespace tev2_exporter
