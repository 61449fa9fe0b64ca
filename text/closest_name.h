#pragma once

#include <span>
#include <string>
#include <string_view>

/// The known name closest to `unknown`: the fewest insertions, deletions, replacements and swaps of letters, at most
/// one in three, ignoring ASCII case. The first of several that are equally close; empty when none is close enough.
std::string_view ClosestName(std::string_view unknown, std::span<const std::string> known);

/// ` (did you mean "Dance"?)`, to append to the unknown name in a message; empty when no known name is close. The name
/// is on one line, see text/printable.h.
std::string DidYouMean(std::string_view unknown, std::span<const std::string> known);

/// The same; `otherwise`, for example a list of all names, when no known name is close.
std::string DidYouMeanOr(std::string_view unknown, std::span<const std::string> known,
                         const std::string& otherwise);
