#include "gltf/convert/from_objects.h"

#include "gltf/light.h"
#include "tev2_loader/tracks/linear_tracks.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

namespace tev2_gltf
{

using gltf::Place;
using namespace TEV2_LOADER;

namespace
{

constexpr double kAssumedAspect = 16.0 / 9.0;
constexpr double kAssumedAngle = 0.8; // radians, vertical
constexpr float kNoFarPlane = 3.4e38f;
constexpr std::size_t kTracks = 4 * TEV2_ANIMATABLE::kMostBytes;

/// Width over height.
double AspectOf(const FromContext& context, const gltf::Camera& camera, const Place& place)
{
    if (camera.aspect > 0.0)
        return camera.aspect;
    context.Report(Code::AspectAssumed, place, "16:9");
    return kAssumedAspect;
}

double VerticalAngleOf(const FromContext& context, const gltf::Camera& camera, const Place& place)
{
    if (camera.yfov > 0.0 && camera.yfov < std::numbers::pi)
        return camera.yfov;
    context.Report(Code::LensChanged, place, "its angle of view is not between 0 and 180 degrees");
    return kAssumedAngle;
}

std::unique_ptr<TEV2_CAMERA> MakeCamera(FromContext& context, const gltf::Camera& camera, const Place& place)
{
    context.budget.Take(sizeof(TEV2_CAMERA) + kTracks, place);
    auto record = std::make_unique<TEV2_CAMERA>();
    const double aspect = AspectOf(context, camera, place);
    const double angle = 2.0 * std::atan(aspect * std::tan(VerticalAngleOf(context, camera, place) / 2.0));
    record->inverseAspect = Single(1.0 / aspect, place);
    record->fieldOfView = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(Single(angle, place));
    const float begin = Single(camera.near_plane, place);
    const float end = camera.far_plane > 0.0 ? Single(camera.far_plane, place) : kNoFarPlane;
    record->clipRange = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({begin, end});
    context.ReportRest(camera.json, place, {}, false);
    context.ReadExtras(camera.json, place, record->properties);
    return record;
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> Constant(const std::optional<double>& number, const Place& place)
{
    return number ? ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(Single(*number, place)) : nullptr;
}

std::unique_ptr<TEV2_LIGHT> MakeOfType(const gltf::Light& light, const Place& place)
{
    if (light.type == gltf::LightType::Directional)
        return std::make_unique<TEV2_DIRECTIONAL_LIGHT>();
    if (light.type == gltf::LightType::Point)
    {
        auto point = std::make_unique<TEV2_POINT_LIGHT>();
        point->range = Constant(light.range, place);
        return point;
    }
    auto spot = std::make_unique<TEV2_SPOT_LIGHT>();
    spot->range = Constant(light.range, place);
    if (light.inner_cone || light.outer_cone)
        spot->cone = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(
            {Single(light.inner_cone.value_or(0.0), place),
             Single(light.outer_cone.value_or(std::numbers::pi / 4.0), place)});
    return spot;
}

std::unique_ptr<TEV2_LIGHT> MakeLight(FromContext& context, const gltf::Light& light, const Place& place)
{
    context.budget.Take(sizeof(TEV2_SPOT_LIGHT) + kTracks, place);
    std::unique_ptr<TEV2_LIGHT> record = MakeOfType(light, place);
    if (light.colour)
        record->colour = ConstantTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>(
            {Single((*light.colour)[0], place), Single((*light.colour)[1], place),
             Single((*light.colour)[2], place), 1.0f});
    record->intensity = Constant(light.intensity, place);
    context.ReportRest(light.json, place, {}, false);
    context.ReadExtras(light.json, place, record->properties);
    return record;
}

} // namespace

TEV2_WIDE_STRING ObjectName(FromContext& context, std::string_view name, std::size_t node)
{
    const Place place = context.document.PlaceOf("nodes", node);
    return context.WideText(name.empty() ? place.name : name, place);
}

void AddCameras(FromContext& context, const NodePlan& plan, TEV2& scene)
{
    for (const NodePlan::Entry& entry : plan.entries)
    {
        const gltf::Node node = context.document.NodeAt(entry.node);
        if (!node.camera || entry.is_light_child)
            continue;
        const gltf::Camera camera = context.document.CameraAt(*node.camera);
        const Place place = context.document.PlaceOf("cameras", *node.camera);
        if (camera.orthographic)
        {
            context.Report(Code::CameraLost, place, "orthographic");
            continue;
        }
        std::unique_ptr<TEV2_CAMERA> record = MakeCamera(context, camera, place);
        record->name = ObjectName(context, camera.name, entry.node);
        record->value = plan.RecordOf(entry.node);
        scene.cameras.push_back(std::move(record));
    }
}

void AddLights(FromContext& context, const NodePlan& plan, TEV2& scene)
{
    for (const NodePlan::Entry& entry : plan.entries)
    {
        const std::optional<std::size_t> light =
            entry.is_light_child ? std::nullopt : gltf::LightOfNode(context.document, entry.node);
        if (!light)
            continue;
        const gltf::Light source = gltf::LightAt(context.document, *light);
        std::unique_ptr<TEV2_LIGHT> record =
            MakeLight(context, source, gltf::PlaceOfLight(context.document, *light));
        record->name = ObjectName(context, source.name, entry.node);
        record->value = plan.light_record_of_node[entry.node];
        scene.lights.push_back(std::move(record));
    }
}

} // namespace tev2_gltf
