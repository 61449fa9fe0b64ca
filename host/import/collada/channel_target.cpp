#include "host/import/collada/channel_target.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace mobu_host::collada
{
namespace
{

// "rotateX.ANGLE" may be a sid with a dot, or a member of "rotateX".
std::array<std::pair<std::string_view, std::string_view>, 2> ReadingsOf(std::string_view text)
{
    const std::size_t bracket = text.find('(');
    if (bracket != std::string_view::npos)
        return {{{text.substr(0, bracket), text.substr(bracket)}, {text, {}}}};
    const std::size_t dot = text.rfind('.');
    if (dot != std::string_view::npos)
        return {{{text, {}}, {text.substr(0, dot), text.substr(dot + 1)}}};
    return {{{text, {}}, {text, {}}}};
}

std::string_view TakeSegment(std::string_view& path)
{
    const std::string_view segment = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(segment.size() + 1, path.size()));
    return segment;
}

ChannelTarget FindInNode(const DocumentIndex& index, std::uint32_t node, std::string_view path)
{
    std::string_view segment = TakeSegment(path);
    for (; !path.empty() && node != kNone; segment = TakeSegment(path))
        node = index.FindChild(node, segment);
    ChannelTarget found;
    for (const auto& [sid, member] : ReadingsOf(segment))
    {
        if (const std::optional<TransformPlace> place = index.FindTransform(node, sid))
        {
            found.node = place->node;
            found.transform = place->transform;
            found.member = member;
            break;
        }
    }
    return found;
}

} // namespace

ChannelTarget FindTarget(const DocumentIndex& index, std::string_view target)
{
    std::string_view path = target;
    const std::string_view id = TakeSegment(path);
    if (const std::uint32_t* const node = index.node_ids.Find(id))
    {
        const ChannelTarget found = FindInNode(index, *node, path);
        if (found.node != kNone)
            return found;
    }
    ChannelTarget found;
    if (const Element* const camera = index.cameras.Find(id))
    {
        found.camera = *camera;
        found.lens_sid = path;
    }
    return found;
}

} // namespace mobu_host::collada
