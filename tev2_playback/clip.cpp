#include "tev2_playback/clip.h"

#include "tev2_playback/detail/clip_builder.h"
#include "tev2_playback/detail/clip_data.h"
#include "tev2_playback/detail/scene_source.h"

#include <algorithm>
#include <utility>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

Clip::Clip(const TEV2& scene, const ClipOptions& options) : Clip(SourceOf(scene), options) {}

Clip::Clip(ClipSource source, const ClipOptions& options) : block_(BuildClip(std::move(source), options)) {}

std::size_t Clip::NodeCount() const
{
    return Data().skeleton.parents.size();
}

int Clip::Parent(std::size_t node) const
{
    return Data().skeleton.parents[node];
}

std::string_view Clip::NodeName(std::size_t node) const
{
    return Data().nodeNames[node];
}

int Clip::FindNode(std::string_view utf8_name) const
{
    return Data().nodeNames.Find(utf8_name);
}

TEV2_UP_AXIS Clip::UpAxis() const
{
    return Data().upAxis;
}

Frame Clip::WorldFrame() const
{
    return Data().frame;
}

std::size_t Clip::CameraCount() const
{
    return Data().extras.cameras.size();
}

std::string_view Clip::CameraName(std::size_t camera) const
{
    return Data().extras.cameraNames[camera];
}

int Clip::CameraNode(std::size_t camera) const
{
    const std::uint32_t node = Data().extras.cameras[camera].node;
    return node == kNone ? -1 : static_cast<int>(node);
}

int Clip::FindCamera(std::string_view utf8_name) const
{
    return Data().extras.cameraNames.Find(utf8_name);
}

std::size_t Clip::PropertyCount() const
{
    return Data().extras.properties.size();
}

PropertyInfo Clip::PropertyAt(std::size_t index) const
{
    const PropertyData& property = Data().extras.properties[index];
    return {Data().extras.propertyNames[index], {property.ofCamera, property.owner}, property.type};
}

std::uint32_t Clip::FindProperty(Owner owner, std::string_view utf8_name, PropertyType type) const
{
    const auto properties = Data().extras.properties;
    const std::pair wanted{owner.isCamera, owner.index};
    const auto comes_before = [&wanted](const PropertyData& property) {
        return std::pair<bool, std::size_t>{property.ofCamera, property.owner} < wanted;
    };
    const auto first = std::partition_point(properties.begin(), properties.end(), comes_before);
    for (auto index = static_cast<std::size_t>(first - properties.begin()); index < properties.size();
         ++index)
    {
        const PropertyInfo info = PropertyAt(index);
        if (info.owner != owner)
            break;
        if (info.type == type && info.name == utf8_name)
            return static_cast<std::uint32_t>(index);
    }
    return kNone;
}

std::size_t Clip::TextCount(Property<Texts> property) const
{
    const auto properties = Data().extras.properties;
    return property.index < properties.size() ? properties[property.index].count : 0;
}

std::string_view Clip::Text(Property<Texts> property, std::size_t index) const
{
    return Data().extras.texts[Data().extras.properties[property.index].first + index];
}

TEV2_FLOAT32_RANGE Clip::TimeRange() const
{
    return {Data().begin, Data().end};
}

} // namespace TEV2_PLAYBACK
