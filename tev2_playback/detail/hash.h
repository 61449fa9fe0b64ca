#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TEV2_PLAYBACK
{

/// Of bytes in memory, for tables that live there. The upper bits are as good as the lower ones.
inline std::uint64_t HashOf(const void* begin, std::size_t size)
{
    constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15u;
    const auto* const bytes = static_cast<const unsigned char*>(begin);
    std::uint64_t hash = size * kPrime;
    for (std::size_t at = 0; at < size; at += sizeof(std::uint64_t))
    {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes + at, std::min(sizeof word, size - at));
        hash = (hash ^ word) * kPrime;
        hash ^= hash >> 29;
    }
    return hash;
}

} // namespace TEV2_PLAYBACK
