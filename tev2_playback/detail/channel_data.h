#pragma once

#include "tev2_loader/format.h"
#include <cstddef>

#include <cstdint>
#include <new>

namespace TEV2_PLAYBACK
{

/// An index into an array of the clip. Throws std::bad_alloc where it needs more than 32 bits: the clip is too large.
inline std::uint32_t IndexOf(std::size_t index)
{
    if (index >= TEV2_LOADER::kNone)
        throw std::bad_alloc();
    return static_cast<std::uint32_t>(index);
}

/// A track that is evaluated alone: of properties, of cameras, and of the few nodes that fit into no group.
struct Channel
{
    std::uint32_t kind = 0;                   ///< of kTrackKinds
    std::uint32_t clock = TEV2_LOADER::kNone; ///< none: the cursor stays at the first key
    std::uint32_t values = 0;                 ///< the first, in the words of all channels
    std::uint32_t count = 0;
};

} // namespace TEV2_PLAYBACK
