#pragma once

#include <fbsdk/fbscene.h>

// The application, the system and the player. Objects of these classes are light views on the one and only.

namespace FBSDKNamespace
{

enum FBTransportSnapMode
{
    kFBTransportSnapModeNoSnap,
    kFBTransportSnapModeSnapOnFrames,
    kFBTransportSnapModePlayOnFrames,
    kFBTransportSnapModeSnapAndPlayOnFrames
};

typedef FBPropertyBaseEnum<FBTransportSnapMode> FBPropertyTransportSnapMode;

class FBSDK_DLL FBSystem : public FBComponent
{
    FBSDKClassDeclare(FBSystem, FBComponent);

    FBSystem();
    static FBSystem& TheOne();

    FBPropertyDouble Version; // 17000.0, read-only
    FBPropertyTake CurrentTake;
    FBPropertyTime LocalTime;       // of the player, read-only
    FBPropertyTime SystemTime;      // since the start of the program, read-only
    FBPropertyScene Scene;          // read-only
    FBPropertyModel SceneRootModel; // read-only, Scene->RootModel
    FBPropertyModel RootModel;      // read-only, above the scene root
};

class FBSDK_DLL FBApplication : public FBComponent
{
    FBSDKClassDeclare(FBApplication, FBComponent);

    FBApplication();
    static FBApplication& TheOne();

    FBPropertyString FBXFileName; // "" for a scene that was never saved
};

class FBSDK_DLL FBPlayerControl : public FBComponent
{
    FBSDKClassDeclare(FBPlayerControl, FBComponent);

    explicit FBPlayerControl(HIObject pObject = nullptr);
    static FBPlayerControl& TheOne();

    bool Goto(FBTime pTime); // moves LocalTime; values stay until the next evaluation
    bool GotoStart();        // start and stop of the current take
    bool GotoEnd();
    bool Play(bool pUseMT = false); // the headless player never runs: false
    bool Stop();

    FBTimeMode GetTransportFps();
    void SetTransportFps(FBTimeMode pTimeMode, double pCustomFps = 0.0);
    // Frames per second of a mode; of the transport when left out.
    double GetTransportFpsValue(FBTimeMode pTimeMode = kFBTimeModeDefault);

    FBPropertyTransportSnapMode SnapMode;
    FBPropertyTime LoopStart; // the current take's local span
    FBPropertyTime LoopStop;
};

} // namespace FBSDKNamespace
