#pragma once

#include <string>
#include <string_view>

/// Text that is safe to print on a terminal, on one line: control characters as \n, \t or \x07, characters that change
/// the direction of text as \u202e, bytes that are not UTF-8 as \xff.
std::string Printable(std::string_view text);

/// The same, reversible: a backslash becomes two.
std::string OneLine(std::string_view text);
