#include "exporter/sampling/key_reduction.h"

#include "exporter/sampling/sampled_track.h"

#include <cmath>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

constexpr float kTolerance = 0.0001f;

bool Near(float a, float b)
{
    return std::fabs(a - b) <= kTolerance;
}
bool Far(float a, float b)
{
    return std::fabs(a - b) > kTolerance;
}

/// Far is not the opposite of Near: NaN is neither.
bool Near(std::int32_t a, std::int32_t b)
{
    return a == b;
}
bool Far(std::int32_t a, std::int32_t b)
{
    return a != b;
}

bool Near(const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
{
    return Near(a.x, b.x) && Near(a.y, b.y) && Near(a.z, b.z);
}
bool Far(const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
{
    return Far(a.x, b.x) || Far(a.y, b.y) || Far(a.z, b.z);
}

/// Vectors of four and quaternions; q and -q count as different.
template <typename Four>
bool Near(const Four& a, const Four& b)
{
    return Near(a.x, b.x) && Near(a.y, b.y) && Near(a.z, b.z) && Near(a.w, b.w);
}
template <typename Four>
bool Far(const Four& a, const Four& b)
{
    return Far(a.x, b.x) || Far(a.y, b.y) || Far(a.z, b.z) || Far(a.w, b.w);
}

template <typename Track>
void ReduceKeys(Track& track)
{
    auto& times = track.m_times;
    auto& values = track.m_values;
    const std::size_t count = values.size();
    if (count < 2)
        return;

    // The last key is judged before the arrays are compacted over it.
    const bool keep_last = Far(values[count - 1], values[count - 2]);
    std::size_t kept = 1;
    const auto keep = [&](std::size_t key)
    {
        times[kept] = times[key];
        values[kept] = values[key];
        ++kept;
    };
    for (std::size_t key = 1; key + 1 < count; ++key)
        if (!Near(values[key], values[kept - 1]) || !Near(values[key], values[key + 1]))
            keep(key);
    if (keep_last)
        keep(count - 1);
    times.resize(kept);
    values.resize(kept);
}

template <typename Entries>
void ReduceEntries(Entries& entries)
{
    for (auto& entry : entries)
        ReduceKeys(SampledIn(entry.track));
}

} // namespace

void ReduceKeys(TEV2_MATRIX_HIERARCHY& hierarchy)
{
    for (TEV2_MATRIX_NODE& node : hierarchy.nodes)
    {
        ReduceKeys(SampledIn(node.translation));
        ReduceKeys(SampledIn(node.rotation));
        ReduceEntries(node.properties.intValues);
        ReduceEntries(node.properties.floatValues);
        ReduceEntries(node.properties.vector3Values);
        ReduceEntries(node.properties.vector4Values);
    }
}

} // namespace tev2_exporter
