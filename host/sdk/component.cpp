#include <algorithm>
#include <new>

#include "host/sdk/property_state.h"

namespace mobu_host
{
namespace
{

template <class Plain, class Animatable>
std::unique_ptr<FBProperty> Make(bool animatable)
{
    if (animatable)
        return std::make_unique<Animatable>();
    return std::make_unique<Plain>();
}

std::unique_ptr<FBProperty> MakeProperty(FBPropertyType type, bool animatable)
{
    switch (type)
    {
    case kFBPT_unknown:
        return nullptr;
    case kFBPT_int:
        return Make<FBPropertyInt, FBPropertyAnimatableInt>(animatable);
    case kFBPT_int64:
        return std::make_unique<FBPropertyInt64>();
    case kFBPT_uint64:
        return std::make_unique<FBPropertyUInt64>();
    case kFBPT_bool:
        return Make<FBPropertyBool, FBPropertyAnimatableBool>(animatable);
    case kFBPT_float:
        return std::make_unique<FBPropertyFloat>();
    case kFBPT_double:
        return Make<FBPropertyDouble, FBPropertyAnimatableDouble>(animatable);
    case kFBPT_charptr:
        return std::make_unique<FBPropertyString>();
    case kFBPT_enum:
        return Make<FBPropertyEnum, FBPropertyAnimatableEnum>(animatable);
    case kFBPT_Time:
        return Make<FBPropertyTime, FBPropertyAnimatableTime>(animatable);
    case kFBPT_object:
        return std::make_unique<FBPropertyComponent>();
    case kFBPT_event:
        return std::make_unique<FBPropertyEvent>();
    case kFBPT_Vector4D:
        return Make<FBPropertyVector4d, FBPropertyAnimatableVector4d>(animatable);
    case kFBPT_Vector3D:
        return Make<FBPropertyVector3d, FBPropertyAnimatableVector3d>(animatable);
    case kFBPT_ColorRGB:
        return Make<FBPropertyColor, FBPropertyAnimatableColor>(animatable);
    case kFBPT_ColorRGBA:
        return Make<FBPropertyColorAndAlpha, FBPropertyAnimatableColorAndAlpha>(animatable);
    case kFBPT_Action:
        return std::make_unique<FBPropertyAction>();
    case kFBPT_TimeSpan:
        return std::make_unique<FBPropertyTimeSpan>();
    case kFBPT_Vector2D:
        return std::make_unique<FBPropertyVector2d>();
    case kFBPT_TimeCode:
    case kFBPT_stringlist:
    case kFBPT_Reference:
    case kFBPT_kReference:
        return std::make_unique<FBProperty>(type);
    }
    return nullptr;
}

// Name is the part of LongName after the last colon.
std::size_t NameStart(std::string_view long_name)
{
    const std::size_t colon = long_name.rfind(':');
    return colon == std::string_view::npos ? 0 : colon + 1;
}

void ReadName(FBComponent& owner, void* value)
{
    const char* const long_name = SdkAccess::Of(owner.LongName).Text();
    *static_cast<const char**>(value) = long_name + NameStart(long_name);
}

void WriteName(FBComponent& owner, const void* value)
{
    const char* text = *static_cast<const char* const*>(value);
    auto& long_name = SdkAccess::Of(owner.LongName);
    const std::string before = long_name.Text();
    long_name.SetText(before.substr(0, NameStart(before)) + (text ? text : ""));
}

} // namespace
} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBComponent);
FBSDKClassImplementation(FBBox);

FBComponent::FBComponent(HIObject) : state_(std::make_unique<State>())
{
    Publish(*this, Name, "Name", ReadName, WriteName);
    Publish(*this, LongName, "LongName");
    Publish(*this, Selected, "Selected");
    PublishList(*this, Components, "Components");
    PublishList(*this, Parents, "Parents");
}

FBComponent::~FBComponent() = default;

bool FBComponent::FBCreate()
{
    return true;
}
void FBComponent::FBDestroy() {}

void FBComponent::FBDelete()
{
    FBDestroy();
    FBPlug::FBDelete();
}

FBProperty* FBComponent::PropertyCreate(const char* pName, FBPropertyType pType, const char*,
                                        bool pAnimatable, bool pIsUser, FBProperty*)
{
    auto property = MakeProperty(pType, pAnimatable);
    if (!property)
        return nullptr;
    auto& state = SdkAccess::Of(*property);
    state.MakeRare().name = pName ? pName : "";
    Publish(*this, *property, state.rare->name.c_str());
    state.user = pIsUser;
    return state_->created.emplace_back(std::move(property)).get();
}

bool FBComponent::PropertyRemove(FBProperty* pProperty)
{
    const auto created = std::find_if(state_->created.begin(), state_->created.end(),
                                      [&](const auto& property) { return property.get() == pProperty; });
    if (created == state_->created.end())
        return false;
    std::erase(SdkAccess::Properties(*this), pProperty);
    state_->created.erase(created);
    return true;
}

void* FBComponent::operator new(std::size_t pSize)
{
    return ::operator new(pSize);
}
void FBComponent::operator delete(void* pMemory)
{
    ::operator delete(pMemory);
}
void* FBComponent::operator new(std::size_t pSize, int, const char*, int)
{
    return ::operator new(pSize);
}
void FBComponent::operator delete(void* pMemory, int, const char*, int)
{
    ::operator delete(pMemory);
}

FBBox::FBBox(const char* pName, HIObject pObject) : FBComponent(pObject)
{
    LongName = pName;
}

} // namespace FBSDKNamespace
