#include "tev2_playback/clip.h"

#include "tev2_playback/detail/clip_builder.h"
#include "tev2_playback/detail/clip_data.h"
#include "tev2_playback/detail/scene_source.h"

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

Clip::Clip(const TEV2& scene, const ClipOptions& options) : block_(BuildClip(SourceOf(scene), options)) {}

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

int Clip::Find(std::string_view utf8_name) const
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

TEV2_FLOAT32_RANGE Clip::TimeRange() const
{
    return {Data().begin, Data().end};
}

} // namespace TEV2_PLAYBACK
