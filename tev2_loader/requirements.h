#pragma once

// What every header of the library relies on.

#if defined(_MSVC_LANG) ? _MSVC_LANG < 202002L : __cplusplus < 202002L
#error "tev2_loader needs C++20: compile with -std=c++20 (/std:c++20) or later"
#endif

#include <bit>

namespace TEV2_LOADER
{

/// Numbers and arrays of numbers are copied between memory and file as blocks of bytes.
static_assert(std::endian::native == std::endian::little, "tev2_loader needs a little-endian processor");

} // namespace TEV2_LOADER
