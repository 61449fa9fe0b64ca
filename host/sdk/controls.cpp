#include <algorithm>
#include <limits>

#include "host/sdk/event.h"
#include "host/sdk/property_state.h"
#include "mobu_host/ui.h"

namespace FBSDKNamespace
{

struct FBVisualComponent::Children
{
    struct Child
    {
        FBVisualComponent* component;
        int id;
    };
    std::vector<Child> children;
};

struct FBLayout::Regions
{
    std::vector<mobu_host::Region> regions;

    mobu_host::Region* Find(const char* name)
    {
        const auto found =
            std::find_if(regions.begin(), regions.end(),
                         [&](const mobu_host::Region& region) { return name && region.name == name; });
        return found == regions.end() ? nullptr : &*found;
    }
};

} // namespace FBSDKNamespace

namespace mobu_host
{
namespace
{

const char* const kBorderStyles[] = {"None",
                                     "Standard",
                                     "Emboss",
                                     "Emboss Smooth",
                                     "Emboss Edge Smooth",
                                     "Emboss Smooth Edge",
                                     "Standard Smooth",
                                     "Standard Edge Smooth",
                                     "Standard Smooth Edge",
                                     "Highlight",
                                     "Picking",
                                     nullptr};
const char* const kJustifications[] = {"Left", "Right", "Center", nullptr};
const char* const kButtonStyles[] = {"Push Button", "Bitmap Button",   "Radio Button",
                                     "Checkbox",    "Bitmap 2 States", nullptr};
const char* const kButtonLooks[] = {"Normal", "Color Change", "Push", "Flat", nullptr};
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

std::function<void(FBPopup&)>& PopupPlayer()
{
    static std::function<void(FBPopup&)> player;
    return player;
}

// One property seen under a second name.
template <auto Member>
void ReadMember(FBComponent& owner, void* value)
{
    auto& visual = static_cast<FBVisualComponent&>(owner);
    (visual.*Member).GetData(value, sizeof(ValueBytes));
}

template <auto Member>
void WriteMember(FBComponent& owner, const void* value)
{
    auto& visual = static_cast<FBVisualComponent&>(owner);
    (visual.*Member).SetData(const_cast<void*>(value));
}

void FireEvent(FBPropertyEvent& event, FBComponent& sender, FBEventType type)
{
    KEventBase data{type};
    const auto handlers = SdkAccess::Handlers(event);
    for (auto handler = handlers.rbegin(); handler != handlers.rend(); ++handler)
        (handler->owner->*handler->function)(&sender, &data);
}

struct Box
{
    int left = 0, top = 0, width = 0, height = 0;
};

Box BoxOf(FBLayout& layout, const std::vector<Region>& regions, const std::string& name);

int Scaled(const RegionEdge& edge, int length)
{
    return edge.offset + static_cast<int>(edge.multiplier * static_cast<float>(length));
}

// Where the edge lies.
int Placed(const RegionEdge& edge, FBLayout& layout, const std::vector<Region>& regions)
{
    const Box box = BoxOf(layout, regions, edge.relative);
    switch (edge.type)
    {
    case kFBAttachLeft:
        return box.left + edge.offset;
    case kFBAttachRight:
        return box.left + box.width + edge.offset;
    case kFBAttachTop:
        return box.top + edge.offset;
    case kFBAttachBottom:
        return box.top + box.height + edge.offset;
    default:
        return edge.offset;
    }
}

// A length: given, taken from another region, or reaching from start to an edge of one.
int Length(const RegionEdge& edge, int start, FBLayout& layout, const std::vector<Region>& regions)
{
    const Box box = BoxOf(layout, regions, edge.relative);
    switch (edge.type)
    {
    case kFBAttachWidth:
        return Scaled(edge, box.width);
    case kFBAttachHeight:
        return Scaled(edge, box.height);
    case kFBAttachNone:
        return edge.offset;
    default:
        return Placed(edge, layout, regions) - start;
    }
}

Box BoxOf(FBLayout& layout, const std::vector<Region>& regions, const std::string& name)
{
    const auto region = std::find_if(regions.begin(), regions.end(),
                                     [&](const Region& candidate) { return candidate.name == name; });
    Box box;
    if (name.empty() || region == regions.end())
    {
        box.width = layout.Width;
        box.height = layout.Height;
        return box;
    }
    box.left = Placed(region->x, layout, regions);
    box.top = Placed(region->y, layout, regions);
    box.width = Length(region->width, box.left, layout, regions);
    box.height = Length(region->height, box.top, layout, regions);
    if (region->x.type == kFBAttachCenter)
    {
        const Box around = BoxOf(layout, regions, region->x.relative);
        box.left = around.left + (around.width - box.width) / 2 + region->x.offset;
    }
    if (region->y.type == kFBAttachCenter)
    {
        const Box around = BoxOf(layout, regions, region->y.relative);
        box.top = around.top + (around.height - box.height) / 2 + region->y.offset;
    }
    return box;
}

template <class Control>
Control* UsableControl(FBPopup& popup, const std::string& region)
{
    auto* control = dynamic_cast<Control*>(popup.GetControl(region.c_str()));
    return SdkAccess::Open(popup) && control && control->Enabled ? control : nullptr;
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

void SetPopupPlayer(std::function<void(FBPopup&)> player)
{
    PopupPlayer() = std::move(player);
}
bool IsOpen(FBPopup& popup)
{
    return SdkAccess::Open(popup);
}
const std::vector<Region>& Regions(FBLayout& layout)
{
    return SdkAccess::Regions(layout).regions;
}

const Region* FindRegion(FBLayout& layout, const std::string& name)
{
    return SdkAccess::Regions(layout).Find(name.c_str());
}

bool Click(FBPopup& popup, const std::string& region)
{
    auto* button = UsableControl<FBButton>(popup, region);
    if (!button)
        return false;
    if (button->Style == kFBRadioButton)
        button->State = 1;
    else if (button->Style == kFBCheckbox)
        button->State = button->State == 0 ? 1 : 0;
    FireEvent(button->OnClick, *button, kFBEventActivate);
    return true;
}

bool Edit(FBPopup& popup, const std::string& region, double value)
{
    auto* edit = UsableControl<FBEditNumber>(popup, region);
    if (!edit)
        return false;
    edit->Value = std::max<double>(edit->Min, std::min<double>(edit->Max, value));
    FireEvent(edit->OnChange, *edit, kFBEventChange);
    return true;
}

bool MoveTo(FBPopup& popup, int left, int top)
{
    if (!IsOpen(popup))
        return false;
    popup.Left = left;
    popup.Top = top;
    return true;
}

} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBVisualComponent);
FBSDKClassImplementation(FBLayout);
FBSDKClassImplementation(FBPopup);
FBSDKClassImplementation(FBButton);
FBSDKClassImplementation(FBEditNumber);
FBSDKClassImplementation(FBLabel);
FBSDKClassImplementation(FBMenuItem);

FBVisualComponent::FBVisualComponent(HIObject pObject)
    : FBComponent(pObject), children_(std::make_unique<Children>())
{
    Publish(*this, Caption, "Caption");
    Publish(*this, Hint, "Hint");
    Publish(*this, Visible, "Visible");
    Publish(*this, ReadOnly, "ReadOnly");
    Publish(*this, Enabled, "Enabled");
    Publish(*this, Left, "Left");
    Publish(*this, Top, "Top");
    Publish(*this, Width, "Width");
    Publish(*this, Height, "Height");
    Publish(*this, OnEnter, "OnEnter");
    Publish(*this, OnExit, "OnExit");
    Bind(*this, Region.Name, "Region.Name");
    using Visual = FBVisualComponent;
    Bind(*this, Region.X, "Region.X", ReadMember<&Visual::Left>, WriteMember<&Visual::Left>);
    Bind(*this, Region.Y, "Region.Y", ReadMember<&Visual::Top>, WriteMember<&Visual::Top>);
    Bind(*this, Region.Width, "Region.Width", ReadMember<&Visual::Width>, WriteMember<&Visual::Width>);
    Bind(*this, Region.Height, "Region.Height", ReadMember<&Visual::Height>, WriteMember<&Visual::Height>);
    Bind(*this, Border.Caption, "Border.Caption");
    Bind(*this, Border.ShowCaption, "Border.ShowCaption");
    Bind(*this, Border.Style, "Border.Style");
    SdkAccess::Of(Border.Style).item_names = kBorderStyles;
    Bind(*this, Border.InSet, "Border.InSet");
    Bind(*this, Border.Width, "Border.Width");
    Bind(*this, Border.Spacing, "Border.Spacing");
    Bind(*this, Border.MaxAngle, "Border.MaxAngle");
    Bind(*this, Border.CornerRadius, "Border.CornerRadius");
    Visible = true;
    Enabled = true;
}

FBVisualComponent::~FBVisualComponent() = default;

bool FBVisualComponent::AddChild(FBVisualComponent* pChild, int pId)
{
    if (pChild)
        children_->children.push_back({pChild, pId});
    return pChild != nullptr;
}

FBVisualComponent* FBVisualComponent::GetChild(int pId)
{
    for (const auto& child : children_->children)
        if (child.id == pId)
            return child.component;
    return nullptr;
}

// Nothing is drawn here and no mouse exists: only what is derived from a control has something to do.
void FBVisualComponent::Refresh(bool) {}
bool FBVisualComponent::IsView()
{
    return false;
}
void FBVisualComponent::ViewExpose() {}
void FBVisualComponent::ViewInput(int, int, int, int, int) {}

FBLayout::FBLayout(HIObject pObject) : FBVisualComponent(pObject), regions_(std::make_unique<Regions>())
{
    Publish(*this, OnShow, "OnShow");
    Publish(*this, OnResize, "OnResize");
    Publish(*this, OnPaint, "OnPaint");
    Publish(*this, OnIdle, "OnIdle");
    Publish(*this, OnInput, "OnInput");
}

FBLayout::~FBLayout() = default;

bool FBLayout::AddRegion(const char* pName, const char* pTitle, int pX, FBAttachType pXType,
                         const char* pXRelative, float pMultX, int pY, FBAttachType pYType,
                         const char* pYRelative, float pMultY, int pW, FBAttachType pWType,
                         const char* pWRelative, float pMultW, int pH, FBAttachType pHType,
                         const char* pHRelative, float pMultH)
{
    const auto edge = [](int offset, FBAttachType type, const char* relative, float multiplier) {
        return RegionEdge{offset, type, relative ? relative : "", multiplier};
    };
    mobu_host::Region region{pName ? pName : "",
                             pTitle ? pTitle : "",
                             edge(pX, pXType, pXRelative, pMultX),
                             edge(pY, pYType, pYRelative, pMultY),
                             edge(pW, pWType, pWRelative, pMultW),
                             edge(pH, pHType, pHRelative, pMultH),
                             {},
                             nullptr};
    for (const RegionEdge* side : {&region.x, &region.y, &region.width, &region.height})
        if (!side->relative.empty() && !regions_->Find(side->relative.c_str()))
            return false;
    if (region.name.empty() || regions_->Find(pName))
        return false;
    regions_->regions.push_back(std::move(region));
    return true;
}

bool FBLayout::MoveRegion(const char* pName, int pX, int pY)
{
    auto* region = regions_->Find(pName);
    if (!region)
        return false;
    region->x.offset = pX;
    region->y.offset = pY;
    return true;
}

bool FBLayout::SizeRegion(const char* pName, int pW, int pH)
{
    auto* region = regions_->Find(pName);
    if (!region)
        return false;
    region->width.offset = pW;
    region->height.offset = pH;
    return true;
}

bool FBLayout::RemoveRegion(const char* pName)
{
    return std::erase_if(regions_->regions,
                         [&](const auto& region) { return pName && region.name == pName; }) > 0;
}

bool FBLayout::RenameRegion(const char* pOldName, const char* pNewName)
{
    auto* region = regions_->Find(pOldName);
    if (!region || !pNewName || !*pNewName || regions_->Find(pNewName))
        return false;
    const std::string old_name = region->name;
    for (auto& other : regions_->regions)
        for (RegionEdge* side : {&other.x, &other.y, &other.width, &other.height})
            if (side->relative == old_name)
                side->relative = pNewName;
    region->name = pNewName;
    return true;
}

bool FBLayout::SetRegionTitle(const char* pName, const char* pTitle)
{
    auto* region = regions_->Find(pName);
    if (region)
        region->title = pTitle ? pTitle : "";
    return region != nullptr;
}

const char* FBLayout::GetRegion(int pIndex)
{
    const auto index = static_cast<std::size_t>(pIndex);
    return pIndex >= 0 && index < regions_->regions.size() ? regions_->regions[index].name.c_str() : nullptr;
}

bool FBLayout::GetRegionPositions(const char* pName, bool pComputed, int* pX1, int* pY1, int* pX2, int* pY2)
{
    const auto* region = regions_->Find(pName);
    if (!region)
        return false;
    int edges[4] = {region->x.offset, region->y.offset, region->width.offset, region->height.offset};
    if (pComputed)
    {
        const Box box = BoxOf(*this, regions_->regions, region->name);
        edges[0] = box.left;
        edges[1] = box.top;
        edges[2] = box.left + box.width;
        edges[3] = box.top + box.height;
    }
    int* const targets[4] = {pX1, pY1, pX2, pY2};
    for (int i = 0; i < 4; ++i)
        if (targets[i])
            *targets[i] = edges[i];
    return true;
}

bool FBLayout::SetControl(const char* pName, FBVisualComponent* pComponent)
{
    auto* region = regions_->Find(pName);
    if (!region || !pComponent)
        return false;
    region->control = pComponent;
    pComponent->Region.Name = pName;
    return true;
}

bool FBLayout::SetControl(const char* pName, FBVisualComponent& pComponent)
{
    return SetControl(pName, &pComponent);
}
bool FBLayout::SetView(const char* pName, FBVisualComponent* pComponent)
{
    return SetControl(pName, pComponent);
}

FBVisualComponent* FBLayout::GetControl(const char* pName)
{
    const auto* region = regions_->Find(pName);
    return region ? region->control : nullptr;
}

bool FBLayout::ClearControl(const char* pName)
{
    auto* region = regions_->Find(pName);
    if (region)
        region->control = nullptr;
    return region != nullptr;
}

bool FBLayout::SetBorder(const char* pName, FBBorderStyle pType, bool pShowTitle, bool pInSet, int pWidth,
                         int pSpacing, float pMaxAngle, int pCornerRadius)
{
    auto* region = regions_->Find(pName);
    if (region)
        region->border = {pType, pShowTitle, pInSet, pWidth, pSpacing, pMaxAngle, pCornerRadius};
    return region != nullptr;
}

void FBLayout::Restructure(bool) {} // positions are worked out when they are asked for

FBPopup::FBPopup()
{
    using Visual = FBVisualComponent;
    Bind(*this, Caption, "Caption", ReadMember<&Visual::Caption>, WriteMember<&Visual::Caption>);
    Publish(*this, Modal, "Modal");
    Modal = true;
}

bool FBPopup::Show(FBVisualComponent*)
{
    const auto player = PopupPlayer();
    if (!player)
        return false;
    open_ = true;
    FireEvent(OnShow, *this, kFBEventShow);
    if (open_)
        player(*this);
    open_ = false;
    return true;
}

void FBPopup::Close(bool)
{
    open_ = false;
}

FBButton::FBButton()
{
    Publish(*this, State, "State");
    PublishEnum(*this, Style, "Style", kButtonStyles);
    PublishEnum(*this, Look, "Look", kButtonLooks);
    PublishEnum(*this, Justify, "Justify", kJustifications);
    Publish(*this, OnClick, "OnClick");
}

FBEditNumber::FBEditNumber()
{
    Publish(*this, Value, "Value");
    Publish(*this, Min, "Min");
    Publish(*this, Max, "Max");
    Publish(*this, Precision, "Precision");
    Publish(*this, LargeStep, "LargeStep");
    Publish(*this, SmallStep, "SmallStep");
    Publish(*this, OnChange, "OnChange");
    Min = std::numeric_limits<double>::lowest();
    Max = std::numeric_limits<double>::max();
    LargeStep = 5.0;
    SmallStep = 1.0;
}

FBLabel::FBLabel()
{
    PublishEnum(*this, Justify, "Justify", kJustifications);
    Publish(*this, Style, "Style");
    Publish(*this, WordWrap, "WordWrap");
}

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
