#include "host/sdk/property_state.h"
#include "host/sdk/scene_state.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace mobu_host
{
namespace
{

unsigned long long text_version = 1;

} // namespace

unsigned long long TextVersion()
{
    return text_version;
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

void FBProperty::State::SetText(std::string text)
{
    MakeRare().text = std::move(text);
    ++text_version;
}

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
        state_->SetText(text ? text : "");
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

} // namespace FBSDKNamespace
