#include "text/sha256.h"

#include <algorithm>
#include <string_view>

void Sha256::Add(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty())
    {
        if (size_ % kSha256Block == 0 && bytes.size() >= kSha256Block)
        {
            step_(state_, bytes.data());
            size_ += kSha256Block;
            bytes = bytes.subspan(kSha256Block);
            continue;
        }
        const std::size_t filled = static_cast<std::size_t>(size_ % kSha256Block);
        const std::size_t taken = std::min(bytes.size(), kSha256Block - filled);
        std::copy_n(bytes.begin(), taken, rest_.begin() + static_cast<std::ptrdiff_t>(filled));
        size_ += taken;
        bytes = bytes.subspan(taken);
        if (filled + taken == kSha256Block)
            step_(state_, rest_.data());
    }
}

Sha256::Digest Sha256::Finish() const
{
    Sha256 padded = *this;
    constexpr std::array<std::uint8_t, kSha256Block> kPadding{0x80};
    const std::size_t filled = static_cast<std::size_t>(size_ % kSha256Block);
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
