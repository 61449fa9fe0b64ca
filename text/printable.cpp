#include "text/printable.h"

#include "text/utf8.h"

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

/// Line and paragraph separators, and what changes the direction of text.
bool ChangesTheLine(char32_t code)
{
    return code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

/// One character and its bytes; or one byte that is part of none.
void AppendPrintable(char32_t code, std::string_view bytes, std::string& line)
{
    const bool valid = code != kReplacementCharacter || bytes.size() > 1;
    if (code == '\n' || code == '\r' || code == '\t')
        line += code == '\n' ? "\\n" : code == '\r' ? "\\r" : "\\t";
    else if (!valid || code < 0x20 || code == 0x7F)
        line += "\\x" + Hexadecimal(static_cast<unsigned char>(bytes[0]), 2);
    else if ((code >= 0x80 && code < 0xA0) || ChangesTheLine(code))
        line += "\\u" + Hexadecimal(code, 4);
    else
        line += bytes;
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string line;
    while (!text.empty())
    {
        const std::string_view from = text;
        const char32_t character = TakeCharacter(text);
        AppendPrintable(character, from.substr(0, from.size() - text.size()), line);
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
