#pragma once

#include <bit>

namespace TEV2_LOADER
{

/// Numbers and arrays of numbers go between memory and file as blocks of bytes.
static_assert(std::endian::native == std::endian::little, "the disk form of a number is its memory form");

} // namespace TEV2_LOADER
