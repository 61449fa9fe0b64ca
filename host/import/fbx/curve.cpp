#include "host/import/fbx/curve.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::fbx
{
namespace
{

// An automatic tangent's bias counts as a share of the way to a neighbour's slope; what is beyond this adds to the
// slope itself, a second, by its square.
constexpr double kLargestPlainBias = 5.0;
constexpr double kSlopeOfExcess = 40.0;

double LengthOf(float weight)
{
    return weight == 0.0F ? 1.0 / 3.0 : static_cast<double>(weight);
}

double Bezier(double p0, double p1, double p2, double p3, double s)
{
    const double t = 1.0 - s;
    return t * t * t * p0 + 3.0 * t * t * s * p1 + 3.0 * t * s * s * p2 + s * s * s * p3;
}

// Where along the segment its time, which goes from 0 over right and 1 - left to 1, comes to u. Newton steps, kept
// inside a shrinking bracket: time only rises when both lengths are at most one.
double ParameterAt(double u, double right, double left)
{
    double low = 0.0, high = 1.0, s = u;
    for (int i = 0; i < 60; ++i)
    {
        const double miss = Bezier(0.0, right, 1.0 - left, 1.0, s) - u;
        if (miss == 0.0 || high - low < 1e-15)
            break;
        (miss > 0.0 ? high : low) = s;
        const double t = 1.0 - s;
        const double rise = 3.0 * (t * t * right + 2.0 * t * s * (1.0 - left - right) + s * s * left);
        const double step = rise > 0.0 ? s - miss / rise : -1.0;
        s = step > low && step < high ? step : 0.5 * (low + high);
    }
    return s;
}

// With the missing neighbour's slope taken as 0, and the other's not halved, at the first and last key.
double TcbSlope(const Tangent& tangent, double side, double before, double after, bool at_end)
{
    const double part = (at_end ? 1.0 : 0.5) * (1.0 - static_cast<double>(tangent.right_slope));
    const double continuity = side * static_cast<double>(tangent.left_slope);
    const auto bias = static_cast<double>(tangent.tcb_bias);
    return part * ((1.0 + continuity) * (1.0 + bias) * before + (1.0 - continuity) * (1.0 - bias) * after);
}

} // namespace

void Curve::Reserve(std::size_t keys)
{
    seconds_.reserve(keys);
    values_.reserve(keys);
    interpolations_.reserve(keys);
}

void Curve::Append(const Key& key)
{
    if (!seconds_.empty() && key.seconds <= seconds_.back())
    {
        seconds_.pop_back();
        values_.pop_back();
        interpolations_.pop_back();
        if (!tangents_.empty())
            tangents_.pop_back();
    }
    if (!seconds_.empty() && key.seconds <= seconds_.back())
        return; // out of order altogether
    if (key.interpolation == Interpolation::Cubic || !tangents_.empty())
    {
        tangents_.resize(seconds_.size());
        tangents_.push_back(key.tangent);
    }
    seconds_.push_back(key.seconds);
    values_.push_back(key.value);
    interpolations_.push_back(key.interpolation);
}

double Curve::StraightSlope(std::size_t from, std::size_t to) const
{
    return (values_[to] - values_[from]) / (seconds_[to] - seconds_[from]);
}

// Of a key between two others.
double Curve::AutomaticSlope(std::size_t key, double bias) const
{
    const Tangent& tangent = tangents_[key];
    const double before = StraightSlope(key - 1, key);
    const double after = StraightSlope(key, key + 1);
    if ((tangent.flat_at_equals || tangent.no_overshoot) && (before == 0.0 || after == 0.0))
        return 0.0;
    double slope = tangent.through_neighbours ? StraightSlope(key - 1, key + 1) : 0.5 * (before + after);
    slope += std::abs(bias) * ((bias > 0.0 ? after : before) - slope);
    if (const double excess = std::abs(bias) - kLargestPlainBias; excess > 0.0)
        slope += std::copysign(excess * excess * kSlopeOfExcess, bias);
    if (!tangent.no_overshoot)
        return slope;
    if ((before > 0.0) != (after > 0.0) || (before > 0.0) != (slope > 0.0))
        return 0.0;
    const double limit = std::min(std::abs(before) / LengthOf(tangent.left_weight),
                                  std::abs(after) / LengthOf(tangent.right_weight));
    return std::clamp(slope, -limit, limit);
}

// side is +1 right of the key, -1 left of it.
double Curve::SlopeAt(std::size_t key, double side) const
{
    const Tangent& tangent = tangents_[key];
    const auto given = static_cast<double>(side > 0.0 ? tangent.right_slope : tangent.left_slope);
    if (tangent.rule == TangentRule::Given)
        return given;
    const bool first = key == 0;
    const bool last = key + 1 == seconds_.size();
    if (tangent.rule == TangentRule::Tcb)
        return TcbSlope(tangent, side, first ? 0.0 : StraightSlope(key - 1, key),
                        last ? 0.0 : StraightSlope(key, key + 1), first || last);
    if (!first && !last)
        return AutomaticSlope(key, given);
    if (tangent.no_overshoot || (first && last))
        return 0.0;
    return first ? StraightSlope(key, key + 1) : StraightSlope(key - 1, key);
}

void Curve::Close()
{
    if (tangents_.empty() || seconds_.size() < 2)
    {
        tangents_ = {};
        return;
    }
    segments_.reserve(seconds_.size() - 1);
    for (std::size_t i = 0; i + 1 < seconds_.size(); ++i)
        segments_.push_back(
            {SlopeAt(i, 1.0), SlopeAt(i + 1, -1.0), tangents_[i].right_weight, tangents_[i + 1].left_weight});
    tangents_ = {};
}

std::size_t Curve::SegmentAt(double seconds) const
{
    const auto holds = [&](std::size_t i)
    { return i + 1 < seconds_.size() && seconds >= seconds_[i] && seconds < seconds_[i + 1]; };
    if (!holds(cursor_))
    {
        if (holds(cursor_ + 1))
            ++cursor_;
        else
            cursor_ = static_cast<std::size_t>(std::upper_bound(seconds_.begin(), seconds_.end(), seconds) -
                                               seconds_.begin()) -
                      1;
    }
    return cursor_;
}

bool Curve::IsConstant() const
{
    return std::all_of(values_.begin(), values_.end(),
                       [this](double value) { return value == values_.front(); }) &&
           std::all_of(segments_.begin(), segments_.end(),
                       [](const Segment& segment)
                       { return segment.right_slope == 0.0 && segment.left_slope == 0.0; });
}

double Curve::At(double seconds) const
{
    if (seconds < seconds_.front())
        return Outside(seconds, false);
    return seconds > seconds_.back() ? Outside(seconds, true) : Inside(seconds);
}

// Of the first segment where it begins, of the last where it ends.
double Curve::EndSlope(bool last) const
{
    const std::size_t segment = last ? seconds_.size() - 2 : 0;
    if (interpolations_[segment] == Interpolation::Cubic)
        return last ? segments_[segment].left_slope : segments_[segment].right_slope;
    return interpolations_[segment] == Interpolation::Straight ? StraightSlope(segment, segment + 1) : 0.0;
}

double Curve::Outside(double seconds, bool after) const
{
    using Kind = Extrapolation::Kind;
    const Extrapolation& way = after ? after_ : before_;
    const double end = after ? values_.back() : values_.front();
    const double beyond = after ? seconds - seconds_.back() : seconds_.front() - seconds;
    if (way.kind == Kind::Hold || way.repetitions == 0.0 || seconds_.size() < 2)
        return end;
    if (way.kind == Kind::Slope)
        return end + EndSlope(after) * (after ? beyond : -beyond);
    const double span = seconds_.back() - seconds_.front();
    double whole = std::floor(beyond / span); // repetitions that are over
    double part = std::min(1.0, beyond / span - whole);
    if (whole >= way.repetitions)
    {
        whole = way.repetitions - 1.0;
        part = 1.0;
    }
    const bool backward = way.kind == Kind::Mirror && std::fmod(whole, 2.0) == 0.0;
    const double place = after == backward ? 1.0 - part : part;
    const double value = Inside(seconds_.front() + place * span);
    const double gain = values_.back() - values_.front();
    return way.kind == Kind::RepeatOnward ? value + (after ? 1.0 : -1.0) * (whole + 1.0) * gain : value;
}

double Curve::Inside(double seconds) const
{
    if (!(seconds > seconds_.front()))
        return values_.front();
    if (seconds >= seconds_.back())
        return values_.back();
    const std::size_t i = SegmentAt(seconds);
    const double span = seconds_[i + 1] - seconds_[i];
    const double from = values_[i];
    const double to = values_[i + 1];
    switch (interpolations_[i])
    {
    case Interpolation::Hold:
        return from;
    case Interpolation::HoldNext:
        return to;
    case Interpolation::Straight:
        return from + (to - from) * ((seconds - seconds_[i]) / span);
    case Interpolation::Cubic:
        break;
    }
    const Segment& segment = segments_[i];
    const double u = (seconds - seconds_[i]) / span;
    const double right = LengthOf(segment.right_weight);
    const double left = LengthOf(segment.left_weight);
    const bool even = segment.right_weight == 0.0F && segment.left_weight == 0.0F;
    return Bezier(from, from + segment.right_slope * right * span, to - segment.left_slope * left * span, to,
                  even ? u : ParameterAt(u, right, left));
}

} // namespace mobu_host::fbx
