#pragma once

// Version, namespace and linkage of the SDK.

#define FBSDKNamespace ORSDK2017
#define FBSDKUseNamespace 1
#define K_KERNEL_VERSION 17000

#if defined(_WIN32)
#define FBSDK_MODULE_EXPORT __declspec(dllexport)
#define FBSDK_MODULE_LOCAL
#define FBSDK_TEMPLATE
#if defined(FBSDK_EXPORTS)
#define FBSDK_DLL __declspec(dllexport)
#else
#define FBSDK_DLL __declspec(dllimport)
#endif
#else
#define FBSDK_MODULE_EXPORT __attribute__((visibility("default")))
#define FBSDK_MODULE_LOCAL __attribute__((visibility("hidden")))
#define FBSDK_DLL FBSDK_MODULE_EXPORT
#define FBSDK_TEMPLATE FBSDK_MODULE_EXPORT
#endif

namespace mobu_host
{
struct SdkAccess; // the host's access to the private state of the SDK's objects
}
