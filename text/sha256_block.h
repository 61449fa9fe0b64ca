#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// One step of SHA-256. What Sha256 is made of.

inline constexpr std::size_t kSha256Block = 64; ///< bytes

using Sha256State = std::array<std::uint32_t, 8>;

/// Adds a block on any processor.
void AddSha256Block(Sha256State& state, const std::uint8_t* block);

using Sha256Step = void(Sha256State&, const std::uint8_t*);

/// The same with the processor's own instructions, some five times as fast; null where it has none.
Sha256Step* Sha256StepOfProcessor();
