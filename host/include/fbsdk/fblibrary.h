#pragma once

#include <fbsdk/fbtypes.h>

// A plug-in module: one library object whose phases the application runs, and its entry points.

enum kFBDllOperation
{
    kFBDllLoad,
    kFBDllUnLoad
};

namespace FBSDKNamespace
{

class FBSDK_DLL FBLibraryBase : public ICallback
{
public:
    FBLibraryBase(const FBLibraryBase&) = delete;
    FBLibraryBase& operator=(const FBLibraryBase&) = delete;
    ~FBLibraryBase() override;

    // In order: init while the module loads, open and ready before it is used; close and release at the end.
    virtual bool LibInit() = 0;
    virtual bool LibOpen() = 0;
    virtual bool LibReady() = 0;
    virtual bool LibClose() = 0;
    virtual bool LibRelease() = 0;

protected:
    FBLibraryBase(); // makes the object known to the application
};

// Every plug-in defines these five functions for itself; they never leave its module.
class FBSDK_MODULE_LOCAL FBLibrary : public FBLibraryBase
{
public:
    bool LibInit() override;
    bool LibOpen() override;
    bool LibReady() override;
    bool LibClose() override;
    bool LibRelease() override;
};

} // namespace FBSDKNamespace

#if defined(_WIN32)
#define FB_DLL_INIT(LibName)                                                                                 \
    FBSDK_MODULE_EXPORT void EntryPoint##LibName(kFBDllOperation pOperation);                                \
    extern "C" int __stdcall DllMain(void*, unsigned long pReason, void*)                                    \
    {                                                                                                        \
        if (pReason == 1ul)                                                                                  \
            EntryPoint##LibName(kFBDllLoad);                                                                 \
        else if (pReason == 0ul)                                                                             \
            EntryPoint##LibName(kFBDllUnLoad);                                                               \
        return 1;                                                                                            \
    }
#else
#define FB_DLL_INIT(LibName)                                                                                 \
    FBSDK_MODULE_EXPORT void EntryPoint##LibName(kFBDllOperation pOperation);                                \
    extern "C" __attribute__((constructor)) void KdsoInit##LibName()                                         \
    {                                                                                                        \
        EntryPoint##LibName(kFBDllLoad);                                                                     \
    }                                                                                                        \
    extern "C" __attribute__((destructor)) void KdsoDone##LibName()                                          \
    {                                                                                                        \
        EntryPoint##LibName(kFBDllUnLoad);                                                                   \
    }
#endif

#define FB_EXT_INIT(LibName)

#define FBLibraryDeclare(LibName)                                                                            \
    FB_EXT_INIT(LibName)                                                                                     \
    static FBSDKNamespace::FBLibrary LibName##GlobalFBLibrary;                                               \
    extern "C" FBSDK_MODULE_EXPORT bool LIBRARY_INIT(FBSDKNamespace::HIError)                                \
    {                                                                                                        \
        return LibName##GlobalFBLibrary.LibInit();                                                           \
    }                                                                                                        \
    FB_DLL_INIT(LibName)                                                                                     \
    void EntryPoint##LibName(kFBDllOperation pOperation)                                                     \
    {                                                                                                        \
        switch (pOperation)                                                                                  \
        {                                                                                                    \
        case kFBDllLoad:

#define FBLibraryDeclareEnd                                                                                  \
    break;                                                                                                   \
    case kFBDllUnLoad:                                                                                       \
        break;                                                                                               \
        }                                                                                                    \
        }                                                                                                    \
        static_assert(true)

#define FBLibraryModule(Class) void FBModule##Class()

#define FBLibraryRegister(Class)                                                                             \
    void FBModule##Class();                                                                                  \
    FBModule##Class()
