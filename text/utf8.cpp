#include "text/utf8.h"

#include "tev2_loader/io/utf8.h"

std::size_t Utf8Length(std::string_view text)
{
    return TEV2_LOADER::Utf8Length(text);
}

char32_t TakeCharacter(std::string_view& utf8)
{
    const std::size_t length = Utf8Length(utf8);
    char32_t character = kReplacementCharacter;
    if (length == 1)
        character = static_cast<unsigned char>(utf8[0]);
    else if (length > 1)
    {
        character = static_cast<unsigned char>(utf8[0]) & (0xFFU >> (length + 1));
        for (const char byte : utf8.substr(1, length - 1))
            character = (character << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    utf8.remove_prefix(length == 0 ? 1 : length);
    return character;
}

bool IsUtf8(std::string_view text)
{
    return TEV2_LOADER::IsUtf8(text);
}
