#include "tev2_loader/math/quaternion.h"

#include "tev2_loader/math/detail/fast_math.h"

#include <cmath>

namespace TEV2_LOADER
{

TEV2_QUATERNION Product(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    return {left.x * right.w + right.x * left.w + left.y * right.z - left.z * right.y,
            left.y * right.w + right.y * left.w + left.z * right.x - right.z * left.x,
            left.z * right.w + right.z * left.w + right.y * left.x - left.y * right.x,
            right.w * left.w - left.x * right.x - left.y * right.y - left.z * right.z};
}

float Dot(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    return FastDot(left, right);
}

TEV2_QUATERNION AlongArc(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing, float dot,
                         float fraction)
{
    const float angle = std::acos(dot);
    const float scale = 1.0f / std::sin(angle);
    return opening * (std::sin((1.0f - fraction) * angle) * scale) +
           closing * (std::sin(fraction * angle) * scale);
}

} // namespace TEV2_LOADER
