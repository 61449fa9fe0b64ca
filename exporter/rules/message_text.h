#pragma once

// Names and numbers in messages for people.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_exporter
{

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

} // namespace tev2_exporter
