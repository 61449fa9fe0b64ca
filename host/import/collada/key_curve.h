#pragma once

/// Values over time, as a <sampler> gives them.

#include "host/import/base/scene_description.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace mobu_host::collada
{

/// How values go from a key to the next.
enum class Interpolation : std::uint8_t
{
    Linear,
    Step,
    Bezier, // tangents are control points
    Hermite // tangents are derivatives, three times as long as a Bezier curve's
};

/// One row for each key, in an array that others may use as well.
template <typename Value>
struct Rows
{
    std::shared_ptr<const std::vector<Value>> array;
    std::size_t offset = 0;
    std::size_t stride = 1;

    const Value* At(std::size_t row) const { return array->data() + offset + row * stride; }
};

/// What a row of tangents holds.
enum class TangentLayout : std::uint8_t
{
    None,          // no tangents: the curve is a straight line
    ValuePerValue, // the time is a third of the interval away
    PairPerValue,  // time, value for each value
    TimeAndValues  // one time for all values
};

struct Tangents
{
    Rows<double> rows;
    TangentLayout layout = TangentLayout::None;
};

struct KeyCurve
{
    KeyTimes times;           // one at least, not descending
    Rows<double> values;      // `values.stride` numbers a key
    Rows<Interpolation> ways; // without an array: linear
    Tangents in, out;

    std::size_t Width() const { return values.stride; }
};

/// A place between two keys. The first and last key hold outside.
struct CurvePlace
{
    std::size_t key = 0;
    double fraction = 0.0; // 0: at the key, or held; below 1
    Interpolation way = Interpolation::Linear;
};

/// `cursor` is where the last search ended: asking for times in order takes constant time.
CurvePlace FindPlace(const KeyCurve& curve, double seconds, std::size_t& cursor);

/// One of the values at a place.
double ValueAt(const KeyCurve& curve, const CurvePlace& place, std::size_t value);

} // namespace mobu_host::collada
