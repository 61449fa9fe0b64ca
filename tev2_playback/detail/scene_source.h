#pragma once

#include "tev2_loader/tev2.h"
#include "tev2_playback/detail/clip_source.h"

#include <cstdint>

namespace TEV2_PLAYBACK
{

/// What a clip of a scene is made of. Refers to the scene.
ClipSource SourceOf(const TEV2_LOADER::TEV2& scene);

/// Adds what is not in the nodes: time range, up axis, switcher and cameras with their properties. Refers to the scene,
/// whose hierarchy may end after node 0.
void AddRest(const TEV2_LOADER::TEV2& scene, ClipSource& source);

/// What has properties: a node, or a camera.
struct PropertyOwner
{
    std::uint32_t index;
    bool isCamera;
};

/// Adds the properties of an owner: members named as those of TEV2_EXTENDED_PROPERTIES, of whose texts and tracks
/// `from` makes sources: from.Text(text), from.Track(track).
template <typename Properties, typename From>
void AddProperties(const Properties& properties, const PropertyOwner& owner, const From& from,
                   ClipSource& source)
{
    const auto add = [&](const auto& property) -> PropertySource&
    {
        PropertySource& added = source.properties.emplace_back();
        added.name = from.Text(property.name);
        added.owner = owner.index;
        added.ofCamera = owner.isCamera;
        return added;
    };
    const auto add_values = [&](const auto& values, std::uint32_t kind)
    {
        for (const auto& value : values)
        {
            TrackSource& track = add(value).track;
            track = from.Track(value.track);
            track.kind = kind;
        }
    };
    add_values(properties.intValues, TEV2_LOADER::kIntegerTrack);
    add_values(properties.floatValues, TEV2_LOADER::kFloatTrack);
    add_values(properties.vector3Values, TEV2_LOADER::kVector3Track);
    add_values(properties.vector4Values, TEV2_LOADER::kVector4Track);
    for (const auto& array : properties.stringArrays)
    {
        PropertySource& added = add(array);
        added.isTexts = true;
        added.texts.reserve(array.strings.size());
        for (const auto& text : array.strings)
            added.texts.push_back(from.Text(text));
    }
}

} // namespace TEV2_PLAYBACK
