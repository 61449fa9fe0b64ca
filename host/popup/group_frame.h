#pragma once

#include <FL/Fl_Widget.H>

#include "mobu_host/ui.h"

namespace mobu_host
{

/// The border of a region, with its title where the border shows one.
class GroupFrame : public Fl_Widget
{
public:
    GroupFrame(int x, int y, int width, int height, const RegionBorder& border);

    /// Pixels of the width that the title cannot use.
    int UnusableWidth() const;

protected:
    void draw() override;

private:
    void DrawOutline(int shift, Fl_Color colour) const;

    RegionBorder border_;
};

} // namespace mobu_host
