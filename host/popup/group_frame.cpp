#include "host/popup/group_frame.h"

#include <algorithm>

#include <FL/fl_draw.H>

namespace mobu_host
{
namespace
{

constexpr int kTitleMargin = 4; // between title and line

bool IsEmbossed(FBBorderStyle style)
{
    return style >= kFBEmbossBorder && style <= kFBEmbossSmoothEdgeBorder;
}

} // namespace

GroupFrame::GroupFrame(int x, int y, int width, int height, const RegionBorder& border)
    : Fl_Widget(x, y, width, height), border_(border)
{
    box(FL_NO_BOX);
}

int GroupFrame::UnusableWidth() const
{
    return 2 * (border_.corner_radius + kTitleMargin);
}

// A rectangle whose corners are quarters of circles.
void GroupFrame::DrawOutline(int shift, Fl_Color colour) const
{
    const int left = x() + shift, top = y() + shift;
    const int right = x() + w() - 2 + shift, bottom = y() + h() - 2 + shift;
    const int radius = std::clamp(border_.corner_radius, 0, std::min(w(), h()) / 2);
    const int across = 2 * radius;
    fl_color(colour);
    fl_xyline(left + radius, top, right - radius);
    fl_xyline(left + radius, bottom, right - radius);
    fl_yxline(left, top + radius, bottom - radius);
    fl_yxline(right, top + radius, bottom - radius);
    if (radius == 0)
        return;
    fl_arc(left, top, across + 1, across + 1, 90, 180);
    fl_arc(right - across, top, across + 1, across + 1, 0, 90);
    fl_arc(left, bottom - across, across + 1, across + 1, 180, 270);
    fl_arc(right - across, bottom - across, across + 1, across + 1, 270, 360);
}

void GroupFrame::draw()
{
    const Fl_Color light = fl_color_average(FL_WHITE, color(), 0.8f);
    const Fl_Color dark = fl_color_average(FL_BLACK, color(), 0.4f);
    if (IsEmbossed(border_.style))
        DrawOutline(1, border_.in_set ? dark : light);
    DrawOutline(0, IsEmbossed(border_.style) && border_.in_set ? light : dark);

    if (!border_.show_title || !label() || !*label())
        return;
    fl_font(labelfont(), labelsize());
    int width = 0, height = 0;
    fl_measure(label(), width, height, 0);
    const int left = x() + border_.corner_radius;
    const int top = y() - height / 2;
    fl_color(color());
    fl_rectf(left, top, width + 2 * kTitleMargin, height);
    fl_color(labelcolor());
    fl_draw(label(), left + kTitleMargin, top, width, height, FL_ALIGN_LEFT, nullptr, 0);
}

} // namespace mobu_host
