// What is shown on a terminal: lines that fit it.

#include "tools/tv2/notes.h"
#include "tools/tv2/progress_line.h"
#include "tools/tv2/text.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tv2
{

TEST(ProgressLine, FitsTheTerminalAndCutsTheNameLast)
{
    ProgressText text;
    text.name = "Dance";
    text.file = 3;
    text.files = 14;
    text.part = 0.6;
    text.seconds = 1.2;
    text.end = 2.0;
    text.seconds_left = 3.6;
    const struct
    {
        std::size_t columns;
        const char* line;
    } cases[] = {
        {80, "Dance (3/14)  60 % [##############..........]  1.20 of 2.00 s  ETA 4 s"},
        {65, "Dance (3/14)  60 % [##############..........]  1.20 of 2.00 s"},
        {50, "Dance (3/14)  60 % [##############..........]"},
        {20, "Dance (3/14)  60 %"},
        {7, "Dance"},
        {4, "D..."},
        {2, "Da"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ProgressLine(text, c.columns), c.line);
    text.name = std::string(200, 'x') + "\x1B[2J";
    for (std::size_t columns = 1; columns < 120; ++columns)
        EXPECT_LE(ProgressLine(text, columns).size(), columns);
    text = {};
    text.name = "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9";
    EXPECT_EQ(ProgressLine(text, 4), text.name);
    EXPECT_EQ(ProgressLine(text, 3), "\xC3\xA9\xC3\xA9\xC3\xA9");
    EXPECT_EQ(ProgressLine(text, 30), text.name + "   0 %");
}

TEST(Wrapped, BreaksBetweenWordsAlone)
{
    const struct
    {
        const char* text;
        std::size_t width, indent;
        const char* wrapped;
    } cases[] = {
        {"one two three", 20, 2, "one two three"},
        {"one two three", 8, 2, "one two\n  three"},
        {"one two three", 7, 2, "one two\n  three"},
        {"one two three", 6, 2, "one\n  two\n  three"},
        {"incomprehensible ab", 5, 2, "incomprehensible\n  ab"},
        {"Examples:\n  tv2 export a b\nend of it", 9, 0, "Examples:\n  tv2 export a b\nend of it"},
        {"", 5, 2, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Wrapped(c.text, c.width, c.indent), c.wrapped) << c.text << ' ' << c.width;
    EXPECT_EQ(Wrapped("of the scene", 20, 12, 12), "of the\n            scene");
}

TEST(Notes, AreWrappedOnATerminalAlone)
{
    const std::vector<std::string> notes = {"2 models are mirrored: Left\x1B, Right"};
    for (const std::size_t columns : {std::size_t{0}, std::size_t{30}})
    {
        std::ostringstream out;
        PrintNotes(out, notes, columns);
        EXPECT_EQ(out.str(), columns == 0 ? "note: 2 models are mirrored: Left\\x1b, Right\n"
                                          : "note: 2 models are mirrored:\n      Left\\x1b, Right\n");
    }
}

} // namespace tv2
