#pragma once

#include <fbsdk/fbproperties.h>

// Components: everything in a scene or a window.

namespace FBSDKNamespace
{

class FBSDK_DLL FBComponent : public FBPlug
{
    FBSDKClassDeclare(FBComponent, FBPlug);

    explicit FBComponent(HIObject pObject = nullptr);
    ~FBComponent() override;

    virtual bool FBCreate();
    virtual void FBDestroy();
    void FBDelete() override; // FBDestroy, then frees the object

    // A property of its own, owned by the component; null for a kind that holds no value. pIsUser makes it a
    // user property. An animatable kind without an animatable form becomes a plain one.
    FBProperty* PropertyCreate(const char* pName, FBPropertyType pType, const char* pDataType,
                               bool pAnimatable, bool pIsUser = false,
                               FBProperty* pReferenceSource = nullptr);
    bool PropertyRemove(FBProperty* pProperty); // deletes it; false when PropertyCreate did not make it

    static void* operator new(std::size_t pSize);
    static void operator delete(void* pMemory);
    static void* operator new(std::size_t pSize, int pBlockUse, const char* pFile, int pLine);
    static void operator delete(void* pMemory, int pBlockUse, const char* pFile, int pLine);

    FBPropertyManager PropertyList;

private:
    friend struct ::mobu_host::SdkAccess;
    struct State;
    std::unique_ptr<State> state_;

public:
    FBPropertyString Name;     // without namespaces
    FBPropertyString LongName; // namespaces and name: "ns1:ns2:Name"
    FBPropertyBool Selected;
    FBPropertyListComponent Components;
    FBPropertyListComponent Parents;
};

class FBSDK_DLL FBBox : public FBComponent
{
    FBSDKClassDeclare(FBBox, FBComponent);

    explicit FBBox(const char* pName, HIObject pObject = nullptr);
};

} // namespace FBSDKNamespace
