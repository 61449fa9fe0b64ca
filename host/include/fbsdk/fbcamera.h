#pragma once

#include <fbsdk/fbmodel.h>

// Cameras and the camera switcher. A camera looks along its local +X with +Y up.

namespace FBSDKNamespace
{

class FBCamera;
typedef FBPropertyBaseComponent<FBCamera*> FBPropertyCamera;
typedef FBPropertyBaseList<FBCamera> FBPropertyListCamera;

enum FBCameraApertureMode
{
    kFBApertureVertical,
    kFBApertureHorizontal,
    kFBApertureVertHoriz,
    kFBApertureFocalLength
};

enum FBCameraType
{
    kFBCameraTypePerspective,
    kFBCameraTypeOrthogonal
};

enum FBCameraFocusDistanceSource
{
    kFBFocusDistanceCameraInterest,
    kFBFocusDistanceSpecificDistance,
    kFBFocusDistanceModel
};

typedef FBPropertyBaseEnum<FBCameraApertureMode> FBPropertyCameraApertureMode;
typedef FBPropertyBaseEnum<FBCameraType> FBPropertyCameraType;
typedef FBPropertyBaseEnum<FBCameraFocusDistanceSource> FBPropertyCameraFocusDistanceSource;

class FBSDK_DLL FBCamera : public FBModel
{
    FBSDKClassDeclare(FBCamera, FBModel);

    explicit FBCamera(const char* pName, HIObject pObject = nullptr);
    ~FBCamera() override;

    FBPropertyBool SystemCamera;      // read-only
    FBPropertyDouble ResolutionWidth; // pixels
    FBPropertyDouble ResolutionHeight;
    FBPropertyDouble PixelAspectRatio;
    FBPropertyDouble NearPlaneDistance; // cm
    FBPropertyDouble FarPlaneDistance;  // cm
    FBPropertyCameraType Type;
    FBPropertyCameraApertureMode ApertureMode;
    FBPropertyAnimatableDouble FieldOfView; // degrees
    FBPropertyAnimatableDouble FieldOfViewX;
    FBPropertyAnimatableDouble FieldOfViewY;
    FBPropertyAnimatableDouble FocalLength; // mm
    FBPropertyDouble FilmSizeWidth;         // inches
    FBPropertyDouble FilmSizeHeight;
    FBPropertyDouble FilmAspectRatio; // width / height
    FBPropertyDouble SqueezeRatio;
    FBPropertyAnimatableDouble FocusAngle;
    FBPropertyCameraFocusDistanceSource FocusDistanceSource;
    FBPropertyModel FocusModel;
    FBPropertyAnimatableDouble FocusSpecificDistance; // cm
    FBPropertyModel Interest;
    FBPropertyAnimatableDouble Roll;      // degrees, not contained in GetMatrix
    FBPropertyAnimatableDouble TurnTable; // degrees about the interest, not contained in GetMatrix
};

// The one switcher of the scene: any further object is a view on it. Is() is false for model and camera.
class FBSDK_DLL FBCameraSwitcher : public FBModel
{
    FBSDKClassDeclare(FBCameraSwitcher, FBBox);

    FBCameraSwitcher();

    FBPropertyCamera CurrentCamera; // null returns to the animated switch
    FBPropertyInt
        CurrentCameraIndex; // 1-based among the cameras that are no system cameras; set -1: animated switch
};

} // namespace FBSDKNamespace
