#pragma once

// The SDK uses 8-bit text, the format UTF-16. Each byte becomes one unit and back, so the bytes survive the round trip
// whatever their encoding.

#include "tev2_loader/io/wide_string.h"

#include <string>
#include <string_view>

namespace tev2_exporter
{

/// Text of the SDK; a null pointer counts as empty.
inline TEV2_LOADER::TEV2_WIDE_STRING WideText(const char* bytes)
{
    return TEV2_LOADER::TEV2_WIDE_STRING::FromBytes(bytes ? bytes : "");
}

/// Each byte becomes one unit from 0 to 0xFF.
inline std::u16string Widen(std::string_view bytes)
{
    return TEV2_LOADER::TEV2_WIDE_STRING::FromBytes(bytes).Text();
}

/// The low byte of each unit.
inline std::string Narrow(std::u16string_view units)
{
    std::string bytes;
    bytes.reserve(units.size());
    for (const char16_t unit : units)
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(unit & 0xFF)));
    return bytes;
}

} // namespace tev2_exporter
