#include "gltf/convert/from_switcher.h"

#include "gltf/convert/to_gltf.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace tev2_gltf
{

using gltf::JsonValue;
using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kMostEntries = 4096; // that are searched

/// The entry of an animation: the one at its place, if it has its name, else the first of its name.
JsonValue EntryOf(JsonValue entries, std::size_t scene_index, std::string_view animation)
{
    const auto is_its = [&](JsonValue entry) { return entry["animation"].Text() == animation; };
    if (is_its(entries[scene_index]))
        return entries[scene_index];
    for (std::size_t i = 0; i < std::min(entries.Size(), kMostEntries); ++i)
    {
        if (is_its(entries[i]))
            return entries[i];
    }
    return entries.Size() == 1 ? entries[std::size_t{0}] : JsonValue{};
}

/// The first camera of each name, and -1 for no name.
std::map<std::string, std::int32_t, std::less<>> CamerasByName(const TEV2& scene)
{
    std::map<std::string, std::int32_t, std::less<>> cameras{{std::string(), -1}};
    for (std::size_t i = 0; i < scene.cameras.size(); ++i)
        cameras.try_emplace(Name(*scene.cameras[i]), static_cast<std::int32_t>(i));
    return cameras;
}

/// Null where the entry is damaged.
std::unique_ptr<TEV2_ANIMATABLE_INT32_RLE> SwitcherTrack(JsonValue entry, const TEV2& scene)
{
    auto track = std::make_unique<TEV2_ANIMATABLE_INT32_RLE>();
    const JsonValue times = entry["times"];
    if (times.Size() == 0 || entry["cameras"].Size() != times.Size())
        return nullptr;
    const auto cameras = CamerasByName(scene);
    for (std::size_t i = 0; i < times.Size(); ++i)
    {
        const auto time = static_cast<float>(times[i].Number().value_or(gltf::kLatestKey + 1.0));
        const auto camera = cameras.find(entry["cameras"][i].Text());
        if (camera == cameras.end() || !(std::abs(static_cast<double>(time)) <= gltf::kLatestKey) ||
            (i > 0 && !(time > track->m_times.back())))
            return nullptr;
        track->Append(time, camera->second);
    }
    return track;
}

} // namespace

bool IsSwitcherNode(const gltf::Document& document, std::size_t node)
{
    const JsonValue json = document.Root()["nodes"][node];
    return json["extras"].Find(kSwitcherExtra).Truth().value_or(false) &&
           json["name"].Text() == kSwitcherNode && json["camera"] && json["children"].Size() == 0 &&
           !json["mesh"];
}

void AddSwitcher(FromContext& context, std::size_t scene_index, std::string_view animation, TEV2& scene)
{
    const JsonValue entries = context.document.Scene()["extras"].Find(kSwitcherExtra);
    const JsonValue entry = EntryOf(entries, scene_index, animation);
    if (!entry)
        return;
    const gltf::Place place{"scenes", 0, context.document.Scene()["name"].Text()};
    context.budget.Take(entry["times"].Size(), sizeof(float) + sizeof(std::int32_t), place);
    auto track = SwitcherTrack(entry, scene);
    if (!track)
    {
        context.ReportMotion(Code::ExtrasLost, place, std::string(kSwitcherExtra));
        return;
    }
    TEV2_FLOAT32_RANGE& range = scene.environment.timeRange;
    range.minimum = std::min(range.minimum, track->m_times.front());
    range.maximum = std::max(range.maximum, track->m_times.back());
    scene.cameraMan.cameraIndex = std::move(track);
}

} // namespace tev2_gltf
