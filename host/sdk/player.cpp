#include "host/sdk/player.h"

#include "host/sdk/frame_rates.h"

#include <algorithm>
#include <cmath>

namespace mobu_host
{

void Player::Reset()
{
    Player fresh;
    fresh.observers = std::move(observers);
    *this = std::move(fresh);
}

void Player::Goto(FBTime destination, bool clamp_to_take)
{
    if (snap_mode == kFBTransportSnapModeSnapOnFrames || snap_mode == kFBTransportSnapModeSnapAndPlayOnFrames)
    {
        const double rate = RateOf(kFBTimeModeDefault);
        if (rate > 0.0)
            destination.SetSecondDouble(std::round(destination.GetSecondDouble() * rate) / rate);
    }
    if (clamp_to_take && take)
    {
        const FBTimeSpan span = take->LocalTimeSpan;
        const FBTime low = std::min(span.GetStart(), span.GetStop());
        const FBTime high = std::max(span.GetStart(), span.GetStop());
        destination = std::clamp(destination, low, high);
    }
    time = destination;
    for (std::size_t i = 0; i < observers.size(); ++i)
        if (observers[i]->on_goto)
            observers[i]->on_goto(time, take);
}

void Player::ReportEvaluation()
{
    evaluated_time = time;
    ++evaluations;
    for (std::size_t i = 0; i < observers.size(); ++i)
        if (observers[i]->on_evaluate)
            observers[i]->on_evaluate(evaluated_time, take);
}

double Player::RateOf(FBTimeMode mode) const
{
    return FramesPerSecond(mode == kFBTimeModeDefault ? transport_mode : mode, custom_rate);
}

} // namespace mobu_host
