#include "host/sdk/second_name.h"

#include <limits>

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

} // namespace
} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBVisualComponent);
FBSDKClassImplementation(FBButton);
FBSDKClassImplementation(FBEditNumber);
FBSDKClassImplementation(FBLabel);

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
    BindSecondName<&Visual::Left>(*this, Region.X, "Region.X");
    BindSecondName<&Visual::Top>(*this, Region.Y, "Region.Y");
    BindSecondName<&Visual::Width>(*this, Region.Width, "Region.Width");
    BindSecondName<&Visual::Height>(*this, Region.Height, "Region.Height");
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

// Nothing is drawn and there is no mouse: only derived classes have something to do.
void FBVisualComponent::Refresh(bool) {}
bool FBVisualComponent::IsView()
{
    return false;
}
void FBVisualComponent::ViewExpose() {}
void FBVisualComponent::ViewInput(int, int, int, int, int) {}

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

} // namespace FBSDKNamespace
