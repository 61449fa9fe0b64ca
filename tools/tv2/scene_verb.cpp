#include "exporter/sampling/sampling_range.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/notes.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "host/import/formats.h"
#include "host/import/scene_import.h"

#include <mobu_host/scene.h>

#include <iomanip>
#include <memory>
#include <string>
#include <vector>

namespace tv2
{

namespace
{

struct SceneVerbOptions
{
    std::string scene;
    double scene_rate = 0.0; ///< frames a second; 0: the scene's own
};

std::string TypeOf(FBModel& model)
{
    if (model.Is(FBCameraSwitcher::TypeInfo))
    {
        return "camera switcher";
    }
    return model.Is(FBCamera::TypeInfo) ? "camera" : "model";
}

Json Numbers(FBProperty& property, int count)
{
    double values[4] = {};
    property.GetData(values, static_cast<int>(sizeof(double)) * count);
    Json list = Json::array();
    for (int i = 0; i < count; ++i)
    {
        list.push_back(values[i]);
    }
    return list;
}

Json ValueOf(FBProperty& property)
{
    switch (property.GetPropertyType())
    {
    case kFBPT_bool:
        return property.AsInt() != 0;
    case kFBPT_int:
    case kFBPT_enum:
        return property.AsInt();
    case kFBPT_double:
        return Numbers(property, 1).front();
    case kFBPT_Vector2D:
        return Numbers(property, 2);
    case kFBPT_Vector3D:
    case kFBPT_ColorRGB:
        return Numbers(property, 3);
    case kFBPT_Vector4D:
    case kFBPT_ColorRGBA:
        return Numbers(property, 4);
    default:
        return TextOf(property.AsString());
    }
}

const char* KindOf(FBProperty& property)
{
    switch (property.GetPropertyType())
    {
    case kFBPT_bool:
        return "bool";
    case kFBPT_int:
        return "int";
    case kFBPT_double:
        return "double";
    case kFBPT_charptr:
        return "text";
    case kFBPT_enum:
        return "enum";
    case kFBPT_Vector3D:
        return "vector";
    case kFBPT_ColorRGB:
        return "colour";
    case kFBPT_ColorRGBA:
        return "colour with alpha";
    default:
        return property.GetPropertyTypeName();
    }
}

Json PropertiesOf(FBComponent& owner)
{
    Json list = Json::array();
    for (int i = 0; i < owner.PropertyList.GetCount(); ++i)
    {
        FBProperty* property = owner.PropertyList[i];
        if (property == nullptr || !property->IsUserProperty())
        {
            continue;
        }
        Json entry = {{"name", TextOf(property->GetName())},
                      {"kind", TextOf(KindOf(*property))},
                      {"value", ValueOf(*property)}};
        if (property->GetPropertyType() == kFBPT_enum)
        {
            entry["items"] = Json::array();
            for (int item = 0; const char* text = property->EnumList(item); ++item)
            {
                entry["items"].push_back(text);
            }
        }
        list.push_back(std::move(entry));
    }
    return list;
}

Json LensOf(FBCamera& camera)
{
    static constexpr const char* kApertureModes[] = {"vertical", "horizontal", "vertical and horizontal",
                                                     "focal length"};
    const int mode = camera.ApertureMode.AsInt();
    return {{"orthogonal", camera.Type.AsInt() == kFBCameraTypeOrthogonal},
            {"apertureMode", mode >= 0 && mode < 4 ? kApertureModes[mode] : "unknown"},
            {"fieldOfView", static_cast<double>(camera.FieldOfView)},
            {"aspect", static_cast<double>(camera.FilmAspectRatio)},
            {"near", static_cast<double>(camera.NearPlaneDistance)},
            {"far", static_cast<double>(camera.FarPlaneDistance)}};
}

Json DescribeTakes()
{
    const double rate = FBPlayerControl().GetTransportFpsValue();
    FBTake* const current = FBSystem().CurrentTake;
    Json list = Json::array();
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    for (int i = 0; i < takes.GetCount(); ++i)
    {
        FBTake& take = *takes[i];
        const FBTimeSpan span = take.LocalTimeSpan;
        const double start = span.GetStart().GetSecondDouble();
        const double stop = span.GetStop().GetSecondDouble();
        list.push_back({{"name", TextOf(take.Name)},
                        {"current", &take == current},
                        {"start", start},
                        {"end", stop},
                        {"startFrame", tev2_exporter::FrameAt(start, rate)},
                        {"endFrame", tev2_exporter::FrameAt(stop, rate)}});
    }
    return list;
}

Json DescribeModel(FBModel& model)
{
    FBVector3d place;
    model.GetVector(place, kModelTranslation, true);
    FBModel* const parent = model.Parent;
    Json entry = {{"name", TextOf(model.LongName)},
                  {"type", TypeOf(model)},
                  {"parent", parent != nullptr ? Json(TextOf(parent->LongName)) : Json()},
                  {"position", {place[0], place[1], place[2]}}};
    if (model.Is(FBCamera::TypeInfo))
    {
        entry["lens"] = LensOf(static_cast<FBCamera&>(model));
    }
    entry["properties"] = PropertiesOf(model);
    return entry;
}

/// Everything that the host sees of the scene that is open, in the order of its lists.
Json DescribeScene(const std::string& path, const std::vector<std::string>& notes)
{
    Json json = {{"file", path},
                 {"transportRate", FBPlayerControl().GetTransportFpsValue()},
                 {"takes", DescribeTakes()},
                 {"models", Json::array()},
                 {"systemCameras", Json::array()},
                 {"switcher", FBFindModelByLabelName("Camera Switcher") != nullptr},
                 {"constraints", Json::array()},
                 {"notes", notes}};
    for (FBModel* model : mobu_host::ModelsInPreOrder())
    {
        json["models"].push_back(DescribeModel(*model));
    }
    FBPropertyListCamera& cameras = mobu_host::Scene().Cameras;
    for (int i = 0; i < cameras.GetCount(); ++i)
    {
        if (cameras[i]->SystemCamera)
        {
            json["systemCameras"].push_back(TextOf(cameras[i]->LongName));
        }
    }
    FBPropertyListConstraint& constraints = mobu_host::Scene().Constraints;
    for (int i = 0; i < constraints.GetCount(); ++i)
    {
        json["constraints"].push_back({{"name", TextOf(constraints[i]->Name)},
                                       {"type", TextOf(constraints[i]->Description)},
                                       {"active", static_cast<bool>(constraints[i]->Active)},
                                       {"solved", mobu_host::HasEffect(*constraints[i])}});
    }
    return json;
}

std::string Short(const Json& value)
{
    if (value.is_number_float())
    {
        return ShortNumber(value.get<double>());
    }
    if (value.is_array())
    {
        std::string list;
        for (const Json& element : value)
        {
            list += (list.empty() ? "" : ", ") + Short(element);
        }
        return "(" + list + ")";
    }
    return value.is_string() ? '"' + OneLine(value.get<std::string>()) + '"' : value.dump();
}

void PrintProperties(std::ostream& out, const Json& properties, const std::string& indent)
{
    for (const Json& property : properties)
    {
        out << indent << ". " << OneLine(property["name"].get<std::string>()) << " = "
            << Short(property["value"]) << "  " << property["kind"].get<std::string>();
        if (property.contains("items"))
        {
            out << " of " << Short(property["items"]);
        }
        out << '\n';
    }
}

void PrintModels(std::ostream& out, const Json& models)
{
    std::vector<std::string> path; // long names from the root down to the model before
    for (const Json& model : models)
    {
        while (!path.empty() && model["parent"] != path.back())
        {
            path.pop_back();
        }
        const std::string indent(2 + 2 * path.size(), ' ');
        const std::string name = model["name"].get<std::string>();
        out << indent << OneLine(name);
        if (model["type"] != "model")
        {
            out << "  [" << model["type"].get<std::string>() << ']';
        }
        out << '\n';
        if (model.contains("lens"))
        {
            const Json& lens = model["lens"];
            out << indent << "  " << (lens["orthogonal"].get<bool>() ? "orthogonal, " : "")
                << "field of view " << Short(lens["fieldOfView"]) << " degrees ("
                << lens["apertureMode"].get<std::string>() << "), aspect " << Short(lens["aspect"]) << ", "
                << Short(lens["near"]) << " to " << Short(lens["far"]) << " cm\n";
        }
        PrintProperties(out, model["properties"], indent + "  ");
        path.push_back(name);
    }
}

void PrintScene(std::ostream& out, const Json& scene)
{
    out << Printable(scene["file"].get<std::string>()) << "\ntransport rate " << Short(scene["transportRate"])
        << " frames a second\n";
    out << CountOf(scene["takes"].size(), "take", "takes") << '\n';
    for (const Json& take : scene["takes"])
    {
        out << "  " << OneLine(take["name"].get<std::string>()) << "  " << Short(take["start"]) << " to "
            << Short(take["end"]) << " s, frames " << Short(take["startFrame"]) << " to "
            << Short(take["endFrame"]) << (take["current"].get<bool>() ? "  (current)" : "") << '\n';
    }
    out << CountOf(scene["models"].size() - 1, "model", "models") << " below the root\n";
    PrintModels(out, scene["models"]);
    out << CountOf(scene["systemCameras"].size(), "system camera", "system cameras") << ", "
        << (scene["switcher"].get<bool>() ? "a" : "no") << " camera switcher\n";
    out << CountOf(scene["constraints"].size(), "constraint", "constraints") << '\n';
    for (const Json& constraint : scene["constraints"])
    {
        out << "  " << OneLine(constraint["name"].get<std::string>());
        if (const auto type = constraint["type"].get<std::string>(); !type.empty())
        {
            out << "  " << OneLine(type);
        }
        out << (constraint["active"].get<bool>() ? "" : "  (inactive)")
            << (constraint["solved"].get<bool>() ? "" : "  (not solved)") << '\n';
    }
    PrintNotes(out, scene["notes"].get<std::vector<std::string>>(), OutputColumns());
}

} // namespace

void RunScene(const SceneVerbOptions& options, VerbContext& context)
{
    mobu_host::ImportOptions import;
    import.scene_rate = options.scene_rate;
    const mobu_host::SceneImportResult result = mobu_host::ImportScene(options.scene, import);
    if (!result.ok)
    {
        return context.Fail(options.scene, result.error, kExitCouldNotRun);
    }
    const Json scene = DescribeScene(options.scene, result.notes);
    if (context.json)
    {
        context.out << JsonAnswer(scene);
        return;
    }
    PrintScene(context.out, scene);
}

namespace
{

class SceneVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            SceneFileOption(options_.scene),
            SceneRateOption(options_.scene_rate),
        };
    }

    void Run(VerbContext& context) override { RunScene(options_, context); }

private:
    SceneVerbOptions options_;
};

const std::string kSceneHelp = "What is in a scene file (" + mobu_host::ReadableFormats(", ") + ")";

const VerbRegistration kSceneVerb({
    .name = "scene",
    .place = 2,
    .help = kSceneHelp,
    .examples = "tv2 scene walk.bvh\n"
                "tv2 scene --json robot.glb | jq '.takes[].name'",
    .json_help = "Print JSON; positions are those of the first frame, in centimetres",
    .make = Make<SceneVerb>,
});

} // namespace

} // namespace tv2
