#pragma once

#include <FL/Fl_Button.H>

namespace mobu_host
{

/// A round mark with a dot or a square one with a tick, and a caption beside it. A click toggles it.
class MarkButton : public Fl_Button
{
public:
    enum class Mark
    {
        kRound,
        kSquare
    };

    MarkButton(int x, int y, int width, int height, Mark mark);

    /// Pixels of the width that the caption cannot use, at a text size.
    static int UnusableWidth(int text_size);

protected:
    void draw() override;

private:
    Mark mark_;
};

} // namespace mobu_host
