#include "tev2_playback/playhead.h"

#include <algorithm>
#include <cmath>

namespace TEV2_PLAYBACK
{

Playhead::Playhead(float begin, float end)
    : begin_(std::isfinite(begin) ? static_cast<double>(begin) : 0.0),
      length_(std::isfinite(begin) && std::isfinite(end) ? std::max(0.0, static_cast<double>(end) - begin_)
                                                         : 0.0)
{
    SetTime(At(0.0));
}

void Playhead::SetRepeat(Repeat repeat)
{
    repeat_ = repeat;
    turned_ = false;
}

void Playhead::SetTime(float seconds)
{
    const double position = static_cast<double>(seconds) - begin_;
    position_ = position > 0.0 ? std::min(position, length_) : 0.0;
    turned_ = false;
    time_ = seconds;
    played_ = {At(0.0), At(length_), seconds, seconds};
}

void Playhead::Advance(double seconds)
{
    const double step = (turned_ ? -1.0 : 1.0) * seconds * speed_;
    const bool moves = std::isfinite(step) && step != 0.0;
    const float from = moves ? At(position_) : time_;
    played_ = {At(0.0), At(length_), from, from, step < 0.0, repeat_ == Repeat::PingPong};
    if (!moves)
        return;
    const double target = position_ + step;
    if (length_ == 0.0 || repeat_ == Repeat::Once)
        position_ = std::clamp(target, 0.0, length_);
    else if (repeat_ == Repeat::Loop)
        Loop(target);
    else
        Turn(target);
    time_ = At(position_);
    played_.to = time_;
}

void Playhead::Loop(double target)
{
    position_ = std::fmod(target, length_);
    if (position_ < 0.0)
        position_ += length_;
    Cross((target - position_) / length_);
}

void Playhead::Turn(double target)
{
    const double cycle = 2.0 * length_;
    double phase = std::fmod(target, cycle);
    if (phase < 0.0)
        phase += cycle;
    const bool returns = phase > length_;
    Cross((target - phase) / length_ + (returns ? 1.0 : 0.0));
    position_ = returns ? cycle - phase : phase;
    turned_ ^= returns;
}

void Playhead::Cross(double ends)
{
    constexpr double kMost = 9007199254740992.0; // 2^53: beyond, doubles are no longer all whole numbers
    played_.crossings = static_cast<std::uint64_t>(std::min(std::fabs(std::nearbyint(ends)), kMost));
}

int Playhead::Direction() const
{
    const int speed = speed_ > 0.0 ? 1 : speed_ < 0.0 ? -1 : 0;
    return turned_ ? -speed : speed;
}

bool Playhead::HasEnded() const
{
    return repeat_ == Repeat::Once &&
           ((speed_ > 0.0 && At(position_) >= At(length_)) || (speed_ < 0.0 && At(position_) <= At(0.0)));
}

} // namespace TEV2_PLAYBACK
