#include "text/message_text.h"

#include "text/printable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>

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

std::string FloatText(float value)
{
    if (std::isnan(value))
    {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        return bits == 0x7FC00000U ? "NaN" : "NaN(" + HexText(bits) + ")";
    }
    if (std::isinf(value))
        return value > 0.0F ? "Infinity" : "-Infinity";
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    std::string text(buffer.data(), result.ptr);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string ShortNumber(double value)
{
    std::array<char, 32> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.6g", value);
    return buffer.data();
}

std::string HexText(std::uint64_t value, int digits)
{
    std::array<char, 32> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "0x%0*llx", digits, static_cast<unsigned long long>(value));
    return buffer.data();
}
