// Builds a scene with something of everything that the exporter reads, and exports it in several ways:
//     export_rich_scene PLUGIN FOLDER
// The scene is made of plain arithmetic alone, so that it is the same on every system; what differs between the files
// of two systems comes from the exporter or from the host's own evaluation.

#include "mobu_host/plugin.h"
#include "mobu_host/scene.h"

#include <cstdio>
#include <string>

namespace
{

using namespace mobu_host;

// Swings between -1 and 1, smooth but never the same, with fractions that no decimal ends.
double Wave(double seconds, int phase)
{
    const double x = seconds * 0.7 + phase / 3.0;
    const double fraction = x - static_cast<double>(static_cast<long long>(x));
    return 16.0 * fraction * (1.0 - fraction) * (0.5 - fraction) + (phase % 5) / 7.0;
}

FBVector3d Waves(double seconds, int phase, double size)
{
    return {size * Wave(seconds, phase), size * Wave(seconds, phase + 1), size * Wave(seconds, phase + 2)};
}

void Animate(FBModel& model, const std::vector<FBTake*>& takes, int phase, double degrees)
{
    for (std::size_t take = 0; take < takes.size(); ++take)
    {
        const int own = phase + static_cast<int>(take) * 11;
        AnimateTransform(model, *takes[take],
                         [=](double seconds)
                         {
                             LocalTransform place;
                             place.translation = Waves(seconds, own, 37.0);
                             place.rotation = Waves(seconds, own + 3, degrees);
                             place.scaling = FBVector3d(1.0, 1.0, 1.0 + phase % 3 / 8.0);
                             return place;
                         });
    }
}

void AnimateValue(FBProperty& property, const std::vector<FBTake*>& takes, int phase, double size)
{
    for (FBTake* take : takes)
        AnimateProperty(property, *take,
                        [=](double seconds, int component)
                        { return size * Wave(seconds, phase + component); });
}

void AddUserProperties(FBModel& model, const std::vector<FBTake*>& takes)
{
    const FBPropertyType types[] = {kFBPT_int,       kFBPT_bool,     kFBPT_double,   kFBPT_float,
                                    kFBPT_Vector2D,  kFBPT_Vector3D, kFBPT_Vector4D, kFBPT_ColorRGB,
                                    kFBPT_ColorRGBA, kFBPT_Time};
    for (const bool animatable : {false, true})
    {
        int phase = 0;
        for (const FBPropertyType type : types)
        {
            const std::string name = (animatable ? "moving " : "still ") + std::to_string(type);
            if (FBProperty* property = AddUserProperty(model, name, type, animatable))
                AnimateValue(*property, takes, phase++, type == kFBPT_int ? 1000.0 : 1.0);
        }
        FBProperty* choice = AddUserEnum(model, animatable ? "moving choice" : "choice",
                                         {"low",
                                          "m\xC3\xA9"
                                          "dium",
                                          "high"},
                                         1, animatable);
        AnimateValue(*choice, takes, 5, 2.0);
    }
    AddUserProperty(model, "text", kFBPT_charptr, false)->SetString("\xE4\xB8\xAD\xE6\x96\x87 and Latin");
}

void AddCameras(FBModel* parent, const std::vector<FBTake*>& takes)
{
    FBModel* interest = AddModel("rig:Interest", parent);
    Animate(*interest, takes, 40, 10.0);
    const FBCameraApertureMode modes[] = {kFBApertureVertical, kFBApertureHorizontal, kFBApertureVertHoriz,
                                          kFBApertureFocalLength};
    for (const FBCameraApertureMode mode : modes)
    {
        FBCamera* camera =
            AddCamera("shots:Camera " + std::to_string(mode), mode % 2 == 0 ? parent : nullptr);
        camera->ApertureMode = mode;
        camera->FilmAspectRatio = 16.0 / 9.0;
        camera->NearPlaneDistance = 0.1 * (mode + 1);
        camera->FarPlaneDistance = 12345.678;
        if (mode >= kFBApertureVertHoriz)
            camera->Interest = interest;
        Animate(*camera, takes, 50 + mode, 80.0);
        AnimateValue(camera->FieldOfView, takes, 60 + mode, 30.0);
        AnimateValue(camera->Roll, takes, 70 + mode, 45.0);
        AnimateValue(camera->TurnTable, takes, 80 + mode, 360.0);
        AnimateValue(camera->FocusSpecificDistance, takes, 90 + mode, 250.0);
    }
    for (FBTake* take : takes)
        AnimateProperty(AddCameraSwitcher()->CurrentCameraIndex, *take,
                        [](double seconds, int) { return 1.0 + static_cast<int>(seconds * 3.0) % 4; });
}

void BuildScene()
{
    NewScene();
    SetSceneFilePath("C:\\scenes\\d\xC3\xA9pot.fbx");
    SetTransportRate(29.97);
    ClearTakes();
    const std::vector<FBTake*> takes = {AddTake("Walk fast", 0.0, 2.0), AddTake("l\xC3\xA4uft", -0.5, 1.7)};
    FBModel* parent = nullptr;
    for (int order = kFBEulerXYZ; order <= kFBEulerZYX; ++order)
    {
        FBModel* bone = AddModel("ns:rig:Bone " + std::to_string(order), parent);
        bone->RotationActive = true;
        bone->RotationOrder = static_cast<FBModelRotationOrder>(order);
        bone->PreRotation = FBVector3d(11.0 * order, 7.0, -33.3);
        bone->PostRotation = FBVector3d(-5.0, 13.7 * order, 90.0);
        Animate(*bone, takes, order, 170.0);
        AddModel("ns:Still \xE9\xA8\xA8 " + std::to_string(order), bone)->Rotation =
            FBVector3d(33.3, -66.6, 123.4);
        parent = order % 2 == 0 ? bone : parent;
    }
    AddUserProperties(*parent, takes);
    AddCameras(parent, takes);
    AddConstraint("Hold", true, parent,
                  [](double seconds) {
                      return LocalTransform{Waves(seconds, 9, 5.0), Waves(seconds, 4, 200.0)};
                  });
    FBSystem().CurrentTake = takes[0];
}

using ScriptEntry = unsigned(const char* path, int start, int end, int fps, bool spaces_to_underscores,
                             bool keep_positive_z, bool remove_namespace, bool disable_constraints,
                             bool all_keys, bool all_takes);

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fputs("usage: export_rich_scene PLUGIN FOLDER\n", stderr);
        return 2;
    }
    std::string error;
    const auto plugin = Plugin::Load(argv[1], error);
    auto* const script = plugin ? plugin->Symbol<ScriptEntry>("python_export_tv2") : nullptr;
    if (!script)
    {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 2;
    }
    const std::string folder = std::string(argv[2]) + "/";
    BuildScene();
    bool done = script((folder + "rich.tv2").c_str(), 0, 0, 30, true, true, true, false, true, true) == 1;
    done = done && script((folder + "rich part.tv2").c_str(), 7, 41, 24, false, false, false, true, false,
                          false) == 1;
    BuildScene();
    FBFindModelByLabelName("ns:rig:Bone 2")->Selected = true;
    done = done && script((folder + "rich_selected.tv2").c_str(), 0, 0, 60, true, false, true, false, true,
                          true) == 1;
    NewScene();
    return done ? 0 : 1;
}
