#pragma once

/// The frame rate of a scene whose file states none.

#include "host/import/base/scene_description.h"

#include <optional>
#include <unordered_map>
#include <vector>

namespace mobu_host
{

inline constexpr double kUsualRate = 30.0; // frames per second, where nothing says otherwise

/// Whether a time is meant to be a whole frame of `rate` (frames per second): files store times as short decimals or in
/// single precision. The tolerance is a thousandth of a frame, and what single precision rounds on top.
bool IsWholeFrame(double seconds, double rate);

/// Which takes fit a rate: all keys and both ends are whole frames. Looks through each array of keys once, however many
/// takes share it; the arrays must outlive it.
class RateFit
{
public:
    explicit RateFit(double rate) : rate_(rate) {}

    bool Fits(const TakeDescription& take);

private:
    bool Fits(const KeyTimes& times);

    double rate_; // frames per second
    std::unordered_map<const std::vector<double>*, bool> known_;
};

/// The lowest common rate, NTSC rates included, that all takes fit. A whole rate goes before its NTSC rate: both fit
/// only where no time distinguishes them. kUsualRate where nothing is keyed at any time but 0; nothing where no rate
/// fits.
std::optional<double> LowestRateOf(const std::vector<TakeDescription>& takes);

} // namespace mobu_host
