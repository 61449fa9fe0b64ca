#pragma once

#include <functional>
#include <string>
#include <vector>

#include <fbsdk/fbsdk.h>

// Acts as the user of the menu and of popups. Regions are addressed by name.

namespace mobu_host
{

// The activated items, in order of activation.
FBSDK_DLL std::vector<FBMenuItem*> MenuItems();

struct MenuUse
{
    std::string label; // of the item
    std::string file_name;
    bool result = false; // of its Execute
};

// Does what the application does after a user has picked a menu item and a file: executes the item with `file_name`,
// records the use and returns the result of Execute. False, without a record, for an item that is not in the menu.
FBSDK_DLL bool UseMenuItem(FBMenuItem& item, const std::string& file_name);
FBSDK_DLL const std::vector<MenuUse>& MenuUses(); // in their order, of all modules

// Sets a callback that acts as the user of popups: FBPopup::Show calls it after layout and closes the popup when it
// returns. Without one Show returns false at once; an empty function removes it.
FBSDK_DLL void SetPopupPlayer(std::function<void(FBPopup& popup)> player);

// Each returns false and does nothing when the region has no such control, the control is disabled or the popup is not
// open. A click sets a radio button or toggles a check box, then calls the handlers.
FBSDK_DLL bool Click(FBPopup& popup, const std::string& region);
// Types a number, clamped to the control's limits.
FBSDK_DLL bool Edit(FBPopup& popup, const std::string& region, double value);
FBSDK_DLL bool MoveTo(FBPopup& popup, int left, int top);

FBSDK_DLL bool IsOpen(FBPopup& popup);

struct RegionEdge
{
    int offset = 0;
    FBAttachType type = kFBAttachNone;
    std::string relative; // "": the layout
    float multiplier = 1.0f;
};

struct RegionBorder
{
    FBBorderStyle style = kFBNoBorder;
    bool show_title = false;
    bool in_set = false;
    int width = 0;
    int spacing = 0;
    float max_angle = 0.0f;
    int corner_radius = 0;
};

struct Region
{
    std::string name;
    std::string title;
    RegionEdge x, y, width, height;
    RegionBorder border;
    FBVisualComponent* control = nullptr;
};

// In order of AddRegion; valid until the layout changes.
FBSDK_DLL const std::vector<Region>& Regions(FBLayout& layout);
FBSDK_DLL const Region* FindRegion(FBLayout& layout, const std::string& name); // null when there is none

} // namespace mobu_host
