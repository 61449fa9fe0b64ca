#include "tev2_playback/detail/scene_source.h"

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

const void* FirstNumber(const std::int32_t& value)
{
    return &value;
}

const void* FirstNumber(const float& value)
{
    return &value;
}

template <typename Value>
const void* FirstNumber(const Value& value)
{
    return &std::get<0>(value.Components());
}

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
                  using Value = typename decltype(values)::value_type;
                  if (!values.empty())
                      source.values = FirstNumber(values[0]);
                  source.valueStride = sizeof(Value);
                  source.valueCount = values.size();
              });
    return source;
}

template <typename List>
void AddValues(const List& list, std::uint32_t kind, PropertySource property, ClipSource& source)
{
    for (const auto& value : list)
    {
        property.name = value.name.Text();
        property.track = SourceOf(value.track);
        property.track.kind = kind;
        source.properties.push_back(property);
    }
}

void AddProperties(const TEV2_EXTENDED_PROPERTIES& properties, bool of_camera, std::size_t owner,
                   ClipSource& source)
{
    PropertySource property;
    property.owner = static_cast<std::uint32_t>(owner);
    property.ofCamera = of_camera;
    AddValues(properties.intValues, kIntegerTrack, property, source);
    AddValues(properties.floatValues, kFloatTrack, property, source);
    AddValues(properties.vector3Values, kVector3Track, property, source);
    AddValues(properties.vector4Values, kVector4Track, property, source);
    property.isTexts = true;
    for (const TEV2_NAMED_STRING_ARRAY& array : properties.stringArrays)
    {
        property.name = array.name.Text();
        property.texts.clear();
        for (const TEV2_WIDE_STRING& text : array.strings)
            property.texts.push_back(text.Text());
        source.properties.push_back(property);
    }
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
    for (std::size_t node = 0; node < scene.matrixHierarchy.nodes.size(); ++node)
        AddProperties(scene.matrixHierarchy.nodes[node].properties, false, node, source);
    for (const auto& camera : scene.cameras)
    {
        const std::size_t index = source.cameras.size();
        if (!camera)
        {
            source.cameras.emplace_back().node = kNone; // the switcher counts it
            continue;
        }
        AddProperties(camera->properties, true, index, source);
        source.cameras.push_back({camera->name.Text(), camera->value, camera->inverseAspect,
                                  SourceOf(camera->distance), SourceOf(camera->fieldOfView),
                                  SourceOf(camera->clipRange)});
    }
    source.switcher = SourceOf(scene.cameraMan.cameraIndex);
    return source;
}

} // namespace TEV2_PLAYBACK
