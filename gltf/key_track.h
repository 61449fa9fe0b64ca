#pragma once

/// The keys of an animation's channel.

#include "gltf/accessor.h"
#include "gltf/document.h"

#include <cstddef>
#include <set>
#include <span>

namespace gltf
{

/// Keys may be further from 0 than this nowhere: seconds.
inline constexpr double kLatestKey = 1.0e6;

/// Keys that many tracks may share. Values are as in the document: one element a key, or three (tangent in, value,
/// tangent out) of a cubic spline.
struct KeyTrack
{
    Numbers times; // seconds; equal or ascending
    Numbers values;
    Interpolation interpolation = Interpolation::Linear;
    std::size_t width = 3; // components of an element

    std::size_t KeyCount() const { return times->size(); }

    /// `width` numbers.
    std::span<const double> ValueOf(std::size_t key) const;

    /// The cubic Hermite spline from a key to the next one, `fraction` of the way. Tangents are slopes a second.
    void SplineBetween(std::size_t key, double fraction, std::span<double> result) const;

private:
    std::span<const double> Element(std::size_t index) const;
};

/// Reads the keys of channels, checked: as many values as the keys need, of the type that they need.
class KeyTrackReader
{
public:
    KeyTrackReader(Document& document, AccessorReader& accessors) : document_(document), accessors_(accessors)
    {
    }

    /// `width` is 4 for rotations, 3 for translations and scales, the number of morph targets for weights, of which an
    /// element is as many numbers of the accessor.
    KeyTrack Read(const Animation& animation, const Channel& channel, std::size_t width);

private:
    void CheckTimes(const std::vector<double>& times, std::size_t accessor, const Place& place);

    Document& document_;
    AccessorReader& accessors_;
    std::set<std::size_t> checked_times_; // accessors
};

} // namespace gltf
