#pragma once

#include <string>
#include <string_view>

/// Text that a terminal shows and does not obey, on one line: control characters as \n, \t or \x07, characters that
/// turn the direction of the text as \u202e, bytes that are not UTF-8 as \xff.
std::string Printable(std::string_view text);

/// Printable text from which the original can be told: a backslash becomes two.
std::string OneLine(std::string_view text);
