#pragma once

#include <cstdint>
#include <string>

namespace tv2
{

/// Greatest chunk id that the format knows.
inline constexpr std::uint32_t kLastChunkId = 23;

/// The class that a chunk id stands for, "TEV2_CAMERA"; empty for an id that the format does not know.
std::string ChunkClassName(std::uint32_t id);

/// What a chunk holds in a word or two, "cameras"; "unknown chunk 99" for an id that the format does not
/// know.
std::string ChunkTitle(std::uint32_t id);

/// The class of a track kind, "TEV2_ANIMATABLE_FLOAT32_LINEAR"; empty for a kind that the format does not
/// know.
std::string TrackClassName(std::uint32_t kind);

/// What a track kind holds in a word or two, "3-vector".
std::string TrackTitle(std::uint32_t kind);

} // namespace tv2
