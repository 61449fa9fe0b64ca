#pragma once

#include <optional>
#include <string>

#include <fbsdk/fbsdk.h>

namespace mobu_host
{

/// What the module `tv2_popup_window` exports, as a constant of the name kWindowFunctions.
struct WindowFunctions
{
    std::string (*connect)(); ///< connects to the display; empty, or why that fails
    void (*show)(FBPopup& popup);
};
constexpr const char* kWindowFunctions = "tv2_window_functions";

/// Shows popups in windows: SetPopupPlayer([&](FBPopup& popup) { window.Show(popup); }). The toolkit is in a module of
/// its own, so that programs that show nothing do not load it.
class WindowModule
{
public:
    /// Loads the module at `path`, for as long as the program runs, and connects to the display. None when no window
    /// can be shown; `error` then says why.
    static std::optional<WindowModule> Load(const std::string& path, std::string& error);

    /// Shows an open popup, laid out by its regions, and returns when it has closed: by a handler, by the window's own
    /// button or with Escape. The popup's Width and Height are those inside the window's frame, Left and Top its place
    /// on the screen; they follow when the user moves it.
    ///
    /// Handlers run as described at Click, Edit and MoveTo in mobu_host/ui.h; what they change is shown at once. In a
    /// number box the arrow keys and the wheel step by SmallStep, the page keys by LargeStep; typed text takes effect
    /// with Enter or when the box is left. All text has one size, the largest that fits all regions.
    void Show(FBPopup& popup) const { functions_->show(popup); }

private:
    explicit WindowModule(const WindowFunctions& functions) : functions_(&functions) {}

    const WindowFunctions* functions_;
};

} // namespace mobu_host
