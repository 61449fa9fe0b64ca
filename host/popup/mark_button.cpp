#include "host/popup/mark_button.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

namespace mobu_host
{
namespace
{

constexpr int kMargin = 2;

int MarkSize(int text_size)
{
    return text_size + 2;
}

} // namespace

MarkButton::MarkButton(int x, int y, int width, int height, Mark mark)
    : Fl_Button(x, y, width, height), mark_(mark)
{
    box(FL_NO_BOX);
    type(FL_TOGGLE_BUTTON);
    align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
}

int MarkButton::UnusableWidth(int text_size)
{
    return MarkSize(text_size) + 2 * kMargin;
}

void MarkButton::draw()
{
    const auto shade = [this](Fl_Color colour) { return active_r() ? colour : fl_inactive(colour); };
    const int size = MarkSize(labelsize());
    const int left = x() + kMargin;
    const int top = y() + (h() - size) / 2;

    fl_color(parent()->color());
    fl_rectf(x(), y(), w(), h());
    const Fl_Color inside = active_r() ? FL_WHITE : fl_color_average(FL_WHITE, parent()->color(), 0.3f);
    fl_color(inside);
    if (mark_ == Mark::kRound)
    {
        fl_pie(left, top, size, size, 0, 360);
        fl_color(shade(FL_DARK3));
        fl_arc(left, top, size, size, 0, 360);
        fl_color(shade(FL_BLACK));
        if (value())
            fl_pie(left + 4, top + 4, size - 8, size - 8, 0, 360);
    }
    else
    {
        fl_rectf(left, top, size, size);
        fl_color(shade(FL_DARK3));
        fl_rect(left, top, size, size);
        fl_color(shade(FL_BLACK));
        fl_line_style(FL_SOLID, 2);
        if (value())
            fl_line(left + 3, top + size / 2, left + size / 2 - 1, top + size - 4, left + size - 3, top + 3);
        fl_line_style(0);
    }
    const int unusable = UnusableWidth(labelsize());
    draw_label(x() + unusable, y(), w() - unusable, h());
    if (Fl::focus() == this)
        draw_focus(FL_NO_BOX, x(), y(), w(), h());
}

} // namespace mobu_host
