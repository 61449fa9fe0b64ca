#pragma once

#include <cstddef>
#include <string_view>

/// Bytes of the UTF-8 sequence that the text begins with; 0 when it begins with none. Overlong forms, surrogates and
/// what is above U+10FFFF are none.
std::size_t Utf8Length(std::string_view text);

bool IsUtf8(std::string_view text);
