#include "text/sha256.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace
{

constexpr std::array<std::uint32_t, 64> kRounds{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

} // namespace

void Sha256::AddBlock(const std::uint8_t* block)
{
    std::array<std::uint32_t, 64> w{};
    for (std::size_t i = 0; i < 16; ++i)
    {
        for (std::size_t byte = 0; byte < 4; ++byte)
            w[i] = w[i] << 8U | block[i * 4 + byte];
    }
    for (std::size_t i = 16; i < w.size(); ++i)
    {
        const std::uint32_t a = w[i - 15];
        const std::uint32_t b = w[i - 2];
        w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3U) + w[i - 7] +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10U);
    }
    auto [a, b, c, d, e, f, g, h] = state_;
    for (std::size_t i = 0; i < w.size(); ++i)
    {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + kRounds[i] + w[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> sums{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < sums.size(); ++i)
        state_[i] += sums[i];
}

void Sha256::Add(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty())
    {
        if (size_ % kBlock == 0 && bytes.size() >= kBlock)
        {
            AddBlock(bytes.data());
            size_ += kBlock;
            bytes = bytes.subspan(kBlock);
            continue;
        }
        const std::size_t filled = static_cast<std::size_t>(size_ % kBlock);
        const std::size_t taken = std::min(bytes.size(), kBlock - filled);
        std::copy_n(bytes.begin(), taken, rest_.begin() + static_cast<std::ptrdiff_t>(filled));
        size_ += taken;
        bytes = bytes.subspan(taken);
        if (filled + taken == kBlock)
            AddBlock(rest_.data());
    }
}

Sha256::Digest Sha256::Finish() const
{
    Sha256 padded = *this;
    constexpr std::array<std::uint8_t, kBlock> kPadding{0x80};
    const std::size_t filled = static_cast<std::size_t>(size_ % kBlock);
    padded.Add(std::span(kPadding).first((filled < 56 ? 56 : 120) - filled));
    std::array<std::uint8_t, 8> bits{};
    for (std::size_t i = 0; i < bits.size(); ++i)
        bits[i] = static_cast<std::uint8_t>(size_ * 8U >> (56U - 8U * i));
    padded.Add(bits);
    Digest digest{};
    for (std::size_t i = 0; i < digest.size(); ++i)
        digest[i] = static_cast<std::uint8_t>(padded.state_[i / 4] >> (24U - 8U * (i % 4)));
    return digest;
}

Sha256::Digest Sha256Of(std::span<const std::uint8_t> bytes)
{
    Sha256 hash;
    hash.Add(bytes);
    return hash.Finish();
}

std::string HexOf(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view kHexDigits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes)
    {
        text += kHexDigits[byte >> 4U];
        text += kHexDigits[byte & 15U];
    }
    return text;
}
