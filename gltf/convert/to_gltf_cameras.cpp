#include "gltf/convert/to_gltf_cameras.h"

#include "gltf/convert/to_gltf_extras.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <numbers>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kCameraInstances = 2;
constexpr double kDefaultFieldOfView = std::numbers::pi / 4.0;
constexpr float kEndlessFrom = 1e30f; // from there on no end is meant

class Lens
{
public:
    Lens(ToGltfContext& context, const TEV2_CAMERA& camera, const std::string& where)
        : context_(context), camera_(camera), where_(where)
    {
    }

    Json Perspective()
    {
        Json json = Json::object();
        const float time = context_.RestTime();
        const double inverse_aspect = InverseAspect();
        json["aspectRatio"] = Number(1.0 / inverse_aspect);
        json["yfov"] = Number(
            FieldOfView(static_cast<double>(ValueAt(camera_.fieldOfView, time, 0.0f)), inverse_aspect));
        const TEV2_FLOAT32_RANGE clip =
            ValueAt(camera_.clipRange, time, {0.1f, std::numeric_limits<float>::infinity()});
        float near_plane = clip.minimum;
        if (!(near_plane > 0.0f))
        {
            near_plane = 0.01f;
            Changed("the near plane at " + std::to_string(clip.minimum) + " m is now at 0.01 m");
        }
        if (clip.maximum < kEndlessFrom && !(clip.maximum > near_plane))
            Changed("the far plane at " + std::to_string(clip.maximum) +
                    " m, not beyond the near one, was left out");
        else if (clip.maximum < kEndlessFrom)
            json["zfar"] = gltf::FloatNumber(clip.maximum);
        json["znear"] = gltf::FloatNumber(near_plane);
        return json;
    }

private:
    static Json Number(double value) { return gltf::FloatNumber(static_cast<float>(value)); }

    void Changed(const std::string& what) { context_.report.Add(Code::LensChanged, where_, what); }

    double InverseAspect()
    {
        constexpr float kLeast = 1e-4f;
        const float found = camera_.inverseAspect;
        if (found >= kLeast && found <= 1.0f / kLeast)
            return static_cast<double>(found);
        Changed("a picture cannot be " + std::to_string(found) + " times as high as wide; 16:9 was taken");
        return 9.0 / 16.0;
    }

    double FieldOfView(double across, double inverse_aspect)
    {
        constexpr double kLeast = 1e-4;
        if (!camera_.fieldOfView)
            across = kDefaultFieldOfView;
        const double usable = std::clamp(across, kLeast, std::numbers::pi - kLeast);
        if (usable != across || !camera_.fieldOfView)
            Changed(camera_.fieldOfView ? "a field of view of " + std::to_string(across) + " rad became " +
                                              std::to_string(usable)
                                        : "it has no field of view and got one of 45 degrees");
        return 2.0 * std::atan(inverse_aspect * std::tan(usable / 2.0));
    }

    ToGltfContext& context_;
    const TEV2_CAMERA& camera_;
    const std::string& where_;
};

void ReportCamera(ToGltfContext& context, const TEV2_CAMERA& camera, const std::string& where)
{
    if (Moves(camera.fieldOfView) || Moves(camera.clipRange))
        context.report.Add(Code::LensAnimationLost, where, "its lens moves; the value at the start is kept");
    std::string left_out;
    const auto leave = [&](bool there, const char* what)
    {
        if (there)
            left_out += (left_out.empty() ? "" : ", ") + std::string(what);
    };
    leave(camera.distance != nullptr, "distance");
    leave(camera.secondaryRange != nullptr, "second range");
    leave(!camera.effects.empty() || camera.keptEffects.count > 0, "effects");
    if (!left_out.empty())
        context.report.Add(Code::CameraReduced, where, "without its " + left_out);
}

} // namespace

void ClaimCameraNodes(const ToGltfContext& context, GltfNodes& nodes)
{
    for (const auto& camera : context.Scene().cameras)
        if (camera)
            nodes.Claim(camera->value, Exchange::NegateZ);
    for (const auto& instance : context.Scene().instanceLists[kCameraInstances])
        if (instance && instance->IsTyped() && instance->source < context.Scene().cameras.size())
            nodes.Claim(instance->value, Exchange::NegateZ);
}

CameraIndices WriteCameras(ToGltfContext& context, GltfNodes& nodes)
{
    const TEV2& scene = context.Scene();
    CameraIndices written;
    const auto attach =
        [&](const TEV2_POSITIONAL_OBJECT& object, const std::string& where, std::size_t camera)
    {
        const std::size_t node =
            nodes.Place(object.value, Exchange::NegateZ, "camera", NameFor(context, object, where), where);
        nodes.Members(node)["camera"] = camera;
    };
    for (std::size_t i = 0; i < scene.cameras.size(); ++i)
    {
        if (!scene.cameras[i])
            continue;
        const TEV2_CAMERA& camera = *scene.cameras[i];
        const std::string where = WhereOf("cameras", i, camera);
        Json json = Named(NameFor(context, camera, where));
        json["type"] = "perspective";
        json["perspective"] = Lens(context, camera, where).Perspective();
        SetExtras(context, json, camera.properties, where);
        written[i] = {context.out.Append("cameras", std::move(json)), camera.value};
        attach(camera, where, written[i].camera);
        ReportCamera(context, camera, where);
    }
    const auto& instances = scene.instanceLists[kCameraInstances];
    for (std::size_t i = 0; i < instances.size(); ++i)
    {
        if (!instances[i] || !instances[i]->IsTyped())
            continue;
        const std::string where = WhereOf("instanceLists[2]", i, *instances[i]);
        if (const auto source = written.find(instances[i]->source); source != written.end())
            attach(*instances[i], where, source->second.camera);
        else
            context.report.Add(Code::RecordLost, where, "its source is no camera");
    }
    return written;
}

} // namespace tev2_gltf
