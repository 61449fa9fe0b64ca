#include "tev2_playback/detail/framed_source.h"

#include "tev2_playback/axes.h"

#include <cstddef>
#include <cstring>
#include <initializer_list>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kTranslationFloats = 3;
constexpr std::size_t kRotationFloats = 4;

/// Copies the values of a track to floats and negates some components of each.
float* CopyNegated(TrackSource& track, std::size_t floats, std::initializer_list<std::size_t> negated,
                   float* to)
{
    const std::size_t count = track.valueCount * floats;
    if (count == 0)
        return to;
    std::memcpy(to, track.values, count * sizeof(float));
    for (float* value = to; value != to + count; value += floats)
        for (const std::size_t component : negated)
            value[component] = -value[component];
    track.values = to;
    return to + count;
}

} // namespace

std::unique_ptr<float[]> MakeRightHandedYUp(ClipSource& source)
{
    std::size_t count = 0;
    for (const NodeSource& node : source.nodes)
        count +=
            kTranslationFloats * node.translation.valueCount + kRotationFloats * node.rotation.valueCount;
    auto keys = std::make_unique_for_overwrite<float[]>(count);
    float* to = keys.get();
    for (NodeSource& node : source.nodes)
    {
        to = CopyNegated(node.translation, kTranslationFloats, {2}, to);
        to = CopyNegated(node.rotation, kRotationFloats, {0, 1}, to);
        node.worldMatrix = MirroredInZ(node.worldMatrix);
    }
    if (source.upAxis == TEV2_UP_AXIS::PlusZ || source.upAxis == TEV2_UP_AXIS::MinusZ)
    {
        source.top = MirroredInZ(UpMatrix(source.upAxis));
        for (NodeSource& node : source.nodes)
            node.worldMatrix = Product(*source.top, node.worldMatrix);
    }
    return keys;
}

} // namespace TEV2_PLAYBACK
