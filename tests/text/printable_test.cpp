#include "text/printable.h"
#include "text/utf8.h"

#include <gtest/gtest.h>

namespace
{

TEST(Printable, ShowsWhatATerminalWouldObey)
{
    const struct
    {
        std::string text;
        const char* shown;
        const char* one_line; // where that differs
    } cases[] = {
        {"plain, \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "plain, \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80",
         nullptr},
        {"a\nb\rc\td", "a\\nb\\rc\\td", nullptr},
        {"\x1B[2J\x07\x7F", "\\x1b[2J\\x07\\x7f", nullptr},
        {"C:\\x", "C:\\x", "C:\\\\x"},
        {"\xC2\x9B"
         "31m",
         "\\u009b31m", nullptr}, // CSI in one character
        {"\x9B"
         "31m",
         "\\x9b31m", nullptr}, // in one byte, which is not UTF-8
        {"a\xE2\x80\xAE"
         "b",
         "a\\u202eb", nullptr}, // text from right to left
        {"\xE2\x81\xA6\xE2\x80\xA8", "\\u2066\\u2028", nullptr},
        {"cut \xE2\x82", "cut \\xe2\\x82", nullptr},
        {"\xC0\x80 \xED\xA0\x80 \xF4\x90\x80\x80", "\\xc0\\x80 \\xed\\xa0\\x80 \\xf4\\x90\\x80\\x80",
         nullptr},
        {std::string(1, '\0'), "\\x00", nullptr},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(Printable(c.text), c.shown);
        EXPECT_EQ(OneLine(c.text), c.one_line ? c.one_line : c.shown);
    }
}

TEST(Utf8, TakesShortestFormsOfCodePointsAlone)
{
    const struct
    {
        std::string text;
        bool valid;
    } cases[] = {
        {"", true},
        {"a\xDF\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF", true},
        {"\x80", false},
        {"\xC1\xBF", false},
        {"\xE0\x9F\xBF", false},
        {"\xED\xBF\xBF", false},
        {"\xF0\x8F\xBF\xBF", false},
        {"\xF5\x80\x80\x80", false},
        {"\xE2\x82", false},
        {"\xE2\x28\xA1", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(IsUtf8(c.text), c.valid) << c.text;
}

} // namespace
