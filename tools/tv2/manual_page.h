#pragma once

#include "tools/tv2/verb.h"

#include <string>
#include <string_view>
#include <vector>

namespace tv2
{

// Manual pages in roff, for man(7). Each ends with a line break. `date` may be empty.

/// tv2-VERB(1)
std::string VerbPage(const VerbRow& row, std::string_view date);

/// tv2(1), the overview of all verbs.
std::string CommandPage(const std::vector<VerbRow>& rows, std::string_view date);

/// A text as roff shows it unchanged: on one line, without requests. Words of options and paths keep their hyphens.
std::string RoffText(std::string_view text);

} // namespace tv2
