#include "text/utf8.h"

#include <algorithm>

std::size_t Utf8Length(std::string_view text)
{
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (text.empty() || byte(0) < 0x80)
    {
        return text.empty() ? 0 : 1;
    }
    const unsigned char lead = byte(0);
    std::size_t length = 0;
    unsigned char least = 0x80;
    unsigned char greatest = 0xBF;
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
    if (length == 0 || text.size() < length || byte(1) < least || byte(1) > greatest)
    {
        return 0;
    }
    const std::string_view rest = text.substr(2, length - 2);
    const bool continues = std::all_of(rest.begin(), rest.end(),
                                       [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; });
    return continues ? length : 0;
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const std::size_t length = Utf8Length(text);
        if (length == 0)
        {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}
