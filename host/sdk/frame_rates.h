#pragma once

#include <fbsdk/fbsdk.h>

namespace mobu_host
{

/// The rate of a mode other than the default one; NTSC rates are the exact fractions.
double FramesPerSecond(FBTimeMode mode, double custom);

/// The standard mode of this rate (never drop-frame), else the custom mode.
FBTimeMode ModeOfRate(double frames_per_second);

} // namespace mobu_host
