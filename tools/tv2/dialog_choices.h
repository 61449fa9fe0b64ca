#pragma once

#include <fbsdk/fbsdk.h>

#include <optional>
#include <string>

namespace tv2
{

/// What the exporter's dialog showed at the moment when its Export button was pressed.
struct DialogChoices
{
    double rate = 0.0; ///< samples a second
    bool whole_take = true;
    int start_key = 0; ///< frames of the transport rate
    int end_key = 0;
    bool all_takes = false;
    bool spaces_to_underscores = false;

    /// Why the dialog takes this for a cancellation; empty when it exports.
    std::string Objection() const;
};

/// Reads a dialog when its Export button is pressed.
class DialogWatch : public ICallback
{
public:
    /// Begins to watch a popup that is open and laid out. Empty, or why it is not the exporter's dialog.
    std::string Watch(FBPopup& popup);

    /// None while Export has not been pressed.
    const std::optional<DialogChoices>& Choices() const { return choices_; }

private:
    void OnExport(HISender sender, HKEvent event);

    FBPopup* popup_ = nullptr;
    std::optional<DialogChoices> choices_;
};

} // namespace tv2
