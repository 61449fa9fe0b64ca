#include "tools/tv2/progress_line.h"

#include "text/printable.h"
#include "text/utf8.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace tv2
{

namespace
{

constexpr std::size_t kBarWidth = 24;
constexpr std::size_t kLongestTake = 30;

std::string Fixed(double value, int decimals)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

/// The first characters of a text, with three dots where it is longer.
std::string Shortened(std::string_view text, std::size_t columns)
{
    if (ColumnsOf(text) <= columns)
        return std::string(text);
    const std::string_view dots = columns > 3 ? "..." : "";
    std::string cut;
    for (std::size_t left = columns - dots.size(); left > 0; --left)
    {
        const std::size_t length = std::max<std::size_t>(Utf8Length(text), 1);
        cut += text.substr(0, length);
        text.remove_prefix(length);
    }
    return cut + std::string(dots);
}

} // namespace

std::string ProgressLine(const ProgressText& text, std::size_t columns)
{
    const auto filled =
        static_cast<std::size_t>(std::clamp(text.part, 0.0, 1.0) * static_cast<double>(kBarWidth));
    const std::string percent = Fixed(100.0 * text.part, 0);
    const std::string pieces[] = {
        text.file > 0 ? " (" + std::to_string(text.file) + '/' + std::to_string(text.files) + ')' : "",
        std::string(4 - std::min<std::size_t>(percent.size(), 3), ' ') + percent + " %",
        " [" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + ']',
        "  " + Fixed(text.seconds, 2) + " of " + Fixed(text.end, 2) + " s",
        text.seconds_left ? "  ETA " + Fixed(*text.seconds_left, 0) + " s" : "",
    };
    std::string line = Shortened(Printable(text.take), std::min(kLongestTake, columns));
    std::size_t used = ColumnsOf(line);
    for (const std::string& piece : pieces)
    {
        if (used + piece.size() > columns)
            break;
        line += piece;
        used += piece.size();
    }
    return line;
}

} // namespace tv2
