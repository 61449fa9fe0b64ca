#pragma once

#include "tev2_loader/tev2.h"

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace tv2
{

// What a file shows at one instant, on paper: x to the right, y up, both in metres.

struct PaperPoint
{
    double x = 0.0;
    double y = 0.0;

    bool operator==(const PaperPoint&) const = default;
};

struct PaperBox
{
    PaperPoint least{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    PaperPoint most{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

    void Add(const PaperPoint& point);
    bool Empty() const { return !(least.x <= most.x); }
    double Width() const { return most.x - least.x; }
    double Height() const { return most.y - least.y; }
};

/// A node outside all skeletons: its place and its three axes, which are at most 1 long on paper.
struct PaperProp
{
    std::size_t node = 0;
    PaperPoint origin;
    std::array<PaperPoint, 3> axes;

    bool operator==(const PaperProp&) const = default;
};

/// A camera: its place and, relative to it, the corners of its picture at distance 1 in order, and a point above the
/// upper edge.
struct PaperCamera
{
    std::size_t node = 0;
    PaperPoint origin;
    std::array<PaperPoint, 4> corners;
    PaperPoint above;

    bool operator==(const PaperCamera&) const = default;
};

struct Figure
{
    float time = 0.0f;
    std::vector<std::pair<PaperPoint, PaperPoint>> bones; ///< from parent to child
    std::vector<PaperProp> props;
    std::vector<PaperCamera> cameras;

    bool Empty() const { return bones.empty() && props.empty() && cameras.empty(); }
    bool LooksLike(const Figure& other) const
    {
        return bones == other.bones && props == other.props && cameras == other.cameras;
    }
};

/// At most `most` figures, at instants spread over the scene's time range; one when nothing visible moves. `view` is
/// "front", "side" or "top". Models without a finite place are left out. Changes the scene's current time.
std::vector<Figure> PoseFigures(TEV2_LOADER::TEV2& scene, const std::string& view, std::size_t most);

} // namespace tv2
