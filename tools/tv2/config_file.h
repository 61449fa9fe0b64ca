#pragma once

#include "tev2_loader/status.h"
#include "tools/tv2/option_row.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tv2
{

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
