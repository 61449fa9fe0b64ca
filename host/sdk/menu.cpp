#include "host/sdk/property_state.h"
#include "mobu_host/ui.h"

namespace mobu_host
{
namespace
{

const char* const kMenuItemTypes[] = {"Motion Import", "Scene Import", "Motion Export", "Scene Export",
                                      nullptr};

std::vector<FBMenuItem*>& ActiveMenuItems()
{
    static std::vector<FBMenuItem*> items;
    return items;
}

std::vector<MenuUse>& RecordedUses()
{
    static std::vector<MenuUse> uses;
    return uses;
}

} // namespace

std::vector<FBMenuItem*> MenuItems()
{
    return ActiveMenuItems();
}

bool UseMenuItem(FBMenuItem& item, const std::string& file_name)
{
    if (!item.IsActive())
        return false;
    MenuUse use{static_cast<const char*>(item.Label), file_name, false};
    use.result = item.Execute(file_name.c_str());
    RecordedUses().push_back(use);
    return use.result;
}

const std::vector<MenuUse>& MenuUses()
{
    return RecordedUses();
}

} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBMenuItem);

FBMenuItem::FBMenuItem()
{
    Publish(*this, Component, "Component");
    Publish(*this, Extension, "Extension");
    Publish(*this, Label, "Label");
    Publish(*this, Description, "Description");
    Publish(*this, Path, "Path");
    PublishEnum(*this, Type, "Type", kMenuItemTypes);
}

FBMenuItem::~FBMenuItem()
{
    std::erase(ActiveMenuItems(), this);
}

void FBMenuItem::Set(FBMenuItemType pType, const char* pExtension, const char* pLabel,
                     const char* pDescription)
{
    Type = pType;
    Extension = pExtension;
    Label = pLabel;
    Description = pDescription;
}

bool FBMenuItem::IsActive()
{
    return active_;
}

void FBMenuItem::Activate(bool pState)
{
    if (!pState || active_)
        return;
    active_ = true;
    ActiveMenuItems().push_back(this);
}

void FBMenuItem::OnItemSelectEvent(HIRegister, HKEvent) {} // the headless menu goes straight to Execute

} // namespace FBSDKNamespace
