#pragma once

// Names and numbers in messages for people.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The text on one line (text/printable.h), in double quotes.
std::string Quoted(std::string_view text);

/// "A", "B" and "C" as `"A", "B", "C"`; of many the first twelve and the number of the others.
std::string Listed(const std::vector<std::string>& names);

/// "1,234,567"
std::string CountText(std::uint64_t value);

/// "3 nodes", "1 node"
std::string CountOf(std::uint64_t count, std::string_view singular, std::string_view plural);

/// The shortest decimal that reads back as the same number: "50", "29.97".
std::string NumberText(float value);
std::string NumberText(double value);

/// The shortest decimal that reads back to the same bits, always with a point or an exponent ("1.0", "-0.0", "1e+20").
/// Non-finite values: "Infinity", "-Infinity", "NaN", and "NaN(0xffc00001)" when the bits are not 0x7fc00000.
std::string FloatText(float value);

/// The number with at most six digits: "59.94", "30".
std::string ShortNumber(double value);

/// "0x0000002c"
std::string HexText(std::uint64_t value, int digits = 8);
