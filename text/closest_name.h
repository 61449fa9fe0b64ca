#pragma once

#include <span>
#include <string>
#include <string_view>

/// The known name that `unknown` was probably meant to be: the fewest letters to insert, delete, replace or swap, at
/// most one in three, upper and lower case ASCII letters being the same. Empty when none is that close; the first of
/// several that are equally close.
std::string_view ClosestName(std::string_view unknown, std::span<const std::string> known);

/// ` (did you mean "Dance"?)`, to put after the unknown name in a message; empty when no known name is close.
/// The name is on one line, as in text/printable.h.
std::string DidYouMean(std::string_view unknown, std::span<const std::string> known);

/// The same, and `otherwise` when no known name is close, such as a list of them: who mistyped needs none.
std::string DidYouMeanOr(std::string_view unknown, std::span<const std::string> known,
                         const std::string& otherwise);
