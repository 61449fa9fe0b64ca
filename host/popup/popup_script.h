#pragma once

#include <optional>
#include <string>
#include <vector>

#include <fbsdk/fbsdk.h>

// Plays a script to popups. One step a line; empty lines and comments after a # are ignored:
//
//     click "REGION"        presses the button of a region
//     set "REGION" on       sets a check box or a radio button; off clears a check box
//     edit "REGION" 12.5    types a number into the box of a region, which clamps it to its limits
//     move 200 300          moves the window: left and top in pixels
//     close                 closes the window by its own button
//
// Names are in double quotes, with \" and \\ for these two characters. The end of the script closes a popup that is
// still open.

namespace mobu_host
{

class PopupScript
{
public:
    /// None when the file cannot be read or a line is malformed; `error` then names the file, the line and the cause.
    static std::optional<PopupScript> Read(const std::string& path, std::string& error);

    /// Plays all steps to an open popup, up to the first that fails: no such region, a control of another kind or
    /// disabled, a popup that has closed. Empty, or "FILE:LINE: cause" of that step.
    std::string Play(FBPopup& popup) const;

private:
    enum class Action
    {
        kClick,
        kSet,
        kEdit,
        kMove,
        kClose
    };

    struct Step
    {
        Action action = Action::kClose;
        std::string place; // "FILE:LINE"
        std::string region;
        double value = 0.0;
        bool on = false;
        int left = 0;
        int top = 0;
    };

    static std::string ReadStep(const std::string& line, Step& step);
    static std::string Play(const Step& step, FBPopup& popup);
    static std::string UseControl(const Step& step, FBPopup& popup);
    static std::string Set(const Step& step, FBButton& button, FBPopup& popup);

    std::vector<Step> steps_;
};

} // namespace mobu_host
