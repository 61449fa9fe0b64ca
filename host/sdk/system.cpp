#include <chrono>

#include "host/sdk/frame_rates.h"
#include "host/sdk/scene_state.h"

namespace mobu_host
{
namespace
{

using Clock = std::chrono::steady_clock;
const Clock::time_point kProgramStart = Clock::now();

const char* const kSnapModes[] = {"No Snap", "Snap on Frames", "Play on Frames", "Snap & Play on Frames",
                                  nullptr};

template <class T>
T& As(void* value)
{
    return *static_cast<T*>(value);
}

void ReadVersion(FBComponent&, void* value)
{
    As<double>(value) = K_KERNEL_VERSION;
}
void ReadTake(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().current_take;
}
void ReadLocalTime(FBComponent&, void* value)
{
    As<FBTime>(value) = TheScene().local_time;
}
void ReadScene(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().scene.get();
}
void ReadSceneRoot(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().root;
}
void ReadSystemRoot(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().system_root.get();
}
void ReadFileName(FBComponent&, void* value)
{
    As<const char*>(value) = TheScene().path.c_str();
}
void ReadSnapMode(FBComponent&, void* value)
{
    As<int>(value) = TheScene().snap_mode;
}
void WriteSnapMode(FBComponent&, const void* value)
{
    TheScene().snap_mode = *static_cast<const int*>(value);
}

// Only a take of the scene can be current.
void WriteTake(FBComponent&, const void* value)
{
    auto* take = static_cast<FBTake*>(*static_cast<FBComponent* const*>(value));
    if (TheScene().scene->Takes.Find(take) >= 0)
        TheScene().current_take = take;
}

void ReadSystemTime(FBComponent&, void* value)
{
    As<FBTime>(value).SetSecondDouble(std::chrono::duration<double>(Clock::now() - kProgramStart).count());
}

FBTimeSpan CurrentSpan()
{
    return TheScene().current_take ? static_cast<FBTimeSpan>(TheScene().current_take->LocalTimeSpan)
                                   : FBTimeSpan();
}

void SetCurrentSpan(const FBTimeSpan& span)
{
    if (TheScene().current_take)
        TheScene().current_take->LocalTimeSpan = span;
}

void ReadLoopStart(FBComponent&, void* value)
{
    As<FBTime>(value) = CurrentSpan().GetStart();
}
void ReadLoopStop(FBComponent&, void* value)
{
    As<FBTime>(value) = CurrentSpan().GetStop();
}

void WriteLoopStart(FBComponent&, const void* value)
{
    SetCurrentSpan(FBTimeSpan(*static_cast<const FBTime*>(value), CurrentSpan().GetStop()));
}

void WriteLoopStop(FBComponent&, const void* value)
{
    SetCurrentSpan(FBTimeSpan(CurrentSpan().GetStart(), *static_cast<const FBTime*>(value)));
}

} // namespace
} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBSystem);
FBSDKClassImplementation(FBApplication);
FBSDKClassImplementation(FBPlayerControl);

FBSystem::FBSystem()
{
    LongName = "System";
    Publish(*this, Version, "Version", ReadVersion);
    Publish(*this, CurrentTake, "CurrentTake", ReadTake, WriteTake);
    Publish(*this, LocalTime, "LocalTime", ReadLocalTime);
    Publish(*this, SystemTime, "SystemTime", ReadSystemTime);
    Publish(*this, Scene, "Scene", ReadScene);
    Publish(*this, SceneRootModel, "SceneRootModel", ReadSceneRoot);
    Publish(*this, RootModel, "RootModel", ReadSystemRoot);
}

FBSystem& FBSystem::TheOne()
{
    static FBSystem system;
    return system;
}

FBApplication::FBApplication()
{
    LongName = "Application";
    Publish(*this, FBXFileName, "FBXFileName", ReadFileName);
}

FBApplication& FBApplication::TheOne()
{
    static FBApplication application;
    return application;
}

FBPlayerControl::FBPlayerControl(HIObject pObject) : FBComponent(pObject)
{
    LongName = "Player Control";
    Publish(*this, SnapMode, "SnapMode", ReadSnapMode, WriteSnapMode);
    SdkAccess::Of(SnapMode).item_names = kSnapModes;
    Publish(*this, LoopStart, "LoopStart", ReadLoopStart, WriteLoopStart);
    Publish(*this, LoopStop, "LoopStop", ReadLoopStop, WriteLoopStop);
}

FBPlayerControl& FBPlayerControl::TheOne()
{
    static FBPlayerControl player;
    return player;
}

bool FBPlayerControl::Goto(FBTime pTime)
{
    TheScene().Goto(pTime);
    return true;
}

bool FBPlayerControl::GotoStart()
{
    return Goto(LoopStart);
}
bool FBPlayerControl::GotoEnd()
{
    return Goto(LoopStop);
}
bool FBPlayerControl::Play(bool)
{
    return false;
}
bool FBPlayerControl::Stop()
{
    return true;
}
FBTimeMode FBPlayerControl::GetTransportFps()
{
    return TheScene().transport_mode;
}

void FBPlayerControl::SetTransportFps(FBTimeMode pTimeMode, double pCustomFps)
{
    TheScene().transport_mode = pTimeMode == kFBTimeModeDefault ? kFBTimeMode30Frames : pTimeMode;
    TheScene().custom_rate = pCustomFps;
}

double FBPlayerControl::GetTransportFpsValue(FBTimeMode pTimeMode)
{
    return TheScene().TransportRate(pTimeMode);
}

} // namespace FBSDKNamespace
