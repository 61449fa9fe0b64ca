#pragma once

#include <cstddef>
#include <string_view>

/// Length in bytes of the UTF-8 sequence at the beginning of the text; 0 for none. Overlong forms, surrogates and
/// values above U+10FFFF are invalid.
std::size_t Utf8Length(std::string_view text);

bool IsUtf8(std::string_view text);
