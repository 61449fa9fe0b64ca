#include <chrono>

#include "host/sdk/frame_rates.h"
#include "host/sdk/property_state.h"
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
    As<FBComponent*>(value) = TheScene().player.take;
}
void ReadLocalTime(FBComponent&, void* value)
{
    As<FBTime>(value) = TheScene().player.time;
}
void ReadScene(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().graph.scene.get();
}
void ReadSceneRoot(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().graph.root;
}
void ReadSystemRoot(FBComponent&, void* value)
{
    As<FBComponent*>(value) = TheScene().graph.system_root.get();
}
void ReadFileName(FBComponent&, void* value)
{
    As<const char*>(value) = TheScene().path.c_str();
}
void ReadSnapMode(FBComponent&, void* value)
{
    As<int>(value) = TheScene().player.snap_mode;
}
void WriteSnapMode(FBComponent&, const void* value)
{
    TheScene().player.snap_mode = *static_cast<const int*>(value);
}

// Only a take of the scene can be current.
void WriteTake(FBComponent&, const void* value)
{
    auto* take = static_cast<FBTake*>(*static_cast<FBComponent* const*>(value));
    if (TheScene().graph.scene->Takes.Find(take) >= 0)
        TheScene().player.take = take;
}

void ReadSystemTime(FBComponent&, void* value)
{
    As<FBTime>(value).SetSecondDouble(std::chrono::duration<double>(Clock::now() - kProgramStart).count());
}

FBTimeSpan CurrentSpan()
{
    return TheScene().player.take ? static_cast<FBTimeSpan>(TheScene().player.take->LocalTimeSpan)
                                  : FBTimeSpan();
}

void SetCurrentSpan(const FBTimeSpan& span)
{
    if (TheScene().player.take)
        TheScene().player.take->LocalTimeSpan = span;
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
    TheScene().player.Goto(pTime, TheScene().behaviour.clamp_goto_to_take);
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
    return TheScene().player.transport_mode;
}

void FBPlayerControl::SetTransportFps(FBTimeMode pTimeMode, double pCustomFps)
{
    TheScene().player.transport_mode = pTimeMode == kFBTimeModeDefault ? kFBTimeMode30Frames : pTimeMode;
    TheScene().player.custom_rate = pCustomFps;
}

double FBPlayerControl::GetTransportFpsValue(FBTimeMode pTimeMode)
{
    return TheScene().player.RateOf(pTimeMode);
}

} // namespace FBSDKNamespace
