#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// Prints a line per note, wrapped to `columns` columns; 0: not wrapped.
void PrintNotes(std::ostream& out, const std::vector<std::string>& notes, std::size_t columns);

} // namespace tv2
