#include "host/scene_import/transport_rate.h"

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

bool IsKeyed(const TakeDescription& take)
{
    return std::any_of(
        take.keys.begin(), take.keys.end(),
        [](const KeyTimes& times)
        { return std::any_of(times->begin(), times->end(), [](double seconds) { return seconds != 0.0; }); });
}

} // namespace

bool IsWholeFrame(double seconds, double rate)
{
    const double frames = seconds * rate;
    return std::abs(frames - std::round(frames)) <= kFrameTolerance + std::abs(frames) * kSinglePrecision;
}

bool FitsRate(const TakeDescription& take, double rate)
{
    const auto fits = [rate](double seconds) { return IsWholeFrame(seconds, rate); };
    return fits(take.start) && fits(take.stop) &&
           std::all_of(take.keys.begin(), take.keys.end(),
                       [&fits](const KeyTimes& times)
                       { return std::all_of(times->begin(), times->end(), fits); });
}

std::optional<double> LowestRateOf(const std::vector<TakeDescription>& takes)
{
    if (std::none_of(takes.begin(), takes.end(), IsKeyed))
        return kUsualRate;
    const auto* const found = std::find_if(std::begin(kCommonRates), std::end(kCommonRates),
                                           [&takes](double rate)
                                           {
                                               return std::all_of(takes.begin(), takes.end(),
                                                                  [rate](const TakeDescription& take)
                                                                  { return FitsRate(take, rate); });
                                           });
    return found == std::end(kCommonRates) ? std::nullopt : std::optional<double>(*found);
}

} // namespace mobu_host
