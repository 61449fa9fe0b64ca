#include "text/percent.h"

namespace
{

/// "%0A"
std::string PercentByte(char byte)
{
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return {'%', kHexDigits[value >> 4U], kHexDigits[value & 0xFU]};
}

} // namespace

std::string PercentEncoded(std::string_view bytes)
{
    std::string encoded;
    for (const char c : bytes)
    {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           std::string_view("-._~/").find(c) != std::string_view::npos;
        encoded += plain ? std::string(1, c) : PercentByte(c);
    }
    return encoded;
}
