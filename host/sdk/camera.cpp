#include "host/sdk/property_state.h"
#include "host/sdk/scene_state.h"

namespace mobu_host
{
namespace
{

const char* const kApertureModes[] = {"Vertical", "Horizontal", "Vertical and Horizontal", "Focal Length",
                                      nullptr};
const char* const kCameraTypes[] = {"Perspective", "Orthogonal", nullptr};
const char* const kFocusSources[] = {"Camera Interest", "Specific Distance", "Model", nullptr};

// All switchers show the animated value of the scene's own switcher.
void ReadCurrentIndex(FBComponent&, void* value)
{
    const SceneGraph& graph = TheScene().graph;
    int index = 0;
    if (graph.switcher_override)
        index = graph.UserCameraIndex(graph.switcher_override);
    else if (graph.switcher)
        index = SdkAccess::Current<int>(graph.switcher->CurrentCameraIndex);
    *static_cast<int*>(value) = index;
}

void WriteCurrentIndex(FBComponent&, const void* value)
{
    const int index = *static_cast<const int*>(value);
    TheScene().graph.switcher_override = index < 0 ? nullptr : TheScene().graph.UserCamera(index);
}

void ReadCurrentCamera(FBComponent& owner, void* value)
{
    int index = 0;
    ReadCurrentIndex(owner, &index);
    const SceneGraph& graph = TheScene().graph;
    *static_cast<FBComponent**>(value) =
        graph.switcher_override ? graph.switcher_override : graph.UserCamera(index);
}

void WriteCurrentCamera(FBComponent&, const void* value)
{
    TheScene().graph.switcher_override = static_cast<FBCamera*>(*static_cast<FBComponent* const*>(value));
}

} // namespace
} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBCamera);
FBSDKClassImplementation(FBCameraSwitcher); // NOLINT(bugprone-parent-virtual-call): by type a box

FBCamera::FBCamera(const char* pName, HIObject pObject) : FBModel(pName, pObject)
{
    Publish(*this, SystemCamera, "SystemCamera");
    Publish(*this, ResolutionWidth, "ResolutionWidth");
    Publish(*this, ResolutionHeight, "ResolutionHeight");
    Publish(*this, PixelAspectRatio, "PixelAspectRatio");
    Publish(*this, NearPlaneDistance, "NearPlane");
    Publish(*this, FarPlaneDistance, "FarPlane");
    PublishEnum(*this, Type, "CameraType", kCameraTypes);
    PublishEnum(*this, ApertureMode, "ApertureMode", kApertureModes);
    Publish(*this, FieldOfView, "FieldOfView");
    Publish(*this, FieldOfViewX, "FieldOfViewX");
    Publish(*this, FieldOfViewY, "FieldOfViewY");
    Publish(*this, FocalLength, "FocalLength");
    Publish(*this, FilmSizeWidth, "FilmWidth");
    Publish(*this, FilmSizeHeight, "FilmHeight");
    Publish(*this, FilmAspectRatio, "FilmAspectRatio");
    Publish(*this, SqueezeRatio, "FilmSqueezeRatio");
    Publish(*this, FocusAngle, "FocusAngle");
    PublishEnum(*this, FocusDistanceSource, "FocusSource", kFocusSources);
    Publish(*this, FocusModel, "FocusModel");
    Publish(*this, FocusSpecificDistance, "FocusDistance");
    Publish(*this, Interest, "Interest");
    Publish(*this, Roll, "Roll");
    Publish(*this, TurnTable, "TurnTable");
    SdkAccess::Of(SystemCamera).read_only = true;
    ResolutionWidth = 640.0;
    ResolutionHeight = 480.0;
    PixelAspectRatio = 1.0;
    NearPlaneDistance = 10.0;
    FarPlaneDistance = 4000.0;
    ApertureMode = kFBApertureVertical;
    FieldOfView = 25.115;
    FieldOfViewX = 40.0;
    FieldOfViewY = 40.0;
    FocalLength = 34.8932762167263;
    FilmSizeWidth = 0.816;
    FilmSizeHeight = 0.612;
    FilmAspectRatio = 4.0 / 3.0;
    SqueezeRatio = 1.0;
    FocusAngle = 10.0;
    FocusSpecificDistance = 100.0;
    if (!pObject)
        TheScene().graph.Add(*this);
}

FBCamera::~FBCamera()
{
    TheScene().Forget(*this);
}

// An object that is not null keeps a model out of the scene: the host adds the scene's own switcher itself.
FBCameraSwitcher::FBCameraSwitcher() : FBModel("Camera Switcher", &Scene())
{
    Publish(*this, CurrentCamera, "CurrentCamera", ReadCurrentCamera, WriteCurrentCamera);
    Publish(*this, CurrentCameraIndex, "Camera Index", ReadCurrentIndex, WriteCurrentIndex);
}

} // namespace FBSDKNamespace
