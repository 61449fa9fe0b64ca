#include "gltf/convert/rotation_keys.h"

#include <cmath>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

double LengthOf(const TEV2_QUATERNION& rotation)
{
    const auto wide = [](float number) { return static_cast<double>(number); };
    return std::hypot(std::hypot(wide(rotation.x), wide(rotation.y)),
                      std::hypot(wide(rotation.z), wide(rotation.w)));
}

/// What a chain of products in single precision leaves; it moves a point a metre away by less than 0.01 mm.
constexpr double kUnitTolerance = 2e-6;

/// Between two keys of which the track takes the longer arc: at each quarter.
void AppendLongArc(Keys<TEV2_QUATERNION>& keys, const TEV2_QUATERNION& closing, float closing_time,
                   bool is_spherical)
{
    const TEV2_QUATERNION opening = keys.values.back();
    const float opening_time = keys.times.back();
    for (const float fraction : {0.25f, 0.5f, 0.75f})
    {
        const float time = opening_time + (closing_time - opening_time) * fraction;
        const TEV2_QUATERNION value =
            is_spherical ? TEV2_ANIMATABLE_QUATERNION_SLERP::Interpolate(opening, closing, fraction)
                         : TEV2_ANIMATABLE_QUATERNION_LERP::Interpolate(opening, closing, fraction);
        // Between opposite rotations there is no way that the track defines.
        const bool is_rotation =
            is_spherical ? std::abs(LengthOf(value) - 1.0) < 0.01 : LengthOf(value) > 0.01;
        if (!is_rotation || !(time > keys.times.back()) || !(time < closing_time))
            continue;
        keys.times.push_back(time);
        keys.values.push_back(UnitRotation(value));
    }
}

} // namespace

bool IsUnit(const TEV2_QUATERNION& rotation)
{
    return std::abs(LengthOf(rotation) - 1.0) <= kUnitTolerance;
}

TEV2_QUATERNION UnitRotation(const TEV2_QUATERNION& rotation)
{
    const double length = LengthOf(rotation);
    if (std::abs(length - 1.0) <= kUnitTolerance)
        return rotation;
    if (!(length > 0.0))
        return {};
    const auto divided = [length](float value)
    { return static_cast<float>(static_cast<double>(value) / length); };
    return {divided(rotation.x), divided(rotation.y), divided(rotation.z), divided(rotation.w)};
}

Keys<TEV2_QUATERNION> RotationKeys(const std::unique_ptr<TEV2_ANIMATABLE_QUATERNION>& track, double shift,
                                   const std::string& where, ConversionReport& report)
{
    const Keys<TEV2_QUATERNION> from = CleanKeys(track, TEV2_QUATERNION{}, shift, where, report);
    const bool is_spherical = !track || track->GetType() != kLerpTrack;
    Keys<TEV2_QUATERNION> keys;
    std::size_t not_unit = 0;
    for (std::size_t i = 0; i < from.times.size(); ++i)
    {
        const TEV2_QUATERNION value = UnitRotation(from.values[i]);
        not_unit += IsUnit(from.values[i]) ? 0 : 1;
        if (i > 0 && Dot(keys.values.back(), value) < 0.0f)
            AppendLongArc(keys, value, from.times[i], is_spherical);
        keys.times.push_back(from.times[i]);
        keys.values.push_back(value);
    }
    if (not_unit > 0)
        report.Add(Code::RotationNormalised, where,
                   "a rotation was not of length 1 and was divided by its length", not_unit);
    if (!is_spherical && !keys.IsConstant())
        report.Add(Code::InterpolationChanged, where,
                   "between two keys it goes along an arc instead of a line");
    return keys;
}

} // namespace tev2_gltf
