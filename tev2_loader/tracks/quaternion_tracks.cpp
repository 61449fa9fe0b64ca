#include "tev2_loader/tracks/quaternion_tracks.h"

#include <cmath>

namespace TEV2_LOADER
{

namespace
{

constexpr float kNearlyParallel = 0.99f;

TEV2_QUATERNION Lerp(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing, float fraction)
{
    return opening + (closing - opening) * fraction;
}

} // namespace

TEV2_QUATERNION Product(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    return {left.x * right.w + right.x * left.w + left.y * right.z - left.z * right.y,
            left.y * right.w + right.y * left.w + left.z * right.x - right.z * left.x,
            left.z * right.w + right.z * left.w + right.y * left.x - left.y * right.x,
            right.w * left.w - left.x * right.x - left.y * right.y - left.z * right.z};
}

float Dot(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    return left.x * right.x + left.w * right.w + left.y * right.y + left.z * right.z;
}

TEV2_QUATERNION TEV2_ANIMATABLE_QUATERNION_LERP::Interpolate(const TEV2_QUATERNION& opening,
                                                             const TEV2_QUATERNION& closing, float fraction)
{
    return Lerp(opening, closing, fraction);
}

TEV2_QUATERNION TEV2_ANIMATABLE_QUATERNION_SLERP::Interpolate(const TEV2_QUATERNION& opening,
                                                              const TEV2_QUATERNION& closing, float fraction)
{
    const float dot = Dot(opening, closing);
    if (dot > kNearlyParallel)
        return Lerp(opening, closing, fraction);
    const float angle = std::acos(dot);
    const float scale = 1.0f / std::sin(angle);
    return opening * (std::sin((1.0f - fraction) * angle) * scale) +
           closing * (std::sin(fraction * angle) * scale);
}

} // namespace TEV2_LOADER
