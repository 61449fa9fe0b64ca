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
constexpr std::size_t kLongestName = 30;
constexpr std::chrono::milliseconds kBetweenDrawings{100};

/// The remaining time is shown after this many seconds and this part of the work.
constexpr double kBeforeEstimate = 1.0;
constexpr double kLeastPartToEstimate = 0.02;

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
        text.end ? "  " + Fixed(text.seconds, 2) + " of " + Fixed(*text.end, 2) + " s" : "",
        text.failed > 0 ? "  " + std::to_string(text.failed) + " failed" : "",
        text.seconds_left ? "  ETA " + Fixed(*text.seconds_left, 0) + " s" : "",
    };
    std::string line = Shortened(Printable(text.name), std::min(kLongestName, columns));
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

std::optional<double> SecondsLeft(double elapsed, double part)
{
    if (elapsed < kBeforeEstimate || part < kLeastPartToEstimate)
        return std::nullopt;
    return elapsed / part - elapsed;
}

bool DrawnProgress::IsDue() const
{
    return terminal_ != nullptr && std::chrono::steady_clock::now() - last_drawn_ >= kBetweenDrawings;
}

void DrawnProgress::Draw(const ProgressText& text)
{
    last_drawn_ = std::chrono::steady_clock::now();
    // The last column stays free: some terminals wrap when it is filled.
    *terminal_ << "\r\x1b[K" << ProgressLine(text, columns_ - 1) << std::flush;
    drawn_ = true;
}

void DrawnProgress::Erase()
{
    if (drawn_)
    {
        *terminal_ << "\r\x1b[K" << std::flush;
        drawn_ = false;
    }
}

} // namespace tv2
