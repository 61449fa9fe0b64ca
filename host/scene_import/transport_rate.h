#pragma once

// The frame rate of a scene whose file states none.

#include "host/scene_import/scene_description.h"

#include <optional>
#include <vector>

namespace mobu_host
{

inline constexpr double kUsualRate = 30.0; // frames per second, where nothing says otherwise

// Whether a time is meant to be a whole frame of `rate` (frames per second): files store times as short decimals or in
// single precision. The tolerance is a thousandth of a frame, and what single precision rounds on top.
bool IsWholeFrame(double seconds, double rate);

// Whether all keys and both ends of the take are whole frames.
bool FitsRate(const TakeDescription& take, double rate);

// The lowest common rate, NTSC rates included, that all takes fit. A whole rate goes before its NTSC rate: both fit only
// where no time tells them apart. kUsualRate where nothing is keyed at any time but 0; nothing where no rate fits.
std::optional<double> LowestRateOf(const std::vector<TakeDescription>& takes);

} // namespace mobu_host
