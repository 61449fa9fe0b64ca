#include "tools/tv2/extents.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

void Include(Extents& extents, const TEV2_MATRIX_3X4& matrix)
{
    // adding zero turns -0 into 0
    const std::array<float, 3> origin = {matrix.m[0][3] + 0.0F, matrix.m[1][3] + 0.0F, matrix.m[2][3] + 0.0F};
    if (!std::all_of(origin.begin(), origin.end(), [](float component) { return std::isfinite(component); }))
        return;
    if (!extents.found)
    {
        extents.minimum = extents.maximum = origin;
        extents.found = true;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        extents.minimum[axis] = std::min(extents.minimum[axis], origin[axis]);
        extents.maximum[axis] = std::max(extents.maximum[axis], origin[axis]);
    }
}

void SortUnique(std::vector<float>& times)
{
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
}

/// All finite key times of the nodes' own tracks, sorted, each once.
std::vector<float> KeyTimes(const TEV2_MATRIX_HIERARCHY& hierarchy)
{
    std::vector<float> times;
    std::size_t limit = 1 << 20; // of a list that still has duplicates
    const auto add = [&](const TEV2_ANIMATABLE* track)
    {
        if (track == nullptr)
            return;
        std::copy_if(track->m_times.begin(), track->m_times.end(), std::back_inserter(times),
                     [](float time) { return std::isfinite(time); });
        if (times.size() > limit)
        {
            SortUnique(times);
            limit = std::max(limit, 2 * times.size());
        }
    };
    for (const TEV2_MATRIX_NODE& node : hierarchy.nodes)
    {
        add(node.translation.get());
        add(node.rotation.get());
        add(node.scale.get());
    }
    SortUnique(times);
    return times;
}

} // namespace

Extents MeasureExtents(TEV2& scene, std::size_t most_evaluations)
{
    Extents extents;
    std::vector<float> times = KeyTimes(scene.matrixHierarchy);
    extents.key_times = times.size();
    if (times.empty())
        times.push_back(scene.environment.timeRange.minimum);
    const std::size_t nodes = std::max<std::size_t>(scene.matrixHierarchy.nodes.size(), 1);
    const std::size_t most_times = std::max<std::size_t>(most_evaluations / nodes, 2);
    const std::size_t step = (times.size() + most_times - 1) / most_times;
    const auto evaluate = [&](float time)
    {
        scene.matrixHierarchy.SetTime(time);
        for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
            Include(extents, node.worldMatrix);
        ++extents.evaluated;
    };
    for (std::size_t i = 0; i < times.size(); i += step)
        evaluate(times[i]);
    if ((times.size() - 1) % step != 0)
        evaluate(times.back());
    return extents;
}

} // namespace tv2
