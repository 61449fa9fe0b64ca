#include "host/import/collada/motions.h"

#include "host/import/base/exportable_number.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::collada
{
namespace
{

constexpr double kSmallestAngle = 0.01; // degrees; a lens that moves stays within
constexpr double kLargestAngle = 179.99;

// The number of the host's lens that this one moves.
LensNumber MovedBy(LensNumber number)
{
    return number == LensNumber::VerticalAngle ? LensNumber::HorizontalAngle : number;
}

Affine InCentimetres(Affine affine, double centimetres)
{
    affine.place = affine.place * centimetres;
    return affine;
}

} // namespace

NodeMotion::NodeMotion(const std::vector<Transform>& transforms, std::span<const TransformCurve> curves,
                       double centimetres)
    : rest_(InCentimetres(AffineOf(transforms), centimetres)), centimetres_(centimetres)
{
    curves_.reserve(curves.size());
    std::size_t next = 0;
    for (std::uint32_t i = 0; i < transforms.size(); ++i)
    {
        for (; next < curves.size() && curves[next].transform == i; ++next)
            curves_.push_back({.value = curves[next].value, .curve = curves[next].curve});
        const bool is_moved = curves_.size() > (parts_.empty() ? 0 : parts_.back().end_curve);
        if (is_moved)
        {
            parts_.push_back({after_, transforms[i], curves_.size()});
            after_ = Affine();
        }
        else
        {
            after_ = after_ * AffineOf(transforms[i]);
        }
    }
}

Affine NodeMotion::At(double seconds)
{
    Affine local;
    std::size_t curve = 0;
    for (const Part& part : parts_)
    {
        Transform moved = part.moved;
        for (; curve < part.end_curve; ++curve)
            Apply(curves_[curve], seconds, moved);
        local = local * part.before * AffineOf(moved);
    }
    local = InCentimetres(local * after_, centimetres_);
    return IsExportable(local) ? local : rest_;
}

void NodeMotion::Apply(Curve& curve, double seconds, Transform& transform)
{
    const KeyCurve& keys = *curve.curve;
    const CurvePlace place = FindPlace(keys, seconds, curve.cursor);
    if (curve.value != kAllValues)
    {
        transform.values[curve.value] = ValueAt(keys, place, 0);
        return;
    }
    const bool turns =
        transform.kind == TransformKind::Matrix && place.fraction > 0.0 && place.way == Interpolation::Linear;
    if (turns)
        transform.values =
            MatrixBetween(keys.values.At(place.key), keys.values.At(place.key + 1), place.fraction);
    else
        for (std::size_t value = 0; value < keys.Width(); ++value)
            transform.values[value] = ValueAt(keys, place, value);
}

CameraMotion::CameraMotion(const Camera& camera, std::span<const LensCurve> curves, double centimetres)
    : camera_(camera),
      curves_(curves.begin(), curves.end()),
      cursors_(curves.size()),
      centimetres_(centimetres)
{
    for (const LensCurve& curve : curves_)
        if (std::find(moved_.begin(), moved_.end(), MovedBy(curve.number)) == moved_.end())
            moved_.push_back(MovedBy(curve.number));
}

double CameraMotion::At(LensNumber value, double seconds)
{
    for (std::size_t i = 0; i < curves_.size(); ++i)
    {
        const LensNumber number = curves_[i].number;
        if (MovedBy(number) != value)
            continue;
        const KeyCurve& keys = *curves_[i].curve;
        const double moved = ValueAt(keys, FindPlace(keys, seconds, cursors_[i]), 0);
        camera_.numbers[static_cast<std::size_t>(number)] =
            value == LensNumber::HorizontalAngle ? std::clamp(moved, kSmallestAngle, kLargestAngle) : moved;
    }
    const LensDescription lens = camera_.Lens(centimetres_);
    return value == LensNumber::NearPlane  ? lens.near_plane
           : value == LensNumber::FarPlane ? lens.far_plane
                                           : lens.horizontal_angle;
}

} // namespace mobu_host::collada
