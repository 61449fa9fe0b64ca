#include "tools/tv2/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>

bool TextTellsUnits(std::u16string_view units)
{
    const auto ascii = [](char16_t unit) { return unit < 0x80; };
    if (std::all_of(units.begin(), units.end(), ascii))
    {
        return true;
    }
    if (TEV2_LOADER::IsWidenedUtf8(units))
    {
        return false;
    }
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        if (units[i] >= 0xD800 && units[i] <= 0xDFFF)
        {
            if (units[i] > 0xDBFF || i + 1 == units.size() || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF)
            {
                return false;
            }
            ++i;
        }
    }
    return true;
}

std::string FloatText(float value)
{
    if (std::isnan(value))
    {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        return bits == 0x7FC00000U ? "NaN" : "NaN(" + HexText(bits) + ")";
    }
    if (std::isinf(value))
    {
        return value > 0.0F ? "Infinity" : "-Infinity";
    }
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    std::string text(buffer.data(), result.ptr);
    if (text.find_first_of(".e") == std::string::npos)
    {
        text += ".0";
    }
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
