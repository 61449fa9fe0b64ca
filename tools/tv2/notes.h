#pragma once

#include "tev2_loader/tev2.h"

#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// Prints a line per note, wrapped to `columns` columns; 0: not wrapped.
void PrintNotes(std::ostream& out, const std::vector<std::string>& notes, std::size_t columns);

/// For a time outside the time range of a file.
std::string OutsideRangeNote(float time, const TEV2_LOADER::TEV2_FLOAT32_RANGE& range);

} // namespace tv2
