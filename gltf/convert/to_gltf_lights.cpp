#include "gltf/convert/to_gltf_lights.h"

#include "gltf/convert/to_gltf_extras.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <algorithm>
#include <map>
#include <numbers>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kLightInstances = 3;
constexpr const char* kExtension = "KHR_lights_punctual";

class LightWriter
{
public:
    LightWriter(ToGltfContext& context, const TEV2_LIGHT& light, const std::string& where)
        : context_(context), light_(light), where_(where), time_(context.RestTime())
    {
    }

    Json Write(const std::string& name)
    {
        constexpr const char* kTypes[] = {"point", "directional", "spot"};
        Json json = Named(name);
        json["type"] = kTypes[light_.GetType()];
        SetColour(json);
        SetIntensity(json);
        if (light_.GetType() == TEV2_POINT_LIGHT::kType)
            SetRange(json, static_cast<const TEV2_POINT_LIGHT&>(light_).range);
        if (light_.GetType() == TEV2_SPOT_LIGHT::kType)
            SetSpot(json, static_cast<const TEV2_SPOT_LIGHT&>(light_));
        if (light_.GetType() == TEV2_DIRECTIONAL_LIGHT::kType)
            Reduce(static_cast<const TEV2_DIRECTIONAL_LIGHT&>(light_).beam != nullptr, "its beam");
        if (light_.max)
            SetMax(json, *light_.max);
        Reduce(light_.shadow != nullptr, "its shadow");
        ReportMoves(light_.colour, light_.intensity, light_.on);
        SetExtras(context_, json, light_.properties, where_);
        return json;
    }

private:
    /// From `least` to `most`; reported where that is another value.
    float Clamped(float value, float least, float most, const char* what)
    {
        const float result = std::clamp(value, least, most);
        if (result != value)
            context_.report.Add(Code::ValueClamped, where_, std::string(what) + " is out of range");
        return result;
    }

    void Reduce(bool there, const char* what)
    {
        if (there)
            context_.report.Add(Code::LightReduced, where_, std::string(what) + " has no place in glTF");
    }

    template <typename... Tracks>
    void ReportMoves(const Tracks&... tracks)
    {
        if ((Moves(tracks) || ...))
            context_.report.Add(Code::AnimationLost, where_,
                                "it changes in time; its value at the start is kept");
    }

    void SetColour(Json& json)
    {
        if (!light_.colour)
            return;
        const TEV2_COLOUR colour = ValueAt(light_.colour, time_, {1.0f, 1.0f, 1.0f, 1.0f});
        const float most = std::max({colour.red, colour.green, colour.blue});
        if (most > 1.0f) // glTF has brightness in the intensity
        {
            context_.report.Add(Code::LightReduced, where_,
                                "its colour is brighter than white; its intensity has that");
            factor_ = most;
        }
        json["color"] = Json::array();
        for (const float component : {colour.red, colour.green, colour.blue})
            json["color"].push_back(
                gltf::FloatNumber(Clamped(component / factor_, 0.0f, 1.0f, "its colour")));
    }

    void SetIntensity(Json& json)
    {
        constexpr float kMost = std::numeric_limits<float>::max();
        const bool is_on = ValueAt(light_.on, time_, 1) != 0;
        Reduce(!is_on, "its switch, which is off,");
        if (is_on && !light_.intensity && factor_ == 1.0f)
            return;
        const float intensity = ValueAt(light_.intensity, time_, 1.0f) * factor_;
        json["intensity"] =
            is_on ? gltf::FloatNumber(Clamped(intensity, 0.0f, kMost, "its intensity")) : Json(0.0);
    }

    void SetRange(Json& json, const std::unique_ptr<TEV2_ANIMATABLE_FLOAT32>& range)
    {
        if (!range)
            return;
        ReportMoves(range);
        const float end = ValueAt(range, time_, 0.0f);
        if (end > 0.0f)
            json["range"] = gltf::FloatNumber(end);
        else
            context_.report.Add(Code::ValueDropped, where_, "its range is not above 0 and was left out");
    }

    void SetSpot(Json& json, const TEV2_SPOT_LIGHT& light)
    {
        constexpr auto kMost = static_cast<float>(std::numbers::pi / 2.0); // rounded up
        constexpr auto kDefault = static_cast<float>(std::numbers::pi / 4.0);
        constexpr float kLeast = 1e-4f;
        SetRange(json, light.range);
        ReportMoves(light.cone);
        const TEV2_FLOAT32_RANGE cone = ValueAt(light.cone, time_, {0.0f, kDefault});
        const float outer = Clamped(cone.maximum, kLeast, kMost, "its cone");
        const float inner = Clamped(cone.minimum, 0.0f, std::nextafter(outer, 0.0f), "its inner cone");
        json["spot"] = {
            {"innerConeAngle", gltf::FloatNumber(inner)},
            {"outerConeAngle", outer < kMost ? gltf::FloatNumber(outer) : Json(std::numbers::pi / 2.0)}};
    }

    void SetMax(Json& json, const TEV2_MAX_LIGHT_PARAMS& max)
    {
        context_.report.Add(Code::LightApproximated, where_,
                            "it is no physical light; its intensity is kept as it is");
        if (light_.GetType() != TEV2_DIRECTIONAL_LIGHT::kType && max.attenuation.farRange)
        {
            const float end = ValueAt(max.attenuation.farRange, time_, {}).maximum;
            if (end > 0.0f)
                json["range"] = gltf::FloatNumber(end);
        }
    }

    ToGltfContext& context_;
    const TEV2_LIGHT& light_;
    const std::string& where_;
    float time_;
    float factor_ = 1.0f;
};

bool IsKnown(const TEV2_LIGHT* light)
{
    return light != nullptr && light->IsTyped() && light->GetType() <= TEV2_SPOT_LIGHT::kType;
}

void Attach(ToGltfContext& context, GltfNodes& nodes, const TEV2_POSITIONAL_OBJECT& object,
            const std::string& where, std::size_t light)
{
    // The member is the object of extensions, of which a node has this one alone.
    const std::size_t node =
        nodes.Place(object.value, Exchange::NegateX, "extensions", NameFor(context, object, where), where);
    nodes.Members(node)["extensions"] = {{kExtension, {{"light", light}}}};
}

} // namespace

void ClaimLightNodes(const ToGltfContext& context, GltfNodes& nodes)
{
    const TEV2& scene = context.Scene();
    for (const auto& light : scene.lights)
        if (IsKnown(light.get()))
            nodes.Claim(light->value, Exchange::NegateX);
    for (const auto& instance : scene.instanceLists[kLightInstances])
        if (instance && instance->IsTyped() && instance->source < scene.lights.size() &&
            IsKnown(scene.lights[instance->source].get()))
            nodes.Claim(instance->value, Exchange::NegateX);
}

void WriteLights(ToGltfContext& context, GltfNodes& nodes)
{
    const TEV2& scene = context.Scene();
    std::map<std::size_t, std::size_t> written; // by index in the scene
    Json lights = Json::array();
    for (std::size_t i = 0; i < scene.lights.size(); ++i)
    {
        if (!IsKnown(scene.lights[i].get()))
            continue; // kept bodies are reported together
        const TEV2_LIGHT& light = *scene.lights[i];
        const std::string where = WhereOf("lights", i, light);
        written[i] = lights.size();
        lights.push_back(LightWriter(context, light, where).Write(NameFor(context, light, where)));
        Attach(context, nodes, light, where, written[i]);
    }
    const auto& instances = scene.instanceLists[kLightInstances];
    for (std::size_t i = 0; i < instances.size(); ++i)
    {
        if (!instances[i] || !instances[i]->IsTyped())
            continue;
        const std::string where = WhereOf("instanceLists[3]", i, *instances[i]);
        const auto source = written.find(instances[i]->source);
        if (source == written.end())
            context.report.Add(Code::RecordLost, where, "its source is no light that was converted");
        else
            Attach(context, nodes, *instances[i], where, source->second);
    }
    if (lights.empty())
        return;
    context.out.Root()["extensions"][kExtension]["lights"] = std::move(lights);
    context.out.UseExtension(kExtension);
}

} // namespace tev2_gltf
