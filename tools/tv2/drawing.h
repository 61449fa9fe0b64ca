#pragma once

#include "tools/tv2/figures.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tv2
{

struct Drawing
{
    std::string svg;
    std::size_t left_out = 0; ///< cameras and props that are too far from the skeletons to be in the picture
};

/// Draws figures in cells side by side, in one scale, over lines labelled in metres. Cameras and props have one size on
/// paper at every scale.
Drawing DrawFigures(const std::vector<Figure>& figures);

} // namespace tv2
