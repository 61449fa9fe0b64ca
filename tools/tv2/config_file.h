#pragma once

#include "tev2_loader/status.h"
#include "tools/tv2/option_row.h"

#include <cstddef>
#include <map>
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

/// An option that a file gives.
struct ConfigOption
{
    std::string name;               ///< "--fps"
    std::vector<std::string> texts; ///< as from the command line; of a flag "true" or "false"
    std::string place;              ///< "night.toml: line 3"
};

/// Reads the options of a verb from a file. A failure names the file, the line and the key.
TEV2_LOADER::Status ReadConfigFile(const std::string& path, const std::vector<OptionRow>& rows,
                                   std::vector<ConfigOption>& options);

/// A configuration file of all options in `rows`, each with its help. `given` has the texts of options by name; the
/// other options are comments, with their values in `defaults`, rows of a verb that was not run.
std::string ConfigText(std::string_view verb, const std::vector<OptionRow>& rows,
                       const std::vector<OptionRow>& defaults,
                       const std::map<std::string, std::vector<std::string>>& given);

} // namespace tv2
