#include "text/base64.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace
{

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of each character, or kNoDigit.
constexpr std::uint8_t kNoDigit = 64;
constexpr std::array<std::uint8_t, 256> kValues = []
{
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::size_t i = 0; i < kDigits.size(); ++i)
        values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

} // namespace

std::string Base64Of(std::span<const std::uint8_t> bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        std::uint32_t group = 0;
        for (std::size_t byte = 0; byte < 3; ++byte)
            group = group << 8U | (byte < count ? bytes[i + byte] : 0U);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= count ? kDigits[group >> (18U - 6U * digit) & 63U] : '=';
    }
    return text;
}

std::string_view ReadBase64(std::string_view text, std::string& bytes)
{
    for (int i = 0; i < 2 && text.ends_with('='); ++i)
        text.remove_suffix(1);
    bytes.clear();
    bytes.reserve(text.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const std::uint8_t value = kValues[static_cast<unsigned char>(text[i])];
        if (value == kNoDigit)
            return "holds a character that base64 does not have";
        bits = bits << 6 | value;
        if (i % 4 != 0)
            bytes.push_back(static_cast<char>(static_cast<unsigned char>(bits >> (6 - i % 4 * 2))));
    }
    return text.size() % 4 == 1 ? "ends inside a byte of its base64" : "";
}
