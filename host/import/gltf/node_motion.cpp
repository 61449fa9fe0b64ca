#include "host/import/gltf/node_motion.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::gltf_import
{
namespace
{

constexpr double kCentimetresPerMetre = 100.0;

using Xyzw = std::array<double, 4>;

Xyzw Normalised(Xyzw q)
{
    double largest = 0.0;
    for (const double part : q)
        largest = std::max(largest, std::abs(part));
    if (!(largest > 0.0))
        return {0.0, 0.0, 0.0, 1.0};
    double square = 0.0;
    for (double& part : q)
    {
        part /= largest; // so that no square is too large or too small
        square += part * part;
    }
    const double length = std::sqrt(square);
    for (double& part : q)
        part /= length;
    return q;
}

Quaternion ToQuaternion(const Xyzw& q)
{
    return {q[3], q[0], q[1], q[2]};
}

Xyzw FromQuaternion(const Quaternion& q)
{
    return {q[1], q[2], q[3], q[0]};
}

// Where a time is among the keys: at `key`, or `fraction` of the way from it to the next one.
struct KeyPosition
{
    std::size_t key;
    double fraction;
};

KeyPosition Find(const KeyTrack& track, double seconds)
{
    const std::vector<double>& times = *track.keys.times;
    if (!(seconds > times.front()))
        return {0, 0.0};
    if (seconds >= times.back())
        return {times.size() - 1, 0.0};
    // Times mostly come in order.
    std::size_t key = track.cursor;
    const auto holds = [&](std::size_t k)
    { return k + 1 < times.size() && times[k] <= seconds && seconds < times[k + 1]; };
    if (!holds(key))
        key = holds(key + 1) ? key + 1
                             : static_cast<std::size_t>(
                                   std::upper_bound(times.begin(), times.end(), seconds) - times.begin() - 1);
    track.cursor = key;
    const double span = times[key + 1] - times[key];
    return {key, (seconds - times[key]) / span};
}

template <std::size_t kWidth>
std::array<double, kWidth> Value(const KeyTrack& track, std::size_t key)
{
    std::array<double, kWidth> value;
    std::ranges::copy(track.keys.ValueOf(key), value.begin());
    return value;
}

template <std::size_t kWidth>
std::array<double, kWidth> Spline(const KeyTrack& track, const KeyPosition& at)
{
    std::array<double, kWidth> value;
    track.keys.SplineBetween(at.key, at.fraction, value);
    return value;
}

bool IsAtKey(const KeyTrack& track, const KeyPosition& at)
{
    return at.fraction == 0.0 || track.keys.interpolation == gltf::Interpolation::Step;
}

} // namespace

std::array<double, 3> KeyTrack::VectorAt(double seconds) const
{
    const KeyPosition at = Find(*this, seconds);
    if (IsAtKey(*this, at))
        return Value<3>(*this, at.key);
    if (keys.interpolation == gltf::Interpolation::CubicSpline)
        return Spline<3>(*this, at);
    const Vector from = Value<3>(*this, at.key);
    return from + (Value<3>(*this, at.key + 1) - from) * at.fraction;
}

std::array<double, 4> KeyTrack::RotationAt(double seconds) const
{
    const KeyPosition at = Find(*this, seconds);
    if (IsAtKey(*this, at))
        return Normalised(Value<4>(*this, at.key));
    if (keys.interpolation == gltf::Interpolation::CubicSpline)
        return Normalised(Spline<4>(*this, at));
    const Quaternion from = ToQuaternion(Normalised(Value<4>(*this, at.key)));
    const Quaternion to = ToQuaternion(Normalised(Value<4>(*this, at.key + 1)));
    return FromQuaternion(TurnBetween(from, to, at.fraction));
}

Affine NodeMotion::At(double seconds) const
{
    gltf::Trs trs = rest;
    if (translation)
        trs.translation = translation->VectorAt(seconds);
    if (rotation)
        trs.rotation = rotation->RotationAt(seconds);
    if (scale)
        trs.scale = scale->VectorAt(seconds);
    return ToAffine(trs);
}

Affine ToAffine(const gltf::Trs& trs)
{
    return {TurnOf(ToQuaternion(Normalised(trs.rotation))) * Scaling(trs.scale),
            trs.translation * kCentimetresPerMetre};
}

Affine ToAffine(const gltf::ColumnMatrix& matrix)
{
    Affine affine;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
            affine.linear.at[row][column] = matrix[4 * column + row];
        affine.place[row] = matrix[12 + row] * kCentimetresPerMetre;
    }
    return affine;
}

} // namespace mobu_host::gltf_import
