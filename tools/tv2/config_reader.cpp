#include "tools/tv2/config_reader.h"

#include "tools/tv2/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>

namespace tv2
{

using TEV2_LOADER::Status;
using Kind = ConfigValue::Kind;

namespace
{

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
        std::string word(rest_.begin(), end);
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
                                 : value.text + " is not a number, true or false: put texts in quotes"));
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

} // namespace

Status ReadConfig(std::string_view file, std::vector<ConfigEntry>& entries)
{
    return ConfigReader(file).Read(entries);
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

} // namespace tv2
