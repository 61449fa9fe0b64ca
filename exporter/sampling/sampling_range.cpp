#include "exporter/sampling/sampling_range.h"

#include <algorithm>
#include <cmath>

namespace tev2_exporter
{

bool TimeAdvances(const SamplingRange& range)
{
    const float step = 1.0f / range.rate;
    const float largest = std::max(std::fabs(range.start), std::fabs(range.end));
    return range.rate > 0.0f && step > 0.0f && largest + step > largest;
}

std::uint32_t ReservedKeys(const SamplingRange& range)
{
    constexpr float kMost = 1048576.0f;
    const float keys = (range.end - range.start) * range.rate + 2.0f;
    if (!(keys > 0.0f)) // also when it is no number
        return 0;
    return static_cast<std::uint32_t>(std::min(keys, kMost));
}

} // namespace tev2_exporter
