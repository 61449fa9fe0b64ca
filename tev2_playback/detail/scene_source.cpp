#include "tev2_playback/detail/scene_source.h"

#include "tev2_loader/up_axis.h"

#include <tuple>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

template <typename Value>
const void* FirstNumber(const Value& value)
{
    if constexpr (requires { value.Components(); })
        return &std::get<0>(value.Components());
    else
        return &value;
}

/// Texts and tracks of records.
struct FromRecords
{
    static std::u16string_view Text(const TEV2_WIDE_STRING& text) { return text.Text(); }

    template <typename Family>
    static TrackSource Track(const std::unique_ptr<Family>& track)
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
                      if (!values.empty())
                          source.values = FirstNumber(values[0]);
                      source.valueStride = sizeof(typename decltype(values)::value_type);
                      source.valueCount = values.size();
                  });
        return source;
    }
};

} // namespace

ClipSource SourceOf(const TEV2& scene)
{
    ClipSource source;
    source.nodes.reserve(scene.matrixHierarchy.nodes.size());
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        AddProperties(node.properties, {static_cast<std::uint32_t>(source.nodes.size()), false},
                      FromRecords(), source);
        source.nodes.push_back({FromRecords::Text(node.name), node.parentIndex,
                                FromRecords::Track(node.translation), FromRecords::Track(node.rotation),
                                FromRecords::Track(node.scale), node.worldMatrix});
    }
    AddRest(scene, source);
    return source;
}

void AddRest(const TEV2& scene, ClipSource& source)
{
    source.begin = scene.environment.timeRange.minimum;
    source.end = scene.environment.timeRange.maximum;
    source.upAxis = UpAxis(scene);
    source.switcher = FromRecords::Track(scene.cameraMan.cameraIndex);
    for (const auto& camera : scene.cameras)
    {
        const auto index = static_cast<std::uint32_t>(source.cameras.size());
        CameraSource& added = source.cameras.emplace_back();
        added.node = kNone;
        if (!camera)
            continue; // keeps its place: the switcher counts it
        added = {FromRecords::Text(camera->name),
                 camera->value,
                 camera->inverseAspect,
                 FromRecords::Track(camera->distance),
                 FromRecords::Track(camera->fieldOfView),
                 FromRecords::Track(camera->clipRange)};
        AddProperties(camera->properties, {index, true}, FromRecords(), source);
    }
}

} // namespace TEV2_PLAYBACK
