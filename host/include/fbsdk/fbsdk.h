#pragma once

// The whole SDK. Names live in FBSDKNamespace and are used unqualified.

#include <fbsdk/fbversion.h>

#include <fbsdk/fbcamera.h>
#include <fbsdk/fbcomponent.h>
#include <fbsdk/fbcontrols.h>
#include <fbsdk/fbevents.h>
#include <fbsdk/fblibrary.h>
#include <fbsdk/fbmath.h>
#include <fbsdk/fbmodel.h>
#include <fbsdk/fbplug.h>
#include <fbsdk/fbproperties.h>
#include <fbsdk/fbscene.h>
#include <fbsdk/fbsystem.h>
#include <fbsdk/fbtime.h>
#include <fbsdk/fbtypes.h>

namespace FBSDKNamespace
{
}
using namespace FBSDKNamespace;
