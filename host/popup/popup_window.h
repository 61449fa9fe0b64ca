#pragma once

#include <string>

#include <fbsdk/fbsdk.h>

// Popups in a window that one can look at and use: SetPopupPlayer(ShowInWindow).

namespace mobu_host
{

// Why no window can be shown here, for the user; empty when one can.
std::string WhyNoWindow();

// Shows an open popup, laid out by its regions, and returns when it has closed: by a handler, by the window's own
// button or with Escape. The popup's Width and Height are those inside the window's frame, Left and Top where it
// stands; they follow when the user moves it. Only where WhyNoWindow is empty.
//
// Handlers run as Click, Edit and MoveTo of mobu_host/ui.h tell; what they change is shown at once. In a box for
// a number the arrow keys and the wheel go by SmallStep, the page keys by LargeStep; what was typed counts from
// Enter on or when the box is left. All text is as large as fits its regions.
void ShowInWindow(FBPopup& popup);

} // namespace mobu_host
