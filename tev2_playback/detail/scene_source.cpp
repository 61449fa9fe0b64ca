#include "tev2_playback/detail/scene_source.h"

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

template <typename Family>
TrackSource SourceOf(const std::unique_ptr<Family>& track)
{
    TrackSource source;
    if (!track)
        return source;
    source.present = true;
    source.kind = track->GetType();
    VisitKeys(*track,
              [&source](auto times, auto values)
              {
                  source.times = {times.data(), times.size()};
                  source.values = values.data();
                  source.valueCount = values.size();
              });
    return source;
}

} // namespace

ClipSource SourceOf(const TEV2& scene)
{
    ClipSource source;
    source.begin = scene.environment.timeRange.minimum;
    source.end = scene.environment.timeRange.maximum;
    source.upAxis = UpAxis(scene);
    source.nodes.reserve(scene.matrixHierarchy.nodes.size());
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        source.nodes.push_back({node.name.Text(), node.parentIndex, SourceOf(node.translation),
                                SourceOf(node.rotation), SourceOf(node.scale), node.worldMatrix});
    return source;
}

} // namespace TEV2_PLAYBACK
