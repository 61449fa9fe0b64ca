#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// A line for each note; on a terminal of `columns` columns as many as it takes, 0 where it is none.
void PrintNotes(std::ostream& out, const std::vector<std::string>& notes, std::size_t columns);

} // namespace tv2
