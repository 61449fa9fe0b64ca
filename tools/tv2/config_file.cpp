#include "tools/tv2/config_file.h"

#include "tev2_loader/io/file_image.h"
#include "text/closest_name.h"
#include "tools/tv2/config_reader.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <cstdint>
#include <sstream>

namespace tv2
{

using TEV2_LOADER::Status;
using Kind = ConfigValue::Kind;

namespace
{

constexpr std::size_t kMostConfigBytes = 1 << 20; // of a file

std::string KeyOf(const OptionRow& row)
{
    const std::vector<std::string> names = NamesOf(row);
    const auto name =
        std::find_if(names.begin(), names.end(), [](const std::string& n) { return n.starts_with("--"); });
    return name == names.end() ? names.front().substr(1) : name->substr(2);
}

bool IsInFiles(const OptionRow& row)
{
    const std::string name = NamesOf(row).front();
    return IsOption(row) && name != "--json" && name != "--config" && name != "--print-config";
}

bool IsRepeatable(const OptionRow& row)
{
    return std::holds_alternative<std::vector<std::string>*>(row.value);
}

/// Why an entry cannot be the value of an option; empty when it can.
std::string WrongType(const ConfigEntry& entry, const OptionRow& row)
{
    if (entry.list && !IsRepeatable(row))
        return "takes one value, not a list";
    const bool number = ValueName(row) == "NUMBER";
    for (const ConfigValue& value : entry.values)
    {
        if (IsFlag(row) != (value.kind == Kind::kBoolean))
            return IsFlag(row) ? "needs true or false, without quotes" : "needs a value, not true or false";
        if (number && value.kind == Kind::kText)
            return "needs a number, without quotes";
    }
    return {};
}

std::string UnknownKey(const std::string& key, const std::vector<OptionRow>& rows)
{
    std::vector<std::string> keys;
    for (const OptionRow& row : rows)
    {
        if (IsOption(row) && KeyOf(row) == key)
            return key + " can only be given on the command line";
        if (IsInFiles(row))
            keys.push_back(KeyOf(row));
    }
    if (key == "help")
        return key + " can only be given on the command line";
    if (key.starts_with("no-") && std::find(keys.begin(), keys.end(), key.substr(3)) != keys.end())
        return "there is no option \"" + key + "\": write " + key.substr(3) + " = false";
    const std::size_t dashes = std::min(key.find_first_not_of('-'), key.size());
    return "there is no option \"" + key + '"' + DidYouMean(key.substr(dashes), keys);
}

std::string ListText(const std::vector<std::string>& texts)
{
    std::string list = "[";
    for (const std::string& text : texts)
        list += (list.size() > 1 ? ", " : "") + InQuotes(text);
    return list + "]";
}

/// A value as it is in a file; empty when there is none.
struct ValueText
{
    std::string operator()(const bool* value) const { return *value ? "true" : "false"; }
    std::string operator()(const std::string* value) const { return value->empty() ? "" : InQuotes(*value); }
    std::string operator()(const std::vector<std::string>* value) const
    {
        return value->empty() ? "" : ListText(*value);
    }
    std::string operator()(const std::optional<int>* value) const
    {
        return *value ? std::to_string(**value) : "";
    }
    std::string operator()(const std::size_t* value) const { return std::to_string(*value); }
    std::string operator()(const TakeText& /*value*/) const { return {}; }
};

std::string Placeholder(const OptionRow& row)
{
    if (!row.one_of.empty())
        return InQuotes(row.one_of.front());
    if (ValueName(row) == "NUMBER")
        return "NUMBER";
    return IsRepeatable(row) ? "[\"TEXT\"]" : "\"TEXT\"";
}

std::string HelpAsComment(const OptionRow& row)
{
    constexpr std::size_t kColumns = 98;
    std::string help = row.help;
    if (!row.one_of.empty())
        help += "\nOne of: " + Listed(row.one_of);
    std::istringstream lines(Wrapped(help, kColumns));
    std::string comment;
    for (std::string line; std::getline(lines, line);)
        comment += "# " + line + '\n';
    return comment;
}

} // namespace

Status ReadConfigFile(const std::string& path, const std::vector<OptionRow>& rows,
                      std::vector<ConfigOption>& options)
{
    std::vector<std::uint8_t> image;
    if (const Status read = TEV2_LOADER::ReadFileImage(path, image, kMostConfigBytes); !read)
        return Status::Failure(path + ": " + read.Reason());
    std::vector<ConfigEntry> entries;
    const std::string_view text(reinterpret_cast<const char*>(image.data()), image.size());
    if (const Status read = ReadConfig(text, entries); !read)
        return Status::Failure(path + ": " + read.Reason());
    for (const ConfigEntry& entry : entries)
    {
        const std::string place = path + ": line " + std::to_string(entry.line);
        const auto row = std::find_if(rows.begin(), rows.end(),
                                      [&](const OptionRow& candidate)
                                      { return IsInFiles(candidate) && KeyOf(candidate) == entry.key; });
        if (row == rows.end())
            return Status::Failure(place + ": " + UnknownKey(entry.key, rows));
        if (const std::string why = WrongType(entry, *row); !why.empty())
            return Status::Failure(
                std::string(place).append(": ").append(entry.key).append(": ").append(why));
        ConfigOption option{NamesOf(*row).front(), {}, place};
        for (const ConfigValue& value : entry.values)
            option.texts.push_back(value.text);
        options.push_back(std::move(option));
    }
    return {};
}

std::string ConfigText(std::string_view verb, const std::vector<OptionRow>& rows,
                       const std::vector<OptionRow>& defaults,
                       const std::map<std::string, std::vector<std::string>>& given)
{
    std::string text = "# Options of tv2 " + std::string(verb) +
                       ", for --config. TOML: texts are in quotes, '...' as they are "
                       "or \"...\" with\n# escapes such as \\\\ and \\u00e4; several are in brackets. "
                       "Options of the command "
                       "line override these.\n";
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        const OptionRow& row = rows[i];
        if (!IsInFiles(row))
            continue;
        text += '\n' + HelpAsComment(row);
        const auto found = given.find(NamesOf(row).front());
        std::string value = std::visit(ValueText(), found == given.end() ? defaults[i].value : row.value);
        if (found != given.end() && value.empty())
            value = IsRepeatable(row) ? ListText(found->second) : InQuotes(found->second.back());
        if (value.empty())
            value = Placeholder(row);
        text += (found == given.end() ? "#" : "") + KeyOf(row) + " = " + value + '\n';
    }
    return text;
}

} // namespace tv2
