#include "compare/difference.h"

#include <cmath>
#include <limits>

namespace tev2_compare
{

std::string_view NameOf(Change change)
{
    constexpr std::string_view kNames[] = {"missing",   "added",   "renamed", "moved",
                                           "reordered", "retyped", "changed"};
    return kNames[static_cast<std::size_t>(change)];
}

std::string_view NameOf(Unit unit)
{
    constexpr std::string_view kNames[] = {"mm", "degrees", "percent", "value"};
    return kNames[static_cast<std::size_t>(unit)];
}

std::string_view NameOf(Topic topic)
{
    constexpr std::string_view kNames[kTopics] = {"rig", "scene", "motion", "property", "camera", "object"};
    return kNames[static_cast<std::size_t>(topic)];
}

std::string_view NameOf(Aspect aspect)
{
    constexpr std::string_view kNames[] = {"object", "namespace", "bone",      "property",
                                           "field",  "pose",      "world pose"};
    return kNames[static_cast<std::size_t>(aspect)];
}

double Apart(double left, double right)
{
    if (left == right || (std::isnan(left) && std::isnan(right)))
        return 0.0;
    const double apart = std::abs(left - right);
    return std::isfinite(apart) ? apart : std::numeric_limits<double>::infinity();
}

void DeviationOverTime::Add(float time, double value, double tolerance)
{
    if (value > deviation_.worst)
    {
        deviation_.worst = value;
        deviation_.worst_time = time;
    }
    if (value > tolerance && !beyond_)
    {
        beyond_ = true;
        deviation_.first_time = time;
    }
}

} // namespace tev2_compare
