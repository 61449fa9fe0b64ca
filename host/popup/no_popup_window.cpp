#include "host/popup/popup_window.h"

namespace mobu_host
{

std::string WhyNoWindow()
{
    return "this build has no window";
}

void ShowInWindow(FBPopup&) {}

} // namespace mobu_host
