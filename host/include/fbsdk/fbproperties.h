#pragma once

#include <fbsdk/fbmath.h>
#include <fbsdk/fbplug.h>
#include <fbsdk/fbtime.h>

// Properties: a typed value that belongs to a component.

namespace FBSDKNamespace
{

class FBComponent;
class FBEvaluateInfo;

enum FBPropertyType
{
    kFBPT_unknown,
    kFBPT_int,
    kFBPT_int64,
    kFBPT_uint64,
    kFBPT_bool,
    kFBPT_float,
    kFBPT_double,
    kFBPT_charptr,
    kFBPT_enum,
    kFBPT_Time,
    kFBPT_TimeCode,
    kFBPT_object,
    kFBPT_event,
    kFBPT_stringlist,
    kFBPT_Vector4D,
    kFBPT_Vector3D,
    kFBPT_ColorRGB,
    kFBPT_ColorRGBA,
    kFBPT_Action,
    kFBPT_Reference,
    kFBPT_TimeSpan,
    kFBPT_kReference,
    kFBPT_Vector2D
};

enum FBDataAsStringFlag
{
    kFBDataAsStringOther,
    kFBDataAsStringUI,
    kFBDataAsStringFile
};

// Base of all properties.
// Buffers of GetData and SetData by type: bool = bool; int, enum = int; int64, uint64 = 64 bits; float;
// double; charptr = const char* (the pointer itself; valid until the next change); Vector2D/3D/4D, ColorRGB,
// ColorRGBA = 2, 3, 4, 3, 4 doubles; Time = FBTime; TimeSpan = FBTimeSpan; object = FBComponent*.
class FBSDK_DLL FBProperty : public FBPlug
{
    FBSDKClassDeclare(FBProperty, FBPlug);

    explicit FBProperty(FBPropertyType pType = kFBPT_unknown);
    ~FBProperty() override;

    const char* GetName();
    virtual FBPropertyType GetPropertyType();
    const char* GetPropertyTypeName();
    bool IsUserProperty();
    bool IsInternal();
    bool IsReferenceProperty();
    virtual bool IsAnimatable();
    virtual bool IsList();
    virtual bool IsReadOnly();

    bool IsMinClamp();
    bool IsMaxClamp();
    virtual void SetMin(double pMin, bool pForce = true); // a value set later stays at or above it
    virtual void SetMax(double pMax, bool pForce = true);
    virtual void SetMinMax(double pMin, double pMax, bool pForceMin = true, bool pForceMax = true);
    virtual double GetMin();
    virtual double GetMax();

    virtual const char* AsString(FBDataAsStringFlag pFlag = kFBDataAsStringUI); // valid until the next call
    virtual bool SetString(const char* pValue); // false: not a value of the type
    virtual int AsInt();
    virtual void SetInt(int pValue);

    // Copies the value into pData, at most pSize bytes.
    virtual void GetData(void* pData, int pSize, FBEvaluateInfo* pEvaluateInfo = nullptr) const;
    // Without effect on a read-only property.
    virtual void SetData(void* pData);

    virtual const char* EnumList(int pIndex); // item text; NULL past the last item and on other types
    FBStringList* GetEnumStringList(bool pCreateIt = false); // the items of a user enumeration
    void NotifyEnumStringListChanged();

private:
    friend struct ::mobu_host::SdkAccess;
    struct State;
    std::unique_ptr<State> state_;
};

// Base of the properties that can follow animation. They read as of the last evaluation of the scene.
class FBSDK_DLL FBPropertyAnimatable : public FBProperty
{
    FBSDKClassDeclare(FBPropertyAnimatable, FBProperty);

    explicit FBPropertyAnimatable(FBPropertyType pType = kFBPT_unknown);
    bool IsAnimatable() override;
    bool IsAnimated(); // true: the current take animates it
    void SetAnimated(bool pState);
};

template <class Type, FBPropertyType PropertyType>
class FBSDK_TEMPLATE FBPropertyBase : public FBProperty
{
public:
    FBPropertyBase() : FBProperty(PropertyType) {}
    FBPropertyType GetPropertyType() override { return PropertyType; }
    void operator=(Type pValue) { this->SetData(&pValue); }
    void operator=(const FBPropertyBase& pOther)
    {
        Type value = pOther;
        this->SetData(&value);
    }
    operator Type() const
    {
        Type value = Type();
        this->GetData(&value, static_cast<int>(sizeof value));
        return value;
    }
};

template <class Type, FBPropertyType PropertyType>
class FBSDK_TEMPLATE FBPropertyBaseAnimatable : public FBPropertyAnimatable
{
public:
    FBPropertyBaseAnimatable() : FBPropertyAnimatable(PropertyType) {}
    FBPropertyType GetPropertyType() override { return PropertyType; }
    void operator=(Type pValue) { this->SetData(&pValue); }
    void operator=(const FBPropertyBaseAnimatable& pOther)
    {
        Type value = pOther;
        this->SetData(&value);
    }
    operator Type() const
    {
        Type value = Type();
        this->GetData(&value, static_cast<int>(sizeof value));
        return value;
    }
};

typedef FBPropertyBase<bool, kFBPT_bool> FBPropertyBool;
typedef FBPropertyBase<int, kFBPT_int> FBPropertyInt;
typedef FBPropertyBase<kLongLong, kFBPT_int64> FBPropertyInt64;
typedef FBPropertyBase<unsigned long long, kFBPT_uint64> FBPropertyUInt64;
typedef FBPropertyBase<float, kFBPT_float> FBPropertyFloat;
typedef FBPropertyBase<double, kFBPT_double> FBPropertyDouble;
typedef FBPropertyBase<int, kFBPT_enum> FBPropertyEnum;
typedef FBPropertyBase<FBTime, kFBPT_Time> FBPropertyTime;
typedef FBPropertyBase<FBTimeSpan, kFBPT_TimeSpan> FBPropertyTimeSpan;
typedef FBPropertyBase<FBVector2d, kFBPT_Vector2D> FBPropertyVector2d;
typedef FBPropertyBase<FBVector3d, kFBPT_Vector3D> FBPropertyVector3d;
typedef FBPropertyBase<FBVector4d, kFBPT_Vector4D> FBPropertyVector4d;
typedef FBPropertyBase<FBColor, kFBPT_ColorRGB> FBPropertyColor;
typedef FBPropertyBase<FBColorAndAlpha, kFBPT_ColorRGBA> FBPropertyColorAndAlpha;

typedef FBPropertyBaseAnimatable<bool, kFBPT_bool> FBPropertyAnimatableBool;
typedef FBPropertyBaseAnimatable<int, kFBPT_int> FBPropertyAnimatableInt;
typedef FBPropertyBaseAnimatable<double, kFBPT_double> FBPropertyAnimatableDouble;
typedef FBPropertyBaseAnimatable<int, kFBPT_enum> FBPropertyAnimatableEnum;
typedef FBPropertyBaseAnimatable<FBTime, kFBPT_Time> FBPropertyAnimatableTime;
typedef FBPropertyBaseAnimatable<FBVector3d, kFBPT_Vector3D> FBPropertyAnimatableVector3d;
typedef FBPropertyBaseAnimatable<FBVector4d, kFBPT_Vector4D> FBPropertyAnimatableVector4d;
typedef FBPropertyBaseAnimatable<FBColor, kFBPT_ColorRGB> FBPropertyAnimatableColor;
typedef FBPropertyBaseAnimatable<FBColorAndAlpha, kFBPT_ColorRGBA> FBPropertyAnimatableColorAndAlpha;

// An enumeration that reads and writes as its own C++ type.
template <class Enum>
class FBSDK_TEMPLATE FBPropertyBaseEnum : public FBPropertyBase<Enum, kFBPT_enum>
{
    static_assert(sizeof(Enum) == sizeof(int), "enumerations travel as int");

public:
    using FBPropertyBase<Enum, kFBPT_enum>::operator=;
};

template <class Enum>
class FBSDK_TEMPLATE FBPropertyBaseAnimatableEnum : public FBPropertyBaseAnimatable<Enum, kFBPT_enum>
{
    static_assert(sizeof(Enum) == sizeof(int), "enumerations travel as int");

public:
    using FBPropertyBaseAnimatable<Enum, kFBPT_enum>::operator=;
};

// Text. The pointer belongs to the property and may die at the next change: copy at once.
class FBSDK_DLL FBPropertyString : public FBPropertyBase<const char*, kFBPT_charptr>
{
public:
    using FBPropertyBase<const char*, kFBPT_charptr>::operator=;
    bool operator==(const char* pText) const;
    bool operator!=(const char* pText) const;
};

// A reference to a component, or null.
class FBSDK_DLL FBPropertyComponent : public FBProperty
{
public:
    FBPropertyComponent();
};

template <class Pointer>
class FBPropertyBaseComponent;

template <class Component>
class FBSDK_TEMPLATE FBPropertyBaseComponent<Component*> : public FBPropertyComponent
{
public:
    void operator=(Component* pValue)
    {
        FBComponent* value = pValue;
        this->SetData(&value);
    }
    void operator=(const FBPropertyBaseComponent& pOther) { *this = pOther.Get(); }
    operator Component*() const { return Get(); }
    Component* operator->() const { return Get(); }

private:
    Component* Get() const
    {
        FBComponent* value = nullptr;
        this->GetData(&value, static_cast<int>(sizeof(void*)));
        return static_cast<Component*>(value);
    }
};

// Registered event handlers; several on one event run in reverse order of registration.
class FBSDK_DLL FBPropertyEvent : public FBProperty
{
public:
    FBPropertyEvent();
    ~FBPropertyEvent() override;
    virtual void Add(HICallback pOwner, kICallbackHandler pHandler);
    virtual void Remove(HICallback pOwner, kICallbackHandler pHandler);
    virtual void RemoveAll();

private:
    friend struct ::mobu_host::SdkAccess;
    struct Handlers;
    std::unique_ptr<Handlers> handlers_;
};

class FBSDK_DLL FBPropertyAction : public FBProperty
{
public:
    FBPropertyAction();
};

class FBSDK_DLL FBPropertyBasicList : public FBProperty
{
public:
    FBPropertyBasicList();
    bool IsList() override;
    virtual int GetCount() = 0;
};

// A list of components. Indices outside give null.
class FBSDK_DLL FBPropertyListComponent : public FBPropertyBasicList
{
public:
    FBPropertyListComponent();
    ~FBPropertyListComponent() override;
    int GetCount() override;
    FBComponent* operator[](int pIndex);
    FBComponent* GetAt(int pIndex);
    virtual int Add(FBComponent* pItem); // new count
    virtual int Remove(FBComponent* pItem);
    virtual void RemoveAt(int pIndex);
    virtual void RemoveAll();
    virtual int Find(FBComponent* pItem); // index or -1

private:
    friend struct ::mobu_host::SdkAccess;
    struct Items;
    std::unique_ptr<Items> items_;
};

template <class Component>
class FBSDK_TEMPLATE FBPropertyBaseList : public FBPropertyListComponent
{
public:
    Component* operator[](int pIndex) { return GetAt(pIndex); }
    Component* GetAt(int pIndex) { return static_cast<Component*>(FBPropertyListComponent::GetAt(pIndex)); }
};

// All properties of a component: the built-in ones, then the user's in order of creation.
class FBSDK_DLL FBPropertyManager
{
public:
    FBPropertyManager();
    ~FBPropertyManager();
    FBPropertyManager(const FBPropertyManager&) = delete;
    FBPropertyManager& operator=(const FBPropertyManager&) = delete;

    int GetCount();
    FBProperty* operator[](int pIndex); // null outside
    FBProperty* Find(const char* pName, bool pMultilangLookup = true);
    void Add(FBProperty* pProperty); // lists it; ownership stays with the caller

private:
    friend struct ::mobu_host::SdkAccess;
    struct List;
    std::unique_ptr<List> list_;
};

} // namespace FBSDKNamespace
