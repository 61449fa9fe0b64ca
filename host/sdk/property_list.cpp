// Properties that hold lists: of components, of event handlers, and a component's own properties.

#include "host/sdk/property_state.h"

#include <algorithm>
#include <cstring>

namespace FBSDKNamespace
{

using namespace mobu_host;

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
