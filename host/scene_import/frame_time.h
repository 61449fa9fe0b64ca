#pragma once

#include <fbsdk/fbsdk.h>

#include <cmath>

namespace mobu_host
{

inline constexpr double kFrameTolerance =
    1.0e-3; // frames; a time nearer than this is meant to be on the frame

// Moves the start or end of a take onto the whole frame of `rate` (frames a second) that it is within the tolerance of;
// other times stay. An exporter truncates seconds x rate toward zero, so a tick too few would lose the frame: the result
// is never on the side of zero of its frame.
inline FBTime OnFrame(FBTime time, double rate)
{
    const double frames = time.GetSecondDouble() * rate;
    const double frame = std::round(frames);
    if (!(std::abs(frames - frame) <= kFrameTolerance))
        return time;
    time.SetSecondDouble(frame / rate);
    while (std::abs(time.GetSecondDouble() * rate) < std::abs(frame))
        time.Set(time.Get() + (frame < 0.0 ? -1 : 1));
    return time;
}

} // namespace mobu_host
