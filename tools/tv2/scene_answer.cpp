#include "tools/tv2/scene_answer.h"

#include "exporter/sampling/sampling_range.h"
#include "tools/tv2/text.h"

#include <mobu_host/scene.h>

namespace tv2
{

namespace
{

std::string TypeOf(FBModel& model)
{
    if (model.Is(FBCameraSwitcher::TypeInfo))
        return "camera switcher";
    return model.Is(FBCamera::TypeInfo) ? "camera" : "model";
}

Json Numbers(FBProperty& property, int count)
{
    double values[4] = {};
    property.GetData(values, static_cast<int>(sizeof(double)) * count);
    Json list = Json::array();
    for (int i = 0; i < count; ++i)
        list.push_back(values[i]);
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
            continue;
        Json entry = {{"name", TextOf(property->GetName())},
                      {"kind", TextOf(KindOf(*property))},
                      {"value", ValueOf(*property)}};
        if (property->GetPropertyType() == kFBPT_enum)
        {
            entry["items"] = Json::array();
            for (int item = 0; const char* text = property->EnumList(item); ++item)
                entry["items"].push_back(text);
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
        entry["lens"] = LensOf(static_cast<FBCamera&>(model));
    entry["properties"] = PropertiesOf(model);
    return entry;
}

} // namespace

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
        json["models"].push_back(DescribeModel(*model));
    FBPropertyListCamera& cameras = mobu_host::Scene().Cameras;
    for (int i = 0; i < cameras.GetCount(); ++i)
        if (cameras[i]->SystemCamera)
            json["systemCameras"].push_back(TextOf(cameras[i]->LongName));
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

} // namespace tv2
