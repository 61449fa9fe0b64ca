#pragma once

#include "tev2_loader/requirements.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace TEV2_LOADER
{

/// Length of the UTF-8 sequence that the text begins with; 0 if there is none. Overlong forms, surrogates and code
/// points above U+10FFFF are invalid. Each unit is one byte, even if its type is wider.
template <typename Unit>
std::size_t Utf8Length(std::basic_string_view<Unit> text)
{
    const auto byte_of = [](Unit unit)
    { return static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<Unit>>(unit)); };
    if (text.empty())
        return 0;
    const std::uint32_t lead = byte_of(text[0]);
    if (lead < 0x80)
        return 1;
    std::size_t length = 0;
    std::uint32_t least = 0x80;
    std::uint32_t greatest = 0xBF;
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
    if (length == 0 || text.size() < length || byte_of(text[1]) < least || byte_of(text[1]) > greatest)
        return 0;
    const std::basic_string_view<Unit> rest = text.substr(2, length - 2);
    const bool continues = std::all_of(
        rest.begin(), rest.end(), [&](Unit unit) { return byte_of(unit) >= 0x80 && byte_of(unit) <= 0xBF; });
    return continues ? length : 0;
}

/// Whether the whole text is UTF-8.
template <typename Unit>
bool IsUtf8(std::basic_string_view<Unit> text)
{
    while (!text.empty())
    {
        const std::size_t length = Utf8Length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace TEV2_LOADER
