#include "exporter/sampling/sampling_range.h"

#include "exporter/base/clamped_cast.h"

#include <algorithm>
#include <cmath>

namespace tev2_exporter
{

std::int32_t FrameAt(double seconds, double transport_rate)
{
    return ToInt32(transport_rate * seconds);
}

float SecondsOfFrame(std::int32_t frame, double transport_rate)
{
    return static_cast<float>(static_cast<double>(static_cast<float>(frame)) / transport_rate);
}

float SecondsOfKey(std::int32_t key, double transport_rate)
{
    return static_cast<float>(key / transport_rate);
}

SamplingRange WholeTake(const TakeTimes& take, float rate)
{
    const auto aligned = [&](double seconds)
    { return SecondsOfFrame(FrameAt(seconds, take.transport_rate), take.transport_rate); };
    return {aligned(take.start), aligned(take.stop), rate};
}

SamplingRange CustomRange(const SamplingRange& whole, float custom_start, float custom_end)
{
    return {custom_start >= whole.start ? custom_start : whole.start,
            custom_end <= whole.end ? custom_end : whole.end, whole.rate};
}

std::vector<float> SampledInstants(const SamplingRange& range)
{
    std::vector<float> instants = {range.start};
    for (RegularInstants regular(range); regular.Next();)
        instants.push_back(regular.Time());
    instants.push_back(range.end);
    return instants;
}

bool TimeAdvances(const SamplingRange& range)
{
    const float step = 1.0f / range.rate;
    const float largest = std::max(std::fabs(range.start), std::fabs(range.end));
    return range.rate > 0.0f && step > 0.0f && largest + step > largest;
}

double SampleCount(const SamplingRange& range)
{
    const double length = static_cast<double>(range.end) - static_cast<double>(range.start);
    return std::floor(std::fmax(length, 0.0) * static_cast<double>(range.rate)) + 1.0;
}

double SampledBytes(const SamplingRange& range, std::size_t nodes, std::size_t cameras)
{
    constexpr double kNodeBytes = 16.0 + 20.0;  // a translation and a rotation, times included
    constexpr double kCameraBytes = 8.0 + 12.0; // field of view, clip range
    return SampleCount(range) *
           (kNodeBytes * static_cast<double>(nodes) + kCameraBytes * static_cast<double>(cameras));
}

std::uint32_t ReservedKeys(const SamplingRange& range)
{
    constexpr float kMost = 1048576.0f;
    const float keys = (range.end - range.start) * range.rate + 2.0f;
    if (!(keys > 0.0f)) // also for NaN
        return 0;
    return static_cast<std::uint32_t>(std::min(keys, kMost));
}

} // namespace tev2_exporter
