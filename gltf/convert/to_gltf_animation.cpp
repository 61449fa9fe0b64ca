#include "gltf/convert/to_gltf_animation.h"

#include "gltf/convert/rotation_keys.h"
#include "gltf/key_track.h"

#include <algorithm>
#include <limits>
#include <set>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

constexpr auto kLatest = static_cast<float>(gltf::kLatestKey);

template <typename Value>
std::vector<float> Flat(const std::vector<Value>& values)
{
    std::vector<float> numbers;
    for (const Value& value : values)
        std::apply([&](const auto&... component) { (numbers.push_back(component), ...); },
                   value.Components());
    return numbers;
}

void Earliest(const TEV2_ANIMATABLE* track, float& earliest)
{
    if (track == nullptr || track->m_times.size() < 2)
        return;
    for (const float time : track->m_times)
        if (time < earliest && time >= -kLatest)
            earliest = time;
}

template <typename Targets>
void EarliestOfTargets(const Targets& meshes, float& earliest)
{
    for (const auto& mesh : meshes)
        if (mesh)
            for (const TEV2_MORPH_TARGET& target : mesh->targets)
                Earliest(target.track.get(), earliest);
}

} // namespace

double TimeShiftOf(const TEV2& scene)
{
    float earliest = 0.0f;
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        Earliest(node.translation.get(), earliest);
        Earliest(node.rotation.get(), earliest);
        Earliest(node.scale.get(), earliest);
    }
    EarliestOfTargets(scene.morphMeshes, earliest);
    EarliestOfTargets(scene.weightedMeshes, earliest);
    Earliest(scene.cameraMan.cameraIndex.get(), earliest);
    return -static_cast<double>(earliest);
}

GltfAnimation::GltfAnimation(ToGltfContext& context, std::size_t source, double shift)
    : context_(context),
      source_(source),
      shift_(shift),
      earliest_(std::numeric_limits<float>::infinity()),
      latest_(-earliest_)
{
}

void GltfAnimation::AddChannel(std::size_t node, const char* path, std::vector<float> times,
                               std::vector<float> values, const char* interpolation)
{
    DropFarKeys(node, times, values);
    if (times.empty())
        return;
    earliest_ = std::min(earliest_, times.front());
    latest_ = std::max(latest_, times.back());
    Channel channel{node, path, std::move(times), std::move(values), interpolation};
    if (!first_)
        first_ = std::move(channel);
    else
        WriteChannel(channel);
}

/// Keys that no reader of glTF here accepts, and those before the time 0.
void GltfAnimation::DropFarKeys(std::size_t node, std::vector<float>& times, std::vector<float>& values) const
{
    const auto from = std::ranges::lower_bound(times, 0.0f) - times.begin();
    const auto to = std::ranges::upper_bound(times, kLatest) - times.begin();
    const std::size_t dropped = times.size() - static_cast<std::size_t>(to - from);
    if (dropped == 0)
        return;
    const auto width = static_cast<std::ptrdiff_t>(values.size() / times.size());
    times = {times.begin() + from, times.begin() + to};
    values = {values.begin() + from * width, values.begin() + to * width};
    context_.report.Add(Code::KeyDropped, "nodes/" + std::to_string(node),
                        "a key beyond a million seconds was dropped", dropped);
}

void GltfAnimation::WriteChannel(const Channel& channel)
{
    const std::size_t width = channel.path == std::string_view("rotation")  ? 4
                              : channel.path == std::string_view("weights") ? 1
                                                                            : 3;
    Json sampler = {{"input", context_.out.AddTimes(channel.times)},
                    {"output", context_.out.AddFloats(channel.values, width, gltf::AccessorUse::Animation)}};
    if (channel.interpolation != std::string_view("LINEAR"))
        sampler["interpolation"] = channel.interpolation;
    channels_.push_back(
        {{"sampler", samplers_.size()}, {"target", {{"node", channel.node}, {"path", channel.path}}}});
    samplers_.push_back(std::move(sampler));
}

/// Players take the last key of all for the end of an animation, so one channel holds its ends for as long as the scene
/// lasts.
void GltfAnimation::CoverTimeRange(Channel& channel) const
{
    const TEV2_FLOAT32_RANGE& range = context_.sources[source_].scene.environment.timeRange;
    const auto start = Later(range.minimum, shift_);
    const auto end = Later(range.maximum, shift_);
    const auto width = static_cast<std::ptrdiff_t>(channel.values.size() / channel.times.size());
    if (start >= 0.0f && start < earliest_ && start < channel.times.front())
    {
        channel.times.insert(channel.times.begin(), start);
        const std::vector<float> held(channel.values.begin(), channel.values.begin() + width);
        channel.values.insert(channel.values.begin(), held.begin(), held.end());
    }
    if (end <= kLatest && end > latest_ && end > channel.times.back())
    {
        channel.times.push_back(end);
        const std::vector<float> held(channel.values.end() - width, channel.values.end());
        channel.values.insert(channel.values.end(), held.begin(), held.end());
    }
}

void GltfAnimation::AddWeights(std::size_t node, const std::vector<Keys<float>>& targets,
                               const std::vector<float>& rest)
{
    std::set<float> union_of_times;
    bool is_at_rest = true;
    for (std::size_t i = 0; i < targets.size(); ++i)
    {
        is_at_rest &= targets[i].IsConstant() && targets[i].values[0] == rest[i];
        if (!targets[i].IsConstant())
            union_of_times.insert(targets[i].times.begin(), targets[i].times.end());
    }
    if (is_at_rest)
        return;
    if (union_of_times.empty())
        union_of_times.insert(0.0f);
    const std::vector<float> times(union_of_times.begin(), union_of_times.end());
    context_.out.CheckRoom(times.size() * targets.size() * sizeof(float));
    std::vector<float> values(times.size() * targets.size());
    for (std::size_t target = 0; target < targets.size(); ++target)
    {
        const Keys<float>& keys = targets[target];
        std::size_t next = 0; // the first key after the time
        for (std::size_t i = 0; i < times.size(); ++i)
        {
            while (next < keys.times.size() && keys.times[next] <= times[i])
                ++next;
            float& value = values[i * targets.size() + target];
            if (next == 0 || next == keys.times.size())
                value = keys.values[next == 0 ? 0 : next - 1];
            else
            {
                const float fraction =
                    (times[i] - keys.times[next - 1]) / (keys.times[next] - keys.times[next - 1]);
                value = keys.values[next - 1] + (keys.values[next] - keys.values[next - 1]) * fraction;
            }
        }
    }
    AddChannel(node, "weights", times, std::move(values));
}

void GltfAnimation::AddNodes(const GltfNodes& nodes)
{
    for (std::size_t i = 0; i < nodes.SceneCount(); ++i)
        if (!nodes.IsVoid(i))
            AddNode(nodes, i);
}

/// A channel of a node that rests: the first one that has a transform.
void GltfAnimation::AddRest(const GltfNodes& nodes)
{
    std::size_t index = 0;
    while (index < nodes.SceneCount() && nodes.IsVoid(index))
        ++index;
    if (index == nodes.SceneCount())
        return;
    const TEV2_MATRIX_NODE& node = context_.sources[source_].scene.matrixHierarchy.nodes[index];
    const TEV2_VECTOR_3 place = ValueAt(node.translation, context_.RestTime(), TEV2_VECTOR_3{});
    AddChannel(index, "translation", {0.0f},
               Flat(std::vector<TEV2_VECTOR_3>{ToGltfTranslation(place, nodes.FrameOf(index, source_))}));
}

void GltfAnimation::AddNode(const GltfNodes& nodes, std::size_t index)
{
    const TEV2_MATRIX_NODE& node = context_.sources[source_].scene.matrixHierarchy.nodes[index];
    const TEV2_MATRIX_NODE& first = context_.Scene().matrixHierarchy.nodes[index];
    const std::string scene =
        context_.sources.size() > 1 ? context_.sources[source_].animation_name + ": " : std::string();
    const std::string where = scene + WhereOf("matrixHierarchy.nodes", index, node);
    const Frame frame = nodes.FrameOf(index, source_);
    const Frame first_frame = nodes.FrameOf(index);
    const float rest = context_.RestTime();

    Keys<TEV2_VECTOR_3> places =
        CleanKeys(node.translation, TEV2_VECTOR_3{}, shift_, where + ".translation", context_.report);
    for (TEV2_VECTOR_3& value : places.values)
        value = ToGltfTranslation(value, frame);
    if (!places.IsConstant() ||
        !(places.values.front() == ToGltfTranslation(ValueAt(first.translation, rest, {}), first_frame)))
        AddChannel(index, "translation", places.times, Flat(places.values));

    Keys<TEV2_QUATERNION> turns = RotationKeys(node.rotation, shift_, where + ".rotation", context_.report);
    for (TEV2_QUATERNION& value : turns.values)
        value = UnitRotation(ToGltfRotation(value, frame));
    if (!turns.IsConstant() ||
        !(turns.values.front() ==
          UnitRotation(ToGltfRotation(UnitRotation(ValueAt(first.rotation, rest, {})), first_frame))))
        AddChannel(index, "rotation", turns.times, Flat(turns.values));

    const TEV2_VECTOR_3 ones{1.0f, 1.0f, 1.0f};
    Keys<TEV2_VECTOR_3> scales = CleanKeys(node.scale, ones, shift_, where + ".scale", context_.report);
    if (!scales.IsConstant() || !(scales.values.front() == ValueAt(first.scale, rest, ones)))
    {
        for (TEV2_VECTOR_3& value : scales.values)
            value = ExchangedScale(value, frame.own);
        AddChannel(index, "scale", scales.times, Flat(scales.values));
    }
}

void GltfAnimation::Write(const GltfNodes& nodes)
{
    const TEV2_FLOAT32_RANGE& range = context_.sources[source_].scene.environment.timeRange;
    const bool lasts = range.maximum > 0.0f && range.maximum > range.minimum && std::isfinite(range.maximum);
    if (!first_ && (lasts || context_.sources.size() > 1))
        AddRest(nodes);
    if (!first_)
        return;
    CoverTimeRange(*first_);
    WriteChannel(*first_);
    Json animation = Named(context_.sources[source_].animation_name);
    animation["channels"] = std::move(channels_);
    animation["samplers"] = std::move(samplers_);
    context_.out.Append("animations", std::move(animation));
}

} // namespace tev2_gltf
