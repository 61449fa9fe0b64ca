#pragma once

#include <cstddef>
#include <string_view>

/// Length in bytes of the UTF-8 sequence at the beginning of the text; 0 for none. Overlong forms, surrogates and
/// values above U+10FFFF are invalid.
std::size_t Utf8Length(std::string_view text);

/// What TakeCharacter gives for a byte that is part of no character.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Removes the first character of a text that is not empty, or the first byte where no character begins.
char32_t TakeCharacter(std::string_view& utf8);

bool IsUtf8(std::string_view text);
