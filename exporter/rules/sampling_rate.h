#pragma once

// The sampling rate as a user writes it.

#include <optional>
#include <string>

namespace tev2_exporter
{

/// Samples per second of "29.97", "30000/1001", "scene" (also the empty text), or a name: "pal" (50) and "ntsc" (59.94)
/// as in the export dialog, "film" (24). None for other text. The rate is not checked: it may be 0, negative or beyond
/// single precision.
std::optional<double> RateOfText(const std::string& text, double scene_rate);

/// A rate that the script entry of the exporter can take: a whole number of 32 bits.
bool IsWholeRate(double rate);

/// One line with what RateOfText understands.
extern const char* const kRatesThatAreUnderstood;

} // namespace tev2_exporter
