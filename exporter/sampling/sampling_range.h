#pragma once

// The window of one take and the instants at which it is sampled. Pure arithmetic, single precision
// throughout: the drift of the accumulated time is part of the result.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tev2_exporter
{

struct SamplingRange
{
    float start = 0.0f; ///< seconds
    float end = 0.0f;   ///< seconds
    float rate = 0.0f;  ///< samples a second
};

/// The span of a take in the scene.
struct TakeTimes
{
    double start = 0.0; ///< seconds
    double stop = 0.0;
    double transport_rate = 0.0; ///< frames a second
};

/// Whole transport frame of a time, truncated toward zero, and the time of a frame.
std::int32_t FrameAt(double seconds, double transport_rate);
float SecondsOfFrame(std::int32_t frame, double transport_rate);

/// Time of the start or end key of a custom range, keys counted in transport frames.
float SecondsOfKey(std::int32_t key, double transport_rate);

/// The take cut to whole transport frames at both ends, to be sampled at `rate`.
SamplingRange WholeTake(const TakeTimes& take, float rate);

/// `custom_start` to `custom_end` (seconds) clamped to `whole`. The result may be empty or reversed.
SamplingRange CustomRange(const SamplingRange& whole, float custom_start, float custom_end);

/// A range is sampled at its start, at the regular instants between its ends, and at its end:
///
///     RegularInstants instants(range);
///     while (instants.Next())
///         Use(instants.Time());
///
/// Regular instants are start + step, start + 2 step ... by repeated addition, while strictly below the end. They end
/// where adding the step no longer advances the time (a negative or huge rate).
class RegularInstants
{
public:
    explicit RegularInstants(const SamplingRange& range)
        : time_(range.start), step_(1.0f / range.rate), end_(range.end)
    {
    }

    /// Moves to the next instant; false when there is none.
    bool Next()
    {
        const float next = time_ + step_;
        if (!(end_ > next) || !(next > time_))
            return false;
        time_ = next;
        return true;
    }

    float Time() const { return time_; }

private:
    float time_;
    float step_;
    float end_;
};

/// All instants at which `range` is sampled, its start and its end included.
std::vector<float> SampledInstants(const SamplingRange& range);

/// True when every step of `range` moves the time on, from its start to its end. False for a rate of 0 or
/// less, for one that is not finite, and for one whose step is lost in the rounding of the largest time of the
/// window.
bool TimeAdvances(const SamplingRange& range);

/// No file is larger: positions in it have 31 bits.
inline constexpr double kFileSizeLimit = 2147483648.0;

/// About how many instants are sampled over `range`.
double SampleCount(const SamplingRange& range);

/// Bytes of the keys that are sampled over `range`, before any are left out. Counts only nodes and cameras.
double SampledBytes(const SamplingRange& range, std::size_t nodes, std::size_t cameras);

/// How many keys to reserve for a track sampled over `range`: (end - start) x rate + 2 truncated toward
/// zero, clamped between 0 and a bound above which tracks grow on demand.
std::uint32_t ReservedKeys(const SamplingRange& range);

} // namespace tev2_exporter
