#include "compare/instants.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace tev2_compare
{

using namespace TEV2_LOADER;

TimeSpan SpanOf(const TEV2& scene)
{
    const auto& range = scene.environment.timeRange;
    if (std::isfinite(range.minimum) && std::isfinite(range.maximum) && range.minimum < range.maximum)
        return {range.minimum, range.maximum};
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    TimeSpan span{kInfinity, -kInfinity};
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        for (const TEV2_ANIMATABLE* track : std::initializer_list<const TEV2_ANIMATABLE*>{
                 node.translation.get(), node.rotation.get(), node.scale.get()})
        {
            if (track == nullptr)
                continue;
            for (const float time : track->m_times)
            {
                if (!std::isfinite(time))
                    continue;
                span.start = std::min(span.start, time);
                span.end = std::max(span.end, time);
            }
        }
    }
    if (span.start <= span.end)
        return span;
    const float start = std::isfinite(range.minimum) ? range.minimum : 0.0f;
    return {start, start};
}

bool Overlap(const TimeSpan& left, const TimeSpan& right, TimeSpan& common)
{
    common = {std::max(left.start, right.start), std::min(left.end, right.end)};
    return common.start <= common.end;
}

void InstantCollector::Add(const TEV2_ANIMATABLE* track)
{
    if (track == nullptr)
        return;
    std::ranges::copy_if(track->m_times, std::back_inserter(times_),
                         [this](float time) { return span_.Contains(time); });
    if (times_.size() > limit_)
    {
        Shrink();
        limit_ = std::max(limit_, 2 * times_.size());
    }
}

void InstantCollector::Shrink()
{
    std::ranges::sort(times_);
    times_.erase(std::unique(times_.begin(), times_.end()), times_.end());
}

Instants InstantCollector::Take(std::size_t most)
{
    times_.push_back(span_.start);
    times_.push_back(span_.end);
    Shrink();
    constexpr float kOneInstant = 1e-4f; // seconds
    std::vector<float> distinct;
    float first = 0.0f; // of those that are one with the last
    for (const float time : times_)
    {
        if (!distinct.empty() && time - first <= kOneInstant)
        {
            distinct.back() = time;
            continue;
        }
        first = time;
        distinct.push_back(time);
    }
    Instants instants;
    instants.all = 2 * distinct.size() - 1;
    const std::size_t step =
        std::max<std::size_t>(1, (instants.all + most - 1) / std::max<std::size_t>(most, 1));
    const auto at = [&distinct](std::size_t index) -> float
    {
        const float before = distinct[index / 2];
        if (index % 2 == 0)
            return before;
        const double after = static_cast<double>(distinct[index / 2 + 1]);
        return static_cast<float>((static_cast<double>(before) + after) * 0.5);
    };
    for (std::size_t index = 0; index < instants.all; index += step)
        instants.times.push_back(at(index));
    if ((instants.all - 1) % step != 0)
        instants.times.push_back(at(instants.all - 1));
    return instants;
}

} // namespace tev2_compare
