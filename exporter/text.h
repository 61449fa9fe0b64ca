#pragma once

// The SDK speaks 8-bit text, the format UTF-16. Bytes and units stand for one another one by one, in both
// directions, so whatever encoding the bytes were in comes back unharmed.

#include <string>
#include <string_view>

namespace tev2_exporter
{

// Each byte becomes one unit, 0x80 and up without a sign.
inline std::u16string Widen(std::string_view bytes)
{
    std::u16string units;
    units.reserve(bytes.size());
    for (const char byte : bytes)
        units.push_back(static_cast<char16_t>(static_cast<unsigned char>(byte)));
    return units;
}

// A text the SDK may hand out as a null pointer; null counts as empty.
inline std::u16string Widen(const char* bytes)
{
    return Widen(std::string_view(bytes ? bytes : ""));
}

// The low byte of each unit.
inline std::string Narrow(std::u16string_view units)
{
    std::string bytes;
    bytes.reserve(units.size());
    for (const char16_t unit : units)
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(unit & 0xFF)));
    return bytes;
}

} // namespace tev2_exporter
