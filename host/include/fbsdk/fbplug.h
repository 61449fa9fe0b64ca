#pragma once

#include <fbsdk/fbtypes.h>

// Run-time types: Is() follows the parent that the class macro names, not C++ inheritance.

#define FBClassDeclare(Class, Parent)                                                                        \
public:                                                                                                      \
    typedef Parent ParentClass;                                                                              \
    virtual const char* ClassName();                                                                         \
    static int TypeInfo;                                                                                     \
    virtual bool Is(int pTypeId);                                                                            \
    virtual void FBDelete();                                                                                 \
    virtual int GetTypeId();                                                                                 \
    virtual ~Class();                                                                                        \
                                                                                                             \
private:                                                                                                     \
    static_assert(true)

#define FBClassImplementation(Class)                                                                         \
    Class::~Class() {}                                                                                       \
    const char* Class::ClassName()                                                                           \
    {                                                                                                        \
        return #Class;                                                                                       \
    }                                                                                                        \
    int Class::GetTypeId()                                                                                   \
    {                                                                                                        \
        return TypeInfo;                                                                                     \
    }                                                                                                        \
    bool Class::Is(int pTypeId)                                                                              \
    {                                                                                                        \
        return pTypeId == TypeInfo || ParentClass::Is(pTypeId);                                              \
    }                                                                                                        \
    void Class::FBDelete()                                                                                   \
    {                                                                                                        \
        ParentClass::FBDelete();                                                                             \
    }                                                                                                        \
    int Class::TypeInfo = FBSDKNamespace::FBPlug::mGlobalTypeInfo++

#define FBClassInit

// The same for the SDK's own classes: the class stays public and keeps its own destructor and FBDelete.
#define FBSDKClassDeclare(Class, Parent)                                                                     \
public:                                                                                                      \
    typedef Parent ParentClass;                                                                              \
    const char* ClassName() override;                                                                        \
    static int TypeInfo;                                                                                     \
    bool Is(int pTypeId) override;                                                                           \
    int GetTypeId() override

#define FBSDKClassImplementation(Class)                                                                      \
    const char* Class::ClassName()                                                                           \
    {                                                                                                        \
        return #Class;                                                                                       \
    }                                                                                                        \
    int Class::GetTypeId()                                                                                   \
    {                                                                                                        \
        return TypeInfo;                                                                                     \
    }                                                                                                        \
    bool Class::Is(int pTypeId)                                                                              \
    {                                                                                                        \
        return pTypeId == TypeInfo || ParentClass::Is(pTypeId);                                              \
    }                                                                                                        \
    int Class::TypeInfo = FBPlug::mGlobalTypeInfo++

#define FBIS(Component, Type) ((Component) != nullptr && (Component)->Is(Type::TypeInfo))

namespace FBSDKNamespace
{

// Root of everything with a run-time type.
class FBSDK_DLL FBPlug : public ICallback, public FBWrapperHolder
{
public:
    FBPlug();
    ~FBPlug() override;
    FBPlug(const FBPlug&) = delete;
    FBPlug& operator=(const FBPlug&) = delete;

    virtual const char* ClassName();
    virtual bool Is(int pTypeId);
    virtual int GetTypeId();
    virtual void FBDelete(); // frees the object

    static int TypeInfo;
    static int mGlobalTypeInfo; // the next free type number
};

// pPlug as a T, or null when it is none.
template <class T>
T* FBCast(FBPlug* pPlug)
{
    return FBIS(pPlug, T) ? static_cast<T*>(pPlug) : nullptr;
}

} // namespace FBSDKNamespace
