#include "host/import/collada/key_curve.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::collada
{
namespace
{

struct Point
{
    double time = 0.0;
    double value = 0.0;
};

double Cubic(double p0, double p1, double p2, double p3, double s)
{
    const double rest = 1.0 - s;
    return rest * rest * rest * p0 + 3.0 * rest * rest * s * p1 + 3.0 * rest * s * s * p2 + s * s * s * p3;
}

// Where on the way from 0 to 1 the cubic 0, first, second, 1 has the value `sought`. It rises: its inner points are
// between 0 and 1.
double SolveCubic(double first, double second, double sought)
{
    constexpr int kMostSteps = 100;
    constexpr double kClose = 1e-15;
    double low = 0.0, high = 1.0, s = sought;
    for (int i = 0; i < kMostSteps; ++i)
    {
        const double error = Cubic(0.0, first, second, 1.0, s) - sought;
        if (std::abs(error) <= kClose)
            break;
        (error < 0.0 ? low : high) = s;
        const double rest = 1.0 - s;
        const double slope =
            3.0 * (rest * rest * first + 2.0 * rest * s * (second - first) + s * s * (1.0 - second));
        const double newton = s - error / slope;
        // Newton's method where it stays between what is known, else halving.
        s = newton > low && newton < high ? newton : 0.5 * (low + high);
    }
    return s;
}

struct Interval
{
    Point from, to;
};

// A row's tangent: a point or a vector, as the way of the curve says. Its time is `third` where none is stated.
Point TangentOf(const Tangents& tangents, std::size_t key, std::size_t value, double third)
{
    const double* const row = tangents.rows.At(key);
    switch (tangents.layout)
    {
    case TangentLayout::PairPerValue:
        return {row[2 * value], row[2 * value + 1]};
    case TangentLayout::TimeAndValues:
        return {row[0], row[1 + value]};
    case TangentLayout::ValuePerValue:
    case TangentLayout::None:
        break;
    }
    return {third, row[value]};
}

double BezierAt(const Interval& ends, Point first, Point second, double fraction)
{
    const double span = ends.to.time - ends.from.time;
    // A curve that goes back in time would have several values at once.
    const auto within = [&](double time) { return std::clamp((time - ends.from.time) / span, 0.0, 1.0); };
    const double s = SolveCubic(within(first.time), within(second.time), fraction);
    return Cubic(ends.from.value, first.value, second.value, ends.to.value, s);
}

double CurveAt(const KeyCurve& curve, const CurvePlace& place, const Interval& ends, std::size_t value)
{
    const double span = ends.to.time - ends.from.time;
    if (place.way == Interpolation::Bezier)
        return BezierAt(ends, TangentOf(curve.out, place.key, value, ends.from.time + span / 3.0),
                        TangentOf(curve.in, place.key + 1, value, ends.to.time - span / 3.0), place.fraction);
    const Point leaving = TangentOf(curve.out, place.key, value, span);
    const Point arriving = TangentOf(curve.in, place.key + 1, value, span);
    return BezierAt(ends, {ends.from.time + leaving.time / 3.0, ends.from.value + leaving.value / 3.0},
                    {ends.to.time - arriving.time / 3.0, ends.to.value - arriving.value / 3.0},
                    place.fraction);
}

} // namespace

CurvePlace FindPlace(const KeyCurve& curve, double seconds, std::size_t& cursor)
{
    const std::vector<double>& times = *curve.times;
    if (!(seconds >= times.front()))
        return {};
    if (seconds >= times.back())
        return {.key = times.size() - 1};
    const auto holds = [&times, seconds](std::size_t key)
    { return key + 1 < times.size() && times[key] <= seconds && seconds < times[key + 1]; };
    if (!holds(cursor) && !holds(++cursor))
        cursor =
            static_cast<std::size_t>(std::upper_bound(times.begin(), times.end(), seconds) - times.begin()) -
            1;
    const Interpolation way = curve.ways.array ? *curve.ways.At(cursor) : Interpolation::Linear;
    if (way == Interpolation::Step)
        return {.key = cursor};
    return {cursor, (seconds - times[cursor]) / (times[cursor + 1] - times[cursor]), way};
}

double ValueAt(const KeyCurve& curve, const CurvePlace& place, std::size_t value)
{
    const double from = curve.values.At(place.key)[value];
    if (place.fraction <= 0.0)
        return from;
    const double to = curve.values.At(place.key + 1)[value];
    const bool is_straight = place.way == Interpolation::Linear || curve.in.layout == TangentLayout::None ||
                             curve.out.layout == TangentLayout::None;
    if (is_straight)
        return from + (to - from) * place.fraction;
    const std::vector<double>& times = *curve.times;
    return CurveAt(curve, place, {{times[place.key], from}, {times[place.key + 1], to}}, value);
}

} // namespace mobu_host::collada
