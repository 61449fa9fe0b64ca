#include "host/import/bvh/text_scanner.h"

#include "host/import/base/exportable_number.h"
#include "host/import/base/parse_error.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace mobu_host::bvh
{
namespace
{

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f' || c == '\0';
}

bool IsBrace(char c)
{
    return c == '{' || c == '}';
}

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool SameWord(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string Quoted(std::string_view text)
{
    constexpr std::size_t kLongest = 40;
    std::string quoted = "\"";
    for (const char c : text.substr(0, kLongest))
        quoted += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    return quoted + (text.size() > kLongest ? "...\"" : "\"");
}

void TextScanner::Fail(const std::string& cause) const
{
    throw ParseError(cause + " (line " + std::to_string(line_) + ")");
}

void TextScanner::SkipBlanks()
{
    for (; at_ < text_.size() && IsBlank(text_[at_]); ++at_)
    {
        const bool line_ends = text_[at_] == '\n' || (text_[at_] == '\r' && text_.substr(at_ + 1, 1) !=
                                                                                "\n"); // old files: \r alone
        if (!line_ends)
            continue;
        ++line_;
        fresh_line_ = true;
    }
}

std::string_view TextScanner::Word()
{
    SkipBlanks();
    const std::size_t start = at_;
    if (at_ < text_.size() && IsBrace(text_[at_]))
        ++at_;
    else
        while (at_ < text_.size() && !IsBlank(text_[at_]) && !IsBrace(text_[at_]))
            ++at_;
    fresh_line_ = fresh_line_ && at_ == start;
    return text_.substr(start, at_ - start);
}

bool TextScanner::Take(std::string_view word)
{
    TextScanner ahead = *this;
    if (!SameWord(ahead.Word(), word))
        return false;
    *this = ahead;
    return true;
}

void TextScanner::Expect(std::string_view word)
{
    if (Take(word))
        return;
    const std::string_view found = Word();
    Fail((found.empty() ? "the file ends" : Quoted(found)) + " where " + std::string(word) + " is expected");
}

void TextScanner::ExpectLabel(std::string_view word)
{
    SkipBlanks();
    TextScanner ahead = *this;
    ahead.at_ = std::min(ahead.at_ + word.size(), text_.size());
    const bool is_there = SameWord(text_.substr(at_, word.size()), word);
    ahead.SkipBlanks();
    if (!is_there || text_.substr(ahead.at_, 1) != ":")
        Expect(std::string(word) + ":"); // fails
    *this = ahead;
    ++at_;
    fresh_line_ = false;
}

std::string_view TextScanner::RestOfLine()
{
    const std::size_t end = std::min(text_.find_first_of("\r\n{}", at_), text_.size());
    std::string_view rest = text_.substr(at_, end - at_);
    at_ = end;
    while (!rest.empty() && IsBlank(rest.front()))
        rest.remove_prefix(1);
    while (!rest.empty() && IsBlank(rest.back()))
        rest.remove_suffix(1);
    return rest;
}

double TextScanner::Number(const char* what)
{
    std::string_view word = Word();
    if (word.empty())
        Fail(std::string("the file ends where ") + what + " is expected");
    const std::string_view whole = word;
    if (word.starts_with('+'))
        word.remove_prefix(1);
    double number = 0.0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error == std::errc::result_out_of_range || (std::isfinite(number) && !IsExportable(number)))
        Fail(std::string(what) + ": " + Quoted(whole) + " is out of range");
    if (error != std::errc() || end != word.data() + word.size() || !IsExportable(number))
        Fail(std::string(what) + ": " + Quoted(whole) + " is not a finite number");
    return number;
}

std::size_t TextScanner::Count(const char* what, std::size_t most)
{
    const double number = Number(what);
    if (number < 0.0 || number > static_cast<double>(most) || number != std::floor(number))
        Fail(std::string(what) + " is not a whole number from 0 to " + std::to_string(most));
    return static_cast<std::size_t>(number);
}

bool TextScanner::AtLineStart()
{
    SkipBlanks();
    return fresh_line_ && at_ < text_.size();
}

bool TextScanner::AtEnd()
{
    SkipBlanks();
    return at_ == text_.size();
}

} // namespace mobu_host::bvh
