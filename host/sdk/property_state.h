#pragma once

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "host/sdk/property_value.h"

#include <fbsdk/fbsdk.h>

// The state of properties, and access to the private state of SDK objects.

namespace mobu_host
{

/// Access to a value that is stored elsewhere; `value` is a buffer as of GetData and SetData.
using PropertyReader = void (*)(FBComponent& owner, void* value);
using PropertyWriter = void (*)(FBComponent& owner, const void* value);

/// Replaces the plain insertion or removal of a list.
using ListChange = void (*)(FBComponent& owner, FBComponent& item);

} // namespace mobu_host

namespace FBSDKNamespace
{

/// A scene has more than twenty properties for each model, so what few of them need is allocated separately.
struct FBProperty::State
{
    struct Rare
    {
        std::string name; // of one that a user made
        std::string text;
        std::string shown; // what AsString returned last
        double min = 0.0;
        double max = 0.0;
        std::unique_ptr<FBStringList> items;
        mobu_host::PropertyReader read = nullptr; // of a value that is stored elsewhere
        mobu_host::PropertyWriter write = nullptr;
    };

    FBPropertyType type = kFBPT_unknown;
    bool user = false;
    bool read_only = false;
    bool min_clamp = false;
    bool max_clamp = false;
    int animating_takes = 0;
    FBComponent* owner = nullptr;
    const char* name = "";                   // of a built-in one it lives as long as the program
    mobu_host::ValueBytes base;              // as assigned
    mobu_host::ValueBytes current;           // as evaluated
    const char* const* item_names = nullptr; // built-in enumerations, ends with null
    std::unique_ptr<Rare> rare;              // null: all as by default

    Rare& MakeRare()
    {
        if (!rare)
            rare = std::make_unique<Rare>();
        return *rare;
    }
    const char* Text() const { return rare ? rare->text.c_str() : ""; }
    void SetText(std::string text);
};

struct FBPropertyListComponent::Items
{
    std::vector<FBComponent*> items;
    mobu_host::ListChange add = nullptr;
    mobu_host::ListChange remove = nullptr;
};

struct FBPropertyManager::List
{
    std::vector<FBProperty*> properties;
};

struct FBPropertyEvent::Handlers
{
    struct Handler
    {
        HICallback owner;
        kICallbackHandler function;
    };
    std::vector<Handler> handlers;
};

struct FBComponent::State
{
    std::vector<std::unique_ptr<FBProperty>> created;
};

struct FBModel::Space
{
    FBModel* parent = nullptr;
    bool in_tree = false;       // the scene root or below it
    bool owned = false;         // by the scene
    bool matrix_driven = false; // local is given by animation, not made from the properties
    double local[16] = {};      // as last evaluated; rows of a row-vector matrix
    double global[16] = {};
    std::unique_ptr<std::array<double, 16>>
        rest; // the local matrix without animation, where it was set as a whole
};

} // namespace FBSDKNamespace

namespace mobu_host
{

/// Goes up, from 1, whenever the text of any property changes.
unsigned long long TextVersion();

struct SdkAccess
{
    static FBProperty::State& Of(const FBProperty& property) { return *property.state_; }
    static std::vector<FBComponent*>& Items(FBPropertyListComponent& list) { return list.items_->items; }
    static auto& ListState(FBPropertyListComponent& list) { return *list.items_; }
    static std::vector<FBProperty*>& Properties(FBComponent& component)
    {
        return component.PropertyList.list_->properties;
    }
    static auto& Handlers(FBPropertyEvent& event) { return event.handlers_->handlers; }
    static FBModel::Space& Space(FBModel& model) { return *model.space_; }
    static auto& Regions(FBLayout& layout) { return *layout.regions_; }
    static bool& Open(FBPopup& popup) { return popup.open_; }
    static std::unique_ptr<FBScene> MakeScene() { return std::unique_ptr<FBScene>(new FBScene); }

    template <class T>
    static T Current(const FBProperty& property)
    {
        T value;
        std::memcpy(&value, property.state_->current.bytes,
                    sizeof value); // NOLINT(bugprone-sizeof-expression)
        return value;
    }

    /// Assigns regardless of read-only and clamps.
    template <class T>
    static void Store(FBProperty& property, const T& value)
    {
        std::memcpy(property.state_->base.bytes, &value, sizeof value); // NOLINT(bugprone-sizeof-expression)
        property.state_->current = property.state_->base;
    }

    /// Overrides the value until Restore.
    template <class T>
    static void Drive(FBProperty& property, const T& value)
    {
        std::memcpy(property.state_->current.bytes, &value,
                    sizeof value); // NOLINT(bugprone-sizeof-expression)
    }
    static void Restore(FBProperty& property) { property.state_->current = property.state_->base; }
};

/// Gives the property its owner, its name (not copied) and, for a value that is stored elsewhere, access to it. Without
/// a writer it is read-only.
void Bind(FBComponent& owner, FBProperty& property, const char* name, PropertyReader read = nullptr,
          PropertyWriter write = nullptr);

/// Bind, and adds the property to the owner's list.
void Publish(FBComponent& owner, FBProperty& property, const char* name, PropertyReader read = nullptr,
             PropertyWriter write = nullptr);
void PublishEnum(FBComponent& owner, FBProperty& property, const char* name, const char* const* items);
void PublishList(FBComponent& owner, FBPropertyListComponent& list, const char* name,
                 ListChange add = nullptr, ListChange remove = nullptr);

/// For lists that only the host changes.
void RefuseChange(FBComponent& owner, FBComponent& item);

} // namespace mobu_host
