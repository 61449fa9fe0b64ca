#pragma once

#include "tev2_loader/status.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tv2
{

// Configuration files are TOML without tables, dates and texts of several lines: `fps = 60`,
// `keep-positive-z = false`, `select = ["Hips", 'C:\x']`. The reader is our own, since the parser's one ends a text at
// "#", splits it at blanks and commas, has no escapes and knows no line numbers.

struct ConfigValue
{
    enum class Kind
    {
        kText,
        kNumber,
        kBoolean
    };

    Kind kind;
    std::string text; ///< without quotes and escapes
};

/// `key = value` or `key = [value, value]`
struct ConfigEntry
{
    std::string key;
    std::size_t line = 0; ///< of the key, from 1
    bool list = false;
    std::vector<ConfigValue> values;
};

/// Reads a whole file. A failure names the line.
TEV2_LOADER::Status ReadConfig(std::string_view file, std::vector<ConfigEntry>& entries);

/// A text as a file has it; ReadConfig gives it back.
std::string InQuotes(const std::string& text);

} // namespace tv2
