#pragma once

#include <fbsdk/fbsdk.h>

namespace FBSDKNamespace
{

/// What the event handle of a handler points to, during the call.
class KEventBase
{
public:
    FBEventType type;
};

} // namespace FBSDKNamespace
