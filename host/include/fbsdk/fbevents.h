#pragma once

#include <fbsdk/fbplug.h>

// What a handler can learn about its event.

namespace FBSDKNamespace
{

enum FBEventType
{
    kFBEventUnknown,
    kFBEventActivate,
    kFBEventChange,
    kFBEventShow,
    kFBEventResize,
    kFBEventExpose,
    kFBEventInput
};

// Made from the event argument of a handler, for the time of the call.
class FBSDK_DLL FBEvent : public FBPlug
{
    FBSDKClassDeclare(FBEvent, FBPlug);

    explicit FBEvent(HKEvent pEvent);
    FBEventType GetType() const;

private:
    FBEventType type_;
};

// A control was clicked.
class FBSDK_DLL FBEventActivate : public FBEvent
{
    FBSDKClassDeclare(FBEventActivate, FBEvent);

    explicit FBEventActivate(HKEvent pEvent);
};

// Chooses the state a value is read from; null everywhere in this host: the last evaluation.
class FBEvaluateInfo;

} // namespace FBSDKNamespace
