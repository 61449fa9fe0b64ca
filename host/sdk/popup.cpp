// Popups, and what a user does with them.

#include "host/sdk/event.h"
#include "host/sdk/layout.h"
#include "host/sdk/second_name.h"

namespace mobu_host
{
namespace
{

std::function<void(FBPopup&)>& PopupPlayer()
{
    static std::function<void(FBPopup&)> player;
    return player;
}

void FireEvent(FBPropertyEvent& event, FBComponent& sender, FBEventType type)
{
    KEventBase data{type};
    const auto handlers = SdkAccess::Handlers(event);
    for (auto handler = handlers.rbegin(); handler != handlers.rend(); ++handler)
        (handler->owner->*handler->function)(&sender, &data);
}

template <class Control>
Control* UsableControl(FBPopup& popup, const std::string& region)
{
    auto* control = dynamic_cast<Control*>(popup.GetControl(region.c_str()));
    return SdkAccess::Open(popup) && control && control->Enabled ? control : nullptr;
}

} // namespace

void SetPopupPlayer(std::function<void(FBPopup&)> player)
{
    PopupPlayer() = std::move(player);
}

bool IsOpen(FBPopup& popup)
{
    return SdkAccess::Open(popup);
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

FBSDKClassImplementation(FBPopup);

FBPopup::FBPopup()
{
    BindSecondName<&FBVisualComponent::Caption>(*this, Caption, "Caption");
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

} // namespace FBSDKNamespace
