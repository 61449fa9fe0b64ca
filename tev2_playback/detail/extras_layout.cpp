#include "tev2_playback/detail/extras_layout.h"

#include <algorithm>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

/// Numbers of 4 bytes in a value of the kinds of tracks that cameras and properties have.
std::uint32_t WordsOf(std::uint32_t kind)
{
    switch (kind)
    {
    case kRangeTrack:
        return 2;
    case kVector3Track:
        return 3;
    case kVector4Track:
        return 4;
    default:
        return 1;
    }
}

PropertyType TypeOf(const PropertySource& property)
{
    if (property.isTexts)
        return PropertyType::Texts;
    switch (property.track.kind)
    {
    case kIntegerTrack:
        return PropertyType::Int;
    case kVector3Track:
        return PropertyType::Vector3;
    case kVector4Track:
        return PropertyType::Vector4;
    default:
        return PropertyType::Float;
    }
}

} // namespace

ExtrasLayout::ExtrasLayout(const ClipSource& source, ClockTable& clocks)
    : source_(source),
      clocks_(clocks),
      camera_names_(source.cameras.size()),
      property_names_(source.properties.size())
{
    for (const CameraSource& camera : source.cameras)
        AddCamera(camera);
    switcher_ = AddChannel(source.switcher, kIntegerTrack);
    for (const PropertySource& property : source.properties)
        AddProperty(property);
}

void ExtrasLayout::AddCamera(const CameraSource& camera)
{
    camera_names_.Add(camera.name);
    cameras_.push_back({camera.node < source_.nodes.size() ? camera.node : kNone, camera.inverseAspect,
                        AddChannel(camera.distance, kFloatTrack), AddChannel(camera.fieldOfView, kFloatTrack),
                        AddChannel(camera.clipRange, kRangeTrack)});
}

void ExtrasLayout::AddProperty(const PropertySource& property)
{
    property_names_.Add(property.name);
    PropertyData data{property.owner, property.ofCamera, TypeOf(property), kNone, 0};
    if (property.isTexts)
    {
        data.first = text_count_;
        data.count = static_cast<std::uint32_t>(property.texts.size());
        text_count_ += data.count;
        for (const std::u16string_view text : property.texts)
            texts_.Add(text);
    }
    else
        data.first = AddChannel(property.track, property.track.kind);
    properties_.push_back(data);
}

/// None for a track that is absent, or whose kind is another than its place takes.
std::uint32_t ExtrasLayout::AddChannel(const TrackSource& track, std::uint32_t kind)
{
    if (!track.present || track.kind != kind)
        return kNone;
    const bool moves = track.times.size() >= 2 && track.valueCount >= 2;
    channels_.push_back(
        {kind, moves ? clocks_.Add(track.times) : kNone, IndexOf(words_), IndexOf(track.valueCount)});
    tracks_.push_back(&track);
    words_ += track.valueCount * WordsOf(kind);
    return static_cast<std::uint32_t>(channels_.size() - 1);
}

void ExtrasLayout::TakeArrays(BlockPlan& plan, ExtrasData& data) const
{
    data.cameras = plan.Take<CameraData>(cameras_.size());
    camera_names_.TakeArrays(plan, data.cameraNames);
    data.properties = plan.Take<PropertyData>(properties_.size());
    property_names_.TakeArrays(plan, data.propertyNames);
    texts_.TakeArrays(plan, data.texts);
    data.channels = plan.Take<Channel>(channels_.size());
    data.words = plan.Take<std::uint32_t>(words_);
}

void ExtrasLayout::Fill(ExtrasData& data) const
{
    std::ranges::copy(cameras_, data.cameras.begin());
    camera_names_.Fill(data.cameraNames);
    data.switcher = switcher_;
    std::ranges::copy(properties_, data.properties.begin());
    property_names_.Fill(data.propertyNames);
    texts_.Fill(data.texts);
    std::ranges::copy(channels_, data.channels.begin());
    std::uint32_t* to = data.words.data();
    for (std::size_t channel = 0; channel < channels_.size(); ++channel)
    {
        const TrackSource& track = *tracks_[channel];
        const std::uint32_t words = WordsOf(track.kind);
        const auto* from = static_cast<const std::byte*>(track.values);
        for (std::size_t value = 0; value < track.valueCount; ++value, to += words, from += track.valueStride)
            std::memcpy(to, from, words * sizeof *to);
    }
}

} // namespace TEV2_PLAYBACK
