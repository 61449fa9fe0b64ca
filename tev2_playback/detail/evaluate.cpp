#include "tev2_playback/detail/evaluate.h"

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

void TurnAlongArcs(const Float4 (&open)[4], const Float4 (&close)[4], Float4 dot, Float4 fraction,
                   unsigned straight, Float4 (&turned)[4])
{
    struct Lanes
    {
        float component[4][4];
    };
    const auto stored = [](const Float4(&components)[4])
    {
        Lanes lanes;
        for (int component = 0; component < 4; ++component)
            components[component].Store(lanes.component[component]);
        return lanes;
    };
    const auto rotation = [](const Lanes& lanes, int lane)
    {
        return TEV2_QUATERNION{lanes.component[0][lane], lanes.component[1][lane], lanes.component[2][lane],
                               lanes.component[3][lane]};
    };
    const Lanes from = stored(open);
    const Lanes to = stored(close);
    Lanes out = stored(turned);
    float dots[4];
    float fractions[4];
    dot.Store(dots);
    fraction.Store(fractions);
    for (int lane = 0; lane < 4; ++lane)
    {
        if ((straight & 1u << lane) != 0)
            continue;
        const TEV2_QUATERNION arc =
            AlongArc(rotation(from, lane), rotation(to, lane), dots[lane], fractions[lane]);
        out.component[0][lane] = arc.x;
        out.component[1][lane] = arc.y;
        out.component[2][lane] = arc.z;
        out.component[3][lane] = arc.w;
    }
    for (int component = 0; component < 4; ++component)
        turned[component] = Float4::Load(out.component[component]);
}

Transform Evaluation::Alone(const LoneNode& node) const
{
    const auto value = [this]<typename Value>(std::uint32_t index, Value absent, const auto& interpolate)
    {
        if (index == kNobody)
            return absent;
        const Channel& channel = skeleton_.channels[index];
        const ChannelValues<Value> values{skeleton_.words.data() + channel.values, channel.count};
        const Place place = channel.clock == kNobody ? Place() : places_[channel.clock];
        return ValueAt<Value>(values, place, interpolate);
    };
    Transform transform;
    transform.translation = value(node.translation, transform.translation, Linear());
    transform.scale = value(node.scale, transform.scale, Linear());
    const std::uint32_t kind = node.rotation == kNobody ? 0 : skeleton_.channels[node.rotation].kind;
    transform.rotation = value(node.rotation, transform.rotation, Turning{kind});
    return transform;
}

} // namespace TEV2_PLAYBACK
