#include "tools/tv2/text.h"

#include "tev2_loader/serialisation/wide_string.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace
{

/// Units (or bytes, widened) that one valid UTF-8 sequence takes at the front of `bytes`; 0 when there is
/// none.
std::size_t Utf8Length(std::u16string_view bytes)
{
    const char16_t lead = bytes[0];
    if (lead < 0x80)
    {
        return 1;
    }
    std::size_t length = 0;
    char16_t least = 0x80;
    char16_t greatest = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF)
    {
        length = 2;
    }
    else if (lead >= 0xE0 && lead <= 0xEF)
    {
        length = 3;
        least = lead == 0xE0 ? 0xA0 : 0x80;
        greatest = lead == 0xED ? 0x9F : 0xBF;
    }
    else if (lead >= 0xF0 && lead <= 0xF4)
    {
        length = 4;
        least = lead == 0xF0 ? 0x90 : 0x80;
        greatest = lead == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0 || bytes.size() < length || bytes[1] < least || bytes[1] > greatest)
    {
        return 0;
    }
    const auto continues = [](char16_t byte) { return byte >= 0x80 && byte <= 0xBF; };
    return std::all_of(bytes.begin() + 2, bytes.begin() + static_cast<std::ptrdiff_t>(length), continues)
               ? length
               : 0;
}

bool IsUtf8InUnits(std::u16string_view units)
{
    while (!units.empty())
    {
        const std::size_t length = Utf8Length(units);
        if (length == 0)
        {
            return false;
        }
        units.remove_prefix(length);
    }
    return true;
}

} // namespace

std::string ReadableText(std::u16string_view units)
{
    if (!IsUtf8InUnits(units))
    {
        return TEV2_LOADER::Utf8Text(units);
    }
    std::string text;
    text.reserve(units.size());
    for (const char16_t unit : units)
    {
        text += static_cast<char>(static_cast<unsigned char>(unit));
    }
    return text;
}

bool TextTellsUnits(std::u16string_view units)
{
    const auto ascii = [](char16_t unit) { return unit < 0x80; };
    if (std::all_of(units.begin(), units.end(), ascii))
    {
        return true;
    }
    if (IsUtf8InUnits(units))
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
