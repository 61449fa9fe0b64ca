#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Base64 (RFC 4648), with padding.
std::string Base64Of(std::span<const std::uint8_t> bytes);

/// Reads it, with padding or without. Returns nothing, or what the text has wrong: "ends inside a byte of its base64".
std::string_view ReadBase64(std::string_view text, std::string& bytes);
