#include "host/import/transport_rate.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace mobu_host
{
namespace
{

constexpr double kFrameTolerance = 1.0e-3;           // frames
constexpr double kSinglePrecision = 1.0 / (1 << 24); // of a time: the most that rounding takes or adds
constexpr double Ntsc(double rate)
{
    return rate * 1000.0 / 1001.0;
}

constexpr double kCommonRates[] = {24.0, Ntsc(24.0), 25.0,  30.0,  Ntsc(30.0),  48.0,  Ntsc(48.0), 50.0,
                                   60.0, Ntsc(60.0), 100.0, 120.0, Ntsc(120.0), 240.0, Ntsc(240.0)};

// At another time than 0. Times ascend.
bool IsKeyed(const TakeDescription& take)
{
    return std::any_of(take.keys.begin(), take.keys.end(),
                       [](const KeyTimes& times)
                       { return !times->empty() && (times->front() != 0.0 || times->back() != 0.0); });
}

} // namespace

bool IsWholeFrame(double seconds, double rate)
{
    const double frames = seconds * rate;
    return std::abs(frames - std::round(frames)) <= kFrameTolerance + std::abs(frames) * kSinglePrecision;
}

bool RateFit::Fits(const KeyTimes& times)
{
    const auto [found, is_new] = known_.try_emplace(times.get());
    if (is_new)
        found->second = std::all_of(times->begin(), times->end(),
                                    [this](double seconds) { return IsWholeFrame(seconds, rate_); });
    return found->second;
}

bool RateFit::Fits(const TakeDescription& take)
{
    return IsWholeFrame(take.start, rate_) && IsWholeFrame(take.stop, rate_) &&
           std::all_of(take.keys.begin(), take.keys.end(),
                       [this](const KeyTimes& times) { return Fits(times); });
}

std::optional<double> LowestRateOf(const std::vector<TakeDescription>& takes)
{
    if (std::none_of(takes.begin(), takes.end(), IsKeyed))
        return kUsualRate;
    const auto all_fit = [&takes](double rate)
    {
        RateFit rate_fit(rate);
        return std::all_of(takes.begin(), takes.end(),
                           [&rate_fit](const TakeDescription& take) { return rate_fit.Fits(take); });
    };
    const auto* const found = std::find_if(std::begin(kCommonRates), std::end(kCommonRates), all_fit);
    return found == std::end(kCommonRates) ? std::nullopt : std::optional<double>(*found);
}

} // namespace mobu_host
