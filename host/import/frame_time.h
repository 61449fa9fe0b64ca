#pragma once

#include "host/import/transport_rate.h"

#include <fbsdk/fbsdk.h>

#include <cmath>

namespace mobu_host
{

// Moves the start or end of a take onto the frame of `rate` (frames per second) that it is meant to be on; times that are
// no whole frame stay. An exporter truncates seconds x rate toward zero, so a tick too few would lose the frame: the
// result is never closer to zero than its frame.
inline FBTime OnFrame(FBTime time, double rate)
{
    if (!IsWholeFrame(time.GetSecondDouble(), rate))
        return time;
    const double frame = std::round(time.GetSecondDouble() * rate);
    time.SetSecondDouble(frame / rate);
    while (std::abs(time.GetSecondDouble() * rate) < std::abs(frame))
        time.Set(time.Get() + (frame < 0.0 ? -1 : 1));
    return time;
}

} // namespace mobu_host
