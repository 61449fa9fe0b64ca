#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tv2
{

/// Sets or checks a value from text; returns the reason for refusing it, or an empty text.
using TakeText = std::function<std::string(const std::string& text)>;

/// One option or argument of a verb, and where its value is stored.
struct OptionRow
{
    /// "FILE" (an argument), "--flag", "-j,--jobs", "--[no-]flag" (a flag that can be given either way)
    std::string name;

    std::variant<bool*, std::string*, std::vector<std::string>*, std::optional<int>*, std::size_t*, TakeText>
        value;
    std::string help;
    bool required = false;
    bool show_default = false;
    const char* excludes = nullptr;                ///< an option above this one, or "--json"
    TakeText check = nullptr;                      ///< called with the text before the value is set
    std::vector<std::string> one_of = {};          ///< the texts that are allowed; empty: any
    std::optional<std::pair<int, int>> range = {}; ///< the numbers that are allowed
    std::string files =
        {}; ///< which files may be its value, to complete names: ".tv2 .glb", "*" all, "/" folders
};

/// Every name: {"-j", "--jobs"}; {"--x", "--no-x"} for "--[no-]x"; of an argument its only one.
std::vector<std::string> NamesOf(const OptionRow& row);

/// False for arguments, which have a place instead of a name.
bool IsOption(const OptionRow& row);

bool IsFlag(const OptionRow& row);

/// Whether it takes a whole number.
bool IsNumber(const OptionRow& row);

/// What the help calls the value: "TEXT", "NUMBER", "FILE", "FOLDER"; empty for flags.
std::string ValueName(const OptionRow& row);

/// Takes a finite time in seconds.
TakeText TakeTime(std::optional<float>& time);

/// Refuses an empty text.
std::string NotEmpty(const std::string& text);

/// "--plugin", the exporter's module.
OptionRow ExporterOption(std::string& path);

/// "SCENE", a file that the host imports; `extensions` are those of its formats.
OptionRow SceneFileOption(std::string& path, std::string extensions);

/// "--scene-rate", for formats that state no rate.
OptionRow SceneRateOption(double& rate);

} // namespace tv2
