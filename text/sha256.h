#pragma once

#include "text/sha256_block.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// SHA-256 of bytes that come piece by piece.
class Sha256
{
public:
    using Digest = std::array<std::uint8_t, 32>;

    void Add(std::span<const std::uint8_t> bytes);

    /// The digest of everything added. Adding more afterwards continues where it was.
    Digest Finish() const;

private:
    Sha256Step* step_ = Sha256StepOfProcessor() != nullptr ? Sha256StepOfProcessor() : AddSha256Block;
    Sha256State state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                       0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<std::uint8_t, kSha256Block> rest_{}; ///< bytes of the block that is not full yet
    std::uint64_t size_ = 0;                        ///< of everything added, in bytes
};

/// The digest of bytes at once.
Sha256::Digest Sha256Of(std::span<const std::uint8_t> bytes);

/// Two lower-case hexadecimal digits for each byte.
std::string HexOf(std::span<const std::uint8_t> bytes);
