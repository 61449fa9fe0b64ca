#pragma once

#include <fbsdk/fbsdk.h>

namespace FBSDKNamespace
{

// What stands behind the event handle of a handler, for the time of the call.
class KEventBase
{
public:
    FBEventType type;
};

} // namespace FBSDKNamespace
