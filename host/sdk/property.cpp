#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "host/sdk/property_state.h"
#include "host/sdk/scene_state.h"

namespace mobu_host
{

std::size_t ValueSize(FBPropertyType type)
{
    switch (type)
    {
    case kFBPT_bool:
        return sizeof(bool);
    case kFBPT_int:
    case kFBPT_enum:
        return sizeof(int);
    case kFBPT_int64:
    case kFBPT_uint64:
        return sizeof(kLongLong);
    case kFBPT_float:
        return sizeof(float);
    case kFBPT_double:
        return sizeof(double);
    case kFBPT_charptr:
        return sizeof(const char*);
    case kFBPT_Time:
        return sizeof(FBTime);
    case kFBPT_object:
        return sizeof(void*);
    case kFBPT_Vector4D:
    case kFBPT_ColorRGBA:
        return sizeof(FBVector4d);
    case kFBPT_Vector3D:
    case kFBPT_ColorRGB:
        return sizeof(FBVector3d);
    case kFBPT_Vector2D:
        return sizeof(FBVector2d);
    case kFBPT_TimeSpan:
        return sizeof(FBTimeSpan);
    case kFBPT_unknown:
    case kFBPT_TimeCode:
    case kFBPT_event:
    case kFBPT_stringlist:
    case kFBPT_Action:
    case kFBPT_Reference:
    case kFBPT_kReference:
        break;
    }
    return 0;
}

int NumberCount(FBPropertyType type)
{
    switch (type)
    {
    case kFBPT_bool:
    case kFBPT_int:
    case kFBPT_enum:
    case kFBPT_int64:
    case kFBPT_uint64:
    case kFBPT_float:
    case kFBPT_double:
    case kFBPT_Time:
        return 1;
    case kFBPT_Vector2D:
    case kFBPT_TimeSpan:
        return 2;
    case kFBPT_Vector3D:
    case kFBPT_ColorRGB:
        return 3;
    case kFBPT_Vector4D:
    case kFBPT_ColorRGBA:
        return 4;
    default:
        return 0;
    }
}

namespace
{

template <class T>
T Load(const ValueBytes& value, int component = 0)
{
    T number;
    std::memcpy(&number, value.bytes + sizeof number * static_cast<std::size_t>(component), sizeof number);
    return number;
}

template <class T>
void Keep(ValueBytes& value, T number, int component = 0)
{
    std::memcpy(value.bytes + sizeof number * static_cast<std::size_t>(component), &number, sizeof number);
}

// The nearest whole number that the type can hold; 0 for NaN.
template <class Integer>
Integer Nearest(double number)
{
    const double rounded = std::isnan(number) ? 0.0 : std::round(number);
    if (rounded >= static_cast<double>(std::numeric_limits<Integer>::max()))
        return std::numeric_limits<Integer>::max();
    if (rounded <= static_cast<double>(std::numeric_limits<Integer>::min()))
        return std::numeric_limits<Integer>::min();
    return static_cast<Integer>(rounded);
}

} // namespace

double NumberAt(FBPropertyType type, const ValueBytes& value, int component)
{
    switch (type)
    {
    case kFBPT_bool:
        return Load<bool>(value);
    case kFBPT_int:
    case kFBPT_enum:
        return Load<int>(value);
    case kFBPT_int64:
        return static_cast<double>(Load<kLongLong>(value));
    case kFBPT_uint64:
        return static_cast<double>(Load<unsigned long long>(value));
    case kFBPT_float:
        return static_cast<double>(Load<float>(value));
    case kFBPT_Time:
    case kFBPT_TimeSpan:
        return Load<FBTime>(value, component).GetSecondDouble();
    default:
        return NumberCount(type) ? Load<double>(value, component) : 0.0;
    }
}

void SetNumberAt(FBPropertyType type, ValueBytes& value, int component, double number)
{
    switch (type)
    {
    case kFBPT_bool:
        return Keep(value, number >= 0.5);
    case kFBPT_int:
    case kFBPT_enum:
        return Keep(value, Nearest<int>(number));
    case kFBPT_int64:
        return Keep(value, Nearest<kLongLong>(number));
    case kFBPT_uint64:
        return Keep(value, Nearest<unsigned long long>(number));
    case kFBPT_float:
        return Keep(value, static_cast<float>(number));
    case kFBPT_Time:
    case kFBPT_TimeSpan:
    {
        FBTime time;
        time.SetSecondDouble(number);
        return Keep(value, time, component);
    }
    default:
        if (NumberCount(type))
            Keep(value, number, component);
    }
}

void Bind(FBComponent& owner, FBProperty& property, const char* name, PropertyReader read,
          PropertyWriter write)
{
    auto& state = SdkAccess::Of(property);
    state.owner = &owner;
    state.name = name;
    state.read_only = read && !write;
    if (!read)
        return;
    state.MakeRare().read = read;
    state.rare->write = write;
}

void Publish(FBComponent& owner, FBProperty& property, const char* name, PropertyReader read,
             PropertyWriter write)
{
    Bind(owner, property, name, read, write);
    owner.PropertyList.Add(&property);
}

void PublishEnum(FBComponent& owner, FBProperty& property, const char* name, const char* const* items)
{
    Publish(owner, property, name);
    SdkAccess::Of(property).item_names = items;
}

void PublishList(FBComponent& owner, FBPropertyListComponent& list, const char* name, ListChange add,
                 ListChange remove)
{
    Publish(owner, list, name);
    SdkAccess::ListState(list).add = add;
    SdkAccess::ListState(list).remove = remove;
}

void RefuseChange(FBComponent&, FBComponent&) {}

} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBProperty);
FBSDKClassImplementation(FBPropertyAnimatable);

FBProperty::FBProperty(FBPropertyType pType) : state_(std::make_unique<State>())
{
    state_->type = pType;
}

FBProperty::~FBProperty()
{
    if (state_->animating_takes)
        TheScene().animation.Forget(*this);
}

const char* FBProperty::GetName()
{
    return state_->name;
}
FBPropertyType FBProperty::GetPropertyType()
{
    return state_->type;
}

const char* FBProperty::GetPropertyTypeName()
{
    static const char* const names[] = {
        "Unknown",  "Integer",   "Int64",    "UInt64",    "Bool",     "Float",      "Number",  "KString",
        "Enum",     "Time",      "TimeCode", "object",    "event",    "StringList", "Vector4", "Vector3D",
        "ColorRGB", "ColorRGBA", "Action",   "Reference", "TimeSpan", "kReference", "Vector2"};
    return names[GetPropertyType()];
}

bool FBProperty::IsUserProperty()
{
    return state_->user;
}
bool FBProperty::IsInternal()
{
    return !state_->user;
}
bool FBProperty::IsReferenceProperty()
{
    return GetPropertyType() == kFBPT_Reference;
}
bool FBProperty::IsAnimatable()
{
    return false;
}
bool FBProperty::IsList()
{
    return false;
}
bool FBProperty::IsReadOnly()
{
    return state_->read_only;
}
bool FBProperty::IsMinClamp()
{
    return state_->min_clamp;
}
bool FBProperty::IsMaxClamp()
{
    return state_->max_clamp;
}
double FBProperty::GetMin()
{
    return state_->rare ? state_->rare->min : 0.0;
}
double FBProperty::GetMax()
{
    return state_->rare ? state_->rare->max : 0.0;
}

void FBProperty::SetMin(double pMin, bool pForce)
{
    state_->MakeRare().min = pMin;
    state_->min_clamp = pForce;
}

void FBProperty::SetMax(double pMax, bool pForce)
{
    state_->MakeRare().max = pMax;
    state_->max_clamp = pForce;
}

void FBProperty::SetMinMax(double pMin, double pMax, bool pForceMin, bool pForceMax)
{
    SetMin(pMin, pForceMin);
    SetMax(pMax, pForceMax);
}

void FBProperty::GetData(void* pData, int pSize, FBEvaluateInfo*) const
{
    const std::size_t size =
        std::min(ValueSize(state_->type), pSize < 0 ? 0 : static_cast<std::size_t>(pSize));
    if (state_->rare && state_->rare->read)
    {
        ValueBytes value;
        state_->rare->read(*state_->owner, value.bytes);
        std::memcpy(pData, value.bytes, size);
    }
    else if (state_->type == kFBPT_charptr)
    {
        const char* text = state_->Text();
        std::memcpy(pData, &text, size);
    }
    else
    {
        std::memcpy(pData, state_->current.bytes, size);
    }
}

void FBProperty::SetData(void* pData)
{
    if (state_->read_only)
        return;
    ValueBytes value;
    std::memcpy(value.bytes, pData, ValueSize(state_->type));
    if (NumberCount(state_->type) == 1 && (state_->min_clamp || state_->max_clamp))
    {
        double number = NumberAt(state_->type, value, 0);
        if (state_->min_clamp)
            number = std::max(number, GetMin());
        if (state_->max_clamp)
            number = std::min(number, GetMax());
        SetNumberAt(state_->type, value, 0, number);
    }
    if (state_->rare && state_->rare->write)
    {
        state_->rare->write(*state_->owner, value.bytes);
    }
    else if (state_->type == kFBPT_charptr)
    {
        const char* text = nullptr;
        std::memcpy(&text, value.bytes, sizeof text);
        state_->MakeRare().text = std::string(text ? text : "");
    }
    else
    {
        state_->base = value;
        state_->current = value;
    }
}

int FBProperty::AsInt()
{
    ValueBytes value;
    GetData(value.bytes, sizeof value.bytes);
    return NumberCount(state_->type) ? Nearest<int>(std::trunc(NumberAt(state_->type, value, 0))) : 0;
}

void FBProperty::SetInt(int pValue)
{
    ValueBytes value;
    if (!NumberCount(state_->type))
        return;
    GetData(value.bytes, sizeof value.bytes);
    SetNumberAt(state_->type, value, 0, pValue);
    SetData(value.bytes);
}

const char* FBProperty::AsString(FBDataAsStringFlag)
{
    ValueBytes value;
    GetData(value.bytes, sizeof value.bytes);
    std::string& shown = state_->MakeRare().shown;
    shown.clear();
    if (state_->type == kFBPT_charptr)
    {
        const char* text = nullptr;
        std::memcpy(&text, value.bytes, sizeof text);
        shown = text ? text : "";
    }
    else if (const char* item = state_->type == kFBPT_enum ? EnumList(AsInt()) : nullptr)
    {
        shown = item;
    }
    else
    {
        for (int i = 0; i < NumberCount(state_->type); ++i)
        {
            char number[40];
            std::snprintf(number, sizeof number, i ? ",%.10g" : "%.10g", NumberAt(state_->type, value, i));
            shown += number;
        }
    }
    return shown.c_str();
}

bool FBProperty::SetString(const char* pValue)
{
    if (!pValue || state_->read_only)
        return false;
    if (state_->type == kFBPT_charptr)
    {
        SetData(&pValue);
        return true;
    }
    if (state_->type == kFBPT_enum)
        for (int i = 0; const char* item = EnumList(i); ++i)
            if (std::strcmp(item, pValue) == 0)
            {
                SetInt(i);
                return true;
            }
    ValueBytes value;
    for (int i = 0; i < NumberCount(state_->type); ++i)
    {
        char* end = nullptr;
        SetNumberAt(state_->type, value, i, std::strtod(pValue, &end));
        const bool last = i + 1 == NumberCount(state_->type);
        if (end == pValue || *end != (last ? '\0' : ','))
            return false;
        pValue = end + 1;
    }
    if (NumberCount(state_->type))
        SetData(value.bytes);
    return NumberCount(state_->type) > 0;
}

const char* FBProperty::EnumList(int pIndex)
{
    if (state_->rare && state_->rare->items)
        return state_->rare->items->GetAt(pIndex);
    if (!state_->item_names || pIndex < 0)
        return nullptr;
    for (int i = 0; state_->item_names[i]; ++i)
        if (i == pIndex)
            return state_->item_names[i];
    return nullptr;
}

FBStringList* FBProperty::GetEnumStringList(bool pCreateIt)
{
    if (pCreateIt && state_->type == kFBPT_enum && !state_->MakeRare().items)
        state_->rare->items = std::make_unique<FBStringList>();
    return state_->rare ? state_->rare->items.get() : nullptr;
}

void FBProperty::NotifyEnumStringListChanged() {} // nothing keeps a copy of the items

FBPropertyAnimatable::FBPropertyAnimatable(FBPropertyType pType) : FBProperty(pType) {}
bool FBPropertyAnimatable::IsAnimatable()
{
    return true;
}
bool FBPropertyAnimatable::IsAnimated()
{
    return TheScene().animation.Animates(TheScene().player.take, *this);
}

void FBPropertyAnimatable::SetAnimated(bool pState)
{
    if (!pState && TheScene().player.take)
        AnimateProperty(*this, *TheScene().player.take, {});
}

bool FBPropertyString::operator==(const char* pText) const
{
    const char* text = *this;
    return text && pText ? std::strcmp(text, pText) == 0 : text == pText;
}

bool FBPropertyString::operator!=(const char* pText) const
{
    return !(*this == pText);
}

FBPropertyComponent::FBPropertyComponent() : FBProperty(kFBPT_object) {}
FBPropertyAction::FBPropertyAction() : FBProperty(kFBPT_Action) {}

FBPropertyEvent::FBPropertyEvent() : FBProperty(kFBPT_event), handlers_(std::make_unique<Handlers>()) {}
FBPropertyEvent::~FBPropertyEvent() = default;

void FBPropertyEvent::Add(HICallback pOwner, kICallbackHandler pHandler)
{
    if (pOwner && pHandler)
        handlers_->handlers.push_back({pOwner, pHandler});
}

void FBPropertyEvent::Remove(HICallback pOwner, kICallbackHandler pHandler)
{
    std::erase_if(handlers_->handlers,
                  [&](const auto& entry) { return entry.owner == pOwner && entry.function == pHandler; });
}

void FBPropertyEvent::RemoveAll()
{
    handlers_->handlers.clear();
}

FBPropertyBasicList::FBPropertyBasicList() : FBProperty(kFBPT_unknown) {}
bool FBPropertyBasicList::IsList()
{
    return true;
}

FBPropertyListComponent::FBPropertyListComponent() : items_(std::make_unique<Items>()) {}
FBPropertyListComponent::~FBPropertyListComponent() = default;

int FBPropertyListComponent::GetCount()
{
    return static_cast<int>(items_->items.size());
}
FBComponent* FBPropertyListComponent::operator[](int pIndex)
{
    return GetAt(pIndex);
}

FBComponent* FBPropertyListComponent::GetAt(int pIndex)
{
    const auto index = static_cast<std::size_t>(pIndex);
    return pIndex >= 0 && index < items_->items.size() ? items_->items[index] : nullptr;
}

int FBPropertyListComponent::Add(FBComponent* pItem)
{
    if (pItem && items_->add)
        items_->add(*SdkAccess::Of(*this).owner, *pItem);
    else if (pItem)
        items_->items.push_back(pItem);
    return GetCount();
}

int FBPropertyListComponent::Remove(FBComponent* pItem)
{
    const int index = Find(pItem);
    if (index >= 0)
        RemoveAt(index);
    return GetCount();
}

void FBPropertyListComponent::RemoveAt(int pIndex)
{
    FBComponent* item = GetAt(pIndex);
    if (item && items_->remove)
        items_->remove(*SdkAccess::Of(*this).owner, *item);
    else if (item)
        items_->items.erase(items_->items.begin() + pIndex);
}

void FBPropertyListComponent::RemoveAll()
{
    const std::vector<FBComponent*> all = items_->items;
    for (FBComponent* item : all)
        Remove(item);
}

int FBPropertyListComponent::Find(FBComponent* pItem)
{
    const auto& items = items_->items;
    const auto found = std::find(items.begin(), items.end(), pItem);
    return found == items.end() ? -1 : static_cast<int>(found - items.begin());
}

FBPropertyManager::FBPropertyManager() : list_(std::make_unique<List>()) {}
FBPropertyManager::~FBPropertyManager() = default;

int FBPropertyManager::GetCount()
{
    return static_cast<int>(list_->properties.size());
}

FBProperty* FBPropertyManager::operator[](int pIndex)
{
    const auto index = static_cast<std::size_t>(pIndex);
    return pIndex >= 0 && index < list_->properties.size() ? list_->properties[index] : nullptr;
}

FBProperty* FBPropertyManager::Find(const char* pName, bool)
{
    for (FBProperty* property : list_->properties)
        if (pName && std::strcmp(property->GetName(), pName) == 0)
            return property;
    return nullptr;
}

void FBPropertyManager::Add(FBProperty* pProperty)
{
    if (pProperty)
        list_->properties.push_back(pProperty);
}

} // namespace FBSDKNamespace
