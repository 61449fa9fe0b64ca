#pragma once

#include "tev2_loader/math/detail/float4.h"
#include "tev2_loader/math/matrix.h"

// The functions of math/ and the interpolation of rotations, inlined for evaluation. Each gives the same bits as the
// public function.

namespace TEV2_LOADER
{

inline TEV2_MATRIX_3X4 FastProduct(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    const Float4 rows[3] = {Float4::Load(right.m[0]), Float4::Load(right.m[1]), Float4::Load(right.m[2])};
    TEV2_MATRIX_3X4 product;
    for (int row = 0; row < 3; ++row)
    {
        const Float4 a = Float4::Load(left.m[row]);
        const Float4 sum = Pick<0, 0, 0, 0>(a) * rows[0] + Pick<1, 1, 1, 1>(a) * rows[1] +
                           Pick<2, 2, 2, 2>(a) * rows[2] + a.LastAlone();
        sum.Store(product.m[row]);
    }
    return product;
}

inline TEV2_MATRIX_3X4 FastRigidMatrix(const TEV2_QUATERNION& rotation, const TEV2_VECTOR_3& translation)
{
    const Float4 q = Float4::Load(rotation);
    const Float4 t = Float4::Of(translation.x, translation.y, translation.z, 0.0f);
    const Float4 twice = q + q;
    const Float4 squares = twice * q;                                    // 2xx, 2yy, 2zz
    const Float4 mixed = Pick<0, 0, 1, 3>(twice) * Pick<1, 2, 2, 3>(q);  // 2xy, 2xz, 2yz
    const Float4 with_w = Pick<3, 3, 3, 3>(twice) * Pick<2, 1, 0, 3>(q); // 2wz, 2wy, 2wx
    const Float4 diagonal = Float4::All(1.0f) - Pick<1, 0, 0, 3>(squares) - Pick<2, 2, 1, 3>(squares);
    const Float4 sums = mixed + with_w;        // m10, m02, m21
    const Float4 differences = mixed - with_w; // m01, m20, m12
    TEV2_MATRIX_3X4 matrix;
    Pick<0, 2, 0, 2>(Pick<0, 0, 0, 0>(diagonal, differences), Pick<1, 1, 0, 0>(sums, t)).Store(matrix.m[0]);
    Pick<0, 2, 0, 2>(Pick<0, 0, 1, 1>(sums, diagonal), Pick<2, 2, 1, 1>(differences, t)).Store(matrix.m[1]);
    Pick<0, 2, 0, 2>(Pick<1, 1, 2, 2>(differences, sums), Pick<2, 2, 2, 2>(diagonal, t)).Store(matrix.m[2]);
    return matrix;
}

inline float FastDot(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    const Float4 products = Float4::Load(left) * Float4::Load(right);
    return products.First() + Pick<3, 3, 3, 3>(products).First() + Pick<1, 1, 1, 1>(products).First() +
           Pick<2, 2, 2, 2>(products).First();
}

inline TEV2_QUATERNION FastLerp(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing,
                                float fraction)
{
    const Float4 from = Float4::Load(opening);
    const Float4 way = Float4::Load(closing) - from;
    TEV2_QUATERNION rotation;
    (from + way * Float4::All(fraction)).Store(rotation);
    return rotation;
}

/// Along the arc between rotations that are not nearly parallel.
TEV2_QUATERNION AlongArc(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing, float dot,
                         float fraction);

struct FastSlerp
{
    static constexpr float kNearlyParallel = 0.99f;

    TEV2_QUATERNION operator()(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing,
                               float fraction) const
    {
        const float dot = FastDot(opening, closing);
        return dot > kNearlyParallel ? FastLerp(opening, closing, fraction)
                                     : AlongArc(opening, closing, dot, fraction);
    }
};

} // namespace TEV2_LOADER
