#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace mobu_host::fbx
{

static_assert(std::endian::native == std::endian::little, "FBX numbers are read as they are in the file");

/// The caller has made sure that the bytes are there.
template <class Number>
Number LittleEndian(std::string_view bytes, std::size_t offset = 0)
{
    Number number;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

} // namespace mobu_host::fbx
