#include "tools/tv2/config_file.h"

#include "tev2_loader/io/file_image.h"
#include "text/closest_name.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <sstream>

namespace tv2
{

using TEV2_LOADER::Status;
using Kind = ConfigValue::Kind;

namespace
{

constexpr std::size_t kMostConfigBytes = 1 << 20; // of a file
constexpr std::string_view kMark = "\xEF\xBB\xBF";

/// The escapes of one letter and what they mean.
constexpr std::string_view kEscapes = "btnfr\"\\";
constexpr std::string_view kEscaped = "\b\t\n\f\r\"\\";

bool IsControlCharacter(char c)
{
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == '\x7F';
}

bool IsKeyLetter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_';
}

bool IsAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

void AppendCharacter(std::string& utf8, std::uint32_t code)
{
    if (code < 0x80)
    {
        utf8 += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3; // bytes after the first
    constexpr std::array<std::uint32_t, 4> kFirst = {0, 0xC0, 0xE0, 0xF0};
    utf8 += static_cast<char>(kFirst[static_cast<std::size_t>(more)] | (code >> (6 * more)));
    for (int i = more - 1; i >= 0; --i)
        utf8 += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
}

/// Whether a word is a number of TOML: 24, -5, 29.97, 1e3.
bool IsNumber(std::string_view word)
{
    const auto take_digits = [&word]
    {
        const std::size_t digits =
            static_cast<std::size_t>(std::find_if_not(word.begin(), word.end(), IsAsciiDigit) - word.begin());
        word.remove_prefix(digits);
        return digits;
    };
    const auto take_sign = [&word]
    {
        if (word.starts_with('-') || word.starts_with('+'))
            word.remove_prefix(1);
    };
    take_sign();
    const bool zero = word.starts_with('0');
    const std::size_t whole = take_digits();
    if (whole == 0 || (zero && whole > 1))
        return false;
    if (word.starts_with('.'))
    {
        word.remove_prefix(1);
        if (take_digits() == 0)
            return false;
    }
    if (word.starts_with('e') || word.starts_with('E'))
    {
        word.remove_prefix(1);
        take_sign();
        if (take_digits() == 0)
            return false;
    }
    return word.empty();
}

/// Reads a file from its beginning to its end or to the first error.
class ConfigReader
{
public:
    explicit ConfigReader(std::string_view file)
        : rest_(file.starts_with(kMark) ? file.substr(kMark.size()) : file)
    {
    }

    Status Read(std::vector<ConfigEntry>& entries)
    {
        while (SkipBlankLines())
        {
            ConfigEntry entry;
            entry.line = line_;
            if (!ReadEntry(entry))
                break;
            const auto same = std::find_if(entries.begin(), entries.end(),
                                           [&](const ConfigEntry& other) { return other.key == entry.key; });
            if (same != entries.end())
            {
                line_ = entry.line;
                Fail(entry.key + " has a value already, in line " + std::to_string(same->line));
                break;
            }
            entries.push_back(std::move(entry));
        }
        return error_.empty() ? Status() : Status::Failure("line " + std::to_string(line_) + ": " + error_);
    }

private:
    bool Fail(const std::string& why)
    {
        if (error_.empty())
            error_ = why;
        return false;
    }

    void SkipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }

    bool Take(char expected)
    {
        if (!rest_.starts_with(expected))
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// Blanks, a comment and the end of the line. False at anything else.
    bool TakeEndOfLine()
    {
        SkipBlanks();
        if (rest_.starts_with('#'))
        {
            std::string_view comment = rest_.substr(0, rest_.find('\n'));
            comment.remove_suffix(comment.ends_with('\r') && comment.size() < rest_.size() ? 1 : 0);
            if (std::any_of(comment.begin(), comment.end(), IsControlCharacter))
                return Fail("a control character in a comment");
            rest_.remove_prefix(comment.size());
        }
        if (rest_.starts_with("\r\n"))
            rest_.remove_prefix(1);
        if (rest_.empty())
            return true;
        if (!Take('\n'))
            return false;
        ++line_;
        return true;
    }

    /// False at the end of the file.
    bool SkipBlankLines()
    {
        while (!rest_.empty() && TakeEndOfLine())
            ;
        return !rest_.empty();
    }

    bool ReadEntry(ConfigEntry& entry)
    {
        if (rest_.find('\0') != std::string_view::npos)
            return Fail("is no text in UTF-8: there is a byte 0 in the file");
        entry.key = TakeWord(IsKeyLetter);
        if (entry.key.empty())
        {
            return Fail(rest_.starts_with('[') ? "a table: options are not in tables, leave the line out"
                                               : "needs the name of an option: fps = 60");
        }
        SkipBlanks();
        if (!Take('='))
            return Fail(entry.key + ": needs \"=\" after the name");
        SkipBlanks();
        entry.list = Take('[');
        if (entry.list ? !ReadList(entry) : !ReadValue(entry))
            return false;
        return TakeEndOfLine() || Fail(entry.key + ": more follows after the value: put texts in quotes");
    }

    template <typename Belongs>
    std::string TakeWord(Belongs belongs)
    {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), belongs);
        const std::string word(rest_.begin(), end);
        rest_.remove_prefix(word.size());
        return word;
    }

    bool ReadList(ConfigEntry& entry)
    {
        SkipBlankLines();
        while (!Take(']'))
        {
            if (!ReadValue(entry))
                return false;
            SkipBlankLines();
            const bool more = Take(',');
            SkipBlankLines();
            if (!more && !rest_.starts_with(']'))
                return Fail(entry.key + ": needs \",\" or \"]\" after a value of the list");
        }
        return true;
    }

    bool ReadValue(ConfigEntry& entry)
    {
        ConfigValue value{Kind::kText, {}};
        if (Take('"'))
        {
            if (!ReadEscaped(entry.key, value.text))
                return false;
        }
        else if (Take('\''))
        {
            const std::size_t end = std::min(rest_.find_first_of("'\n"), rest_.size());
            value.text = rest_.substr(0, end);
            rest_.remove_prefix(end);
            if (!Take('\'') || std::any_of(value.text.begin(), value.text.end(), IsControlCharacter))
                return Fail(entry.key + ": the text has no ' at its end, or a control character in it");
        }
        else
        {
            value.text = TakeWord(
                [](char c) {
                    return !IsControlCharacter(c) &&
                           std::string_view(" \t,]#=\"'").find(c) == std::string_view::npos;
                });
            const bool boolean = value.text == "true" || value.text == "false";
            if (!boolean && !IsNumber(value.text))
            {
                return Fail(entry.key + ": " +
                            (value.text.empty()
                                 ? "needs a value"
                                 : value.text + " is no number, true or false: put texts in quotes"));
            }
            value.kind = boolean ? Kind::kBoolean : Kind::kNumber;
        }
        entry.values.push_back(std::move(value));
        return true;
    }

    bool ReadEscaped(const std::string& key, std::string& text)
    {
        while (!Take('"'))
        {
            if (rest_.empty() || IsControlCharacter(rest_.front()))
                return Fail(key + ": the text has no \" at its end, or a control character in it");
            const char c = rest_.front();
            rest_.remove_prefix(1);
            if (c != '\\')
                text += c;
            else if (!ReadEscape(text))
                return Fail(
                    key + ": unknown escape in a text: write \\\\ for a backslash, or '...' around the text");
        }
        return true;
    }

    /// What follows a backslash.
    bool ReadEscape(std::string& text)
    {
        if (rest_.empty())
            return false;
        const char letter = rest_.front();
        rest_.remove_prefix(1);
        if (const std::size_t known = kEscapes.find(letter); known != std::string_view::npos)
        {
            text += kEscaped[known];
            return true;
        }
        const std::string_view digits = rest_.substr(0, letter == 'u' ? 4 : letter == 'U' ? 8 : 0);
        std::uint32_t code = 0;
        const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
        const bool whole =
            digits.size() == (letter == 'u' ? 4U : 8U) && stop == digits.data() + digits.size();
        const bool surrogate = code >= 0xD800 && code < 0xE000;
        if (!whole || error != std::errc() || code == 0 || surrogate || code > 0x10FFFF)
            return false;
        rest_.remove_prefix(digits.size());
        AppendCharacter(text, code);
        return true;
    }

    std::string_view rest_;
    std::size_t line_ = 1;
    std::string error_;
};

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

std::string InQuotes(const std::string& text)
{
    const bool plain =
        std::none_of(text.begin(), text.end(), IsControlCharacter) && text.find('\'') == std::string::npos;
    if (plain && text.find_first_of("\"\\") != std::string::npos)
        return "'" + text + "'";
    std::string quoted = "\"";
    for (const char c : text)
    {
        if (const std::size_t escape = kEscaped.find(c); escape != std::string_view::npos)
            quoted += {'\\', kEscapes[escape]};
        else if (IsControlCharacter(c))
            quoted += "\\u00" + HexText(static_cast<unsigned char>(c), 2).substr(2);
        else
            quoted += c;
    }
    return quoted + '"';
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

Status ReadConfig(std::string_view file, std::vector<ConfigEntry>& entries)
{
    return ConfigReader(file).Read(entries);
}

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
            return Status::Failure(place + ": " + entry.key + ": " + why);
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
