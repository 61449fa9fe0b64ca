#pragma once

#include "tev2_loader/requirements.h"

#include <cstdint>

namespace TEV2_PLAYBACK
{

/// What a playhead does at the ends of its range.
enum class Repeat : std::uint8_t
{
    Once,     ///< stops there; to play backward once, SetTime to the end of the range first
    Loop,     ///< jumps to the other end
    PingPong, ///< turns round
};

/// What one Advance played: from one time to another, by way of the ends of the range. All times in seconds.
struct PlayedSpan
{
    float begin = 0.0f; ///< of the range
    float end = 0.0f;
    float from = 0.0f;
    float to = 0.0f;
    bool backward = false;       ///< at first
    bool turns = false;          ///< at the ends; otherwise it jumps from the one to the other
    std::uint64_t crossings = 0; ///< ends at which it turned or jumped; 2^53 at most
};

/// A clock over a range of time, which a player has one of.
///
///     TEV2_PLAYBACK::Playhead playhead(0.0f, 2.0f);
///     playhead.SetRepeat(TEV2_PLAYBACK::Repeat::Loop);
///     playhead.Advance(4.5);
///     if (playhead.Time() != 0.5f)
///         return 1;
///
/// Counts in double precision: after hours of steps of 1.0 / 60 it is still at the right frame. (Pass a double: the
/// float nearest to 1/60 is 0.2 ms off in every hour.)
///
/// A range that is empty, reversed or not finite has no length: Advance leaves the time at its begin, or at 0 where
/// that is not finite either.
class Playhead
{
public:
    /// At `begin`, at speed 1, Repeat::Once.
    Playhead(float begin, float end);

    /// The direction becomes that of the speed.
    void SetRepeat(Repeat repeat);
    Repeat GetRepeat() const { return repeat_; }

    /// Seconds of the range per second. Negative: backward. 0, or a number that is not finite: does not move.
    void SetSpeed(double speed) { speed_ = speed; }
    double Speed() const { return speed_; }

    /// Goes to any time, inside the range or not; NaN is evaluated like a time before all keys. A jump: nothing was
    /// played. Advance continues from the nearest time in the range (from its begin after a NaN), in the direction of
    /// the speed.
    void SetTime(float seconds);

    /// Moves by `seconds` times the speed; negative seconds go back. The time is in the range afterwards, however far
    /// it went: any number of lengths takes one step. Nothing moves where the product is 0, NaN or infinite.
    void Advance(double seconds);

    /// Seconds. A loop is at the begin of its range in place of the end. Where the sum of its steps is short of the end
    /// by less than a float can tell, as 120 times 1.0 / 60 is of 2, this is the end, and the next Advance jumps.
    float Time() const { return time_; }

    /// 1 or -1: which way positive seconds go. 0: nowhere, since the speed is 0 or NaN.
    int Direction() const;

    /// Whether Repeat::Once is at the end of the range that the speed leads to, if only because it began there. False
    /// where the speed is 0.
    bool HasEnded() const;

    /// How often the last Advance jumped (Loop) or turned (PingPong), 2^53 at most. An end that was just reached by a
    /// turning playhead counts when it is left.
    std::uint64_t Wraps() const { return played_.crossings; }

    /// What the last Advance played; an empty span at the present time if nothing moved, or after SetTime.
    const PlayedSpan& Played() const { return played_; }

private:
    void Loop(double target);
    void Turn(double target);
    void Cross(double ends);
    float At(double position) const { return static_cast<float>(begin_ + position); }

    double begin_;
    double length_;
    double position_ = 0.0; ///< from the begin, within the length
    double speed_ = 1.0;
    PlayedSpan played_;
    float time_;
    Repeat repeat_ = Repeat::Once;
    bool turned_ = false; ///< goes against the speed
};

} // namespace TEV2_PLAYBACK
