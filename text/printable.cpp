#include "text/printable.h"

#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace
{

std::string Hexadecimal(unsigned value, int digits)
{
    std::array<char, 16> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%0*x", digits, value);
    return buffer.data();
}

/// The code point of a valid UTF-8 sequence of up to three bytes; longer ones have no characters to hide.
unsigned CodePoint(std::string_view character)
{
    const auto byte = [&character](std::size_t i) { return static_cast<unsigned char>(character[i]); };
    switch (character.size())
    {
    case 1:
        return byte(0);
    case 2:
        return (byte(0) & 0x1FU) << 6U | (byte(1) & 0x3FU);
    case 3:
        return (byte(0) & 0x0FU) << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU);
    default:
        return 0x10000;
    }
}

/// Line and paragraph separators, and what changes the direction of text.
bool ChangesTheLine(unsigned code)
{
    return code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

/// One character; or one byte that is part of none.
void AppendPrintable(std::string_view character, bool valid, std::string& line)
{
    const unsigned code = valid ? CodePoint(character) : static_cast<unsigned char>(character[0]);
    if (code == '\n' || code == '\r' || code == '\t')
        line += code == '\n' ? "\\n" : code == '\r' ? "\\r" : "\\t";
    else if (!valid || code < 0x20 || code == 0x7F)
        line += "\\x" + Hexadecimal(code, 2);
    else if ((code >= 0x80 && code < 0xA0) || ChangesTheLine(code))
        line += "\\u" + Hexadecimal(code, 4);
    else
        line += character;
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string line;
    while (!text.empty())
    {
        const std::size_t length = Utf8Length(text);
        const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
        AppendPrintable(character, length != 0, line);
        text.remove_prefix(character.size());
    }
    return line;
}

std::string OneLine(std::string_view text)
{
    std::string doubled;
    for (const char c : text)
        doubled.append(c == '\\' ? 2 : 1, c);
    return Printable(doubled);
}
