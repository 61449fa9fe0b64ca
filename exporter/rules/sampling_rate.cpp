#include "exporter/rules/sampling_rate.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace tev2_exporter
{
namespace
{

struct NamedRate
{
    std::string_view name;
    double rate;
};

constexpr NamedRate kNamedRates[] = {{"pal", 50.0}, {"ntsc", 59.94}, {"film", 24.0}};

std::optional<double> Number(std::string_view text)
{
    double number = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

} // namespace

const char* const kRatesThatAreUnderstood =
    "a number (50, 29.97), a fraction (30000/1001), pal (50), ntsc (59.94), film (24) or scene";

std::optional<double> RateOfText(const std::string& text, double scene_rate)
{
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    if (lower.empty() || lower == "scene")
        return scene_rate;
    for (const NamedRate& named : kNamedRates)
        if (lower == named.name)
            return named.rate;
    const std::size_t slash = lower.find('/');
    if (slash == std::string::npos)
        return Number(lower);
    const auto above = Number(std::string_view(lower).substr(0, slash));
    const auto below = Number(std::string_view(lower).substr(slash + 1));
    return above && below && *below != 0.0 ? std::optional(*above / *below) : std::nullopt;
}

bool IsWholeRate(double rate)
{
    return rate == std::floor(rate) && rate > 0.0 && rate <= std::numeric_limits<std::int32_t>::max();
}

} // namespace tev2_exporter
