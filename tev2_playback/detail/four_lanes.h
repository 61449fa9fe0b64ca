#pragma once

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_loader/tracks/detail/track_mover.h" // TEV2_HOT

// The arithmetic of playing: the same, number for number, as that of tracks and nodes, four nodes at a time, in
// registers.

namespace TEV2_PLAYBACK
{

using TEV2_LOADER::Float4;
using TEV2_LOADER::Pick;

/// Four vectors, component by component.
struct Float3x4
{
    Float4 x, y, z;
};

/// The same of four components. Transposed: one vector after another.
struct Float4x4
{
    Float4 x, y, z, w;
};

/// Translations and rotations of four nodes.
struct FourTransforms
{
    Float3x4 translation;
    Float4x4 rotation;
};

TEV2_HOT Float4x4 Transposed(const Float4x4& from)
{
    const Float4 low01 = Pick<0, 1, 0, 1>(from.x, from.y);
    const Float4 high01 = Pick<2, 3, 2, 3>(from.x, from.y);
    const Float4 low23 = Pick<0, 1, 0, 1>(from.z, from.w);
    const Float4 high23 = Pick<2, 3, 2, 3>(from.z, from.w);
    return {Pick<0, 2, 0, 2>(low01, low23), Pick<1, 3, 1, 3>(low01, low23), Pick<0, 2, 0, 2>(high01, high23),
            Pick<1, 3, 1, 3>(high01, high23)};
}

TEV2_HOT Float4 LoadFour(const float* floats)
{
    return Float4::Load(*reinterpret_cast<const float(*)[4]>(floats));
}

TEV2_HOT void StoreFour(Float4 four, float* floats)
{
    four.Store(*reinterpret_cast<float(*)[4]>(floats));
}

TEV2_HOT Float3x4 LoadVectors(const float* floats)
{
    return {LoadFour(floats), LoadFour(floats + 4), LoadFour(floats + 8)};
}

TEV2_HOT Float4x4 LoadRotations(const float* floats)
{
    return {LoadFour(floats), LoadFour(floats + 4), LoadFour(floats + 8), LoadFour(floats + 12)};
}

TEV2_HOT Float4 Between(Float4 open, Float4 close, Float4 fraction)
{
    return open + (close - open) * fraction;
}

TEV2_HOT Float3x4 Between(const Float3x4& open, const Float3x4& close, Float4 fraction)
{
    return {Between(open.x, close.x, fraction), Between(open.y, close.y, fraction),
            Between(open.z, close.z, fraction)};
}

/// Four rotations on their way.
struct Turn
{
    Float4x4 open;
    Float4x4 close;
    Float4 fraction;
    Float4 dot;
    Float4x4 straight; ///< the results of lanes that do not take the arc
};

/// Along the arc, one by one, but for the lanes of a mask.
Float4x4 TurnedAlongArcs(const Turn& turn, unsigned straight);

TEV2_HOT Float4x4 TurnedBetween(const Float4x4& open, const Float4x4& close, Float4 fraction,
                                unsigned always_straight)
{
    const Float4 dot = open.x * close.x + open.w * close.w + open.y * close.y + open.z * close.z;
    const Float4x4 turned = {Between(open.x, close.x, fraction), Between(open.y, close.y, fraction),
                             Between(open.z, close.z, fraction), Between(open.w, close.w, fraction)};
    const unsigned straight =
        Float4::Above(dot, Float4::All(TEV2_LOADER::FastSlerp::kNearlyParallel)) | always_straight;
    if (straight != 0xF) [[unlikely]]
        return TurnedAlongArcs({open, close, fraction, dot, turned}, straight);
    return turned;
}

/// Four matrices, element by element: three rows of four columns.
struct FourMatrices
{
    Float4x4 rows[3];
};

TEV2_HOT FourMatrices MatricesOf(const FourTransforms& transforms)
{
    const auto& [x, y, z, w] = transforms.rotation;
    const Float4 x2 = x + x;
    const Float4 y2 = y + y;
    const Float4 z2 = z + z;
    const Float4 w2 = w + w;
    const Float4 xx = x2 * x;
    const Float4 yy = y2 * y;
    const Float4 zz = z2 * z;
    const Float4 xy = x2 * y;
    const Float4 xz = x2 * z;
    const Float4 yz = y2 * z;
    const Float4 wx = w2 * x;
    const Float4 wy = w2 * y;
    const Float4 wz = w2 * z;
    const Float4 one = Float4::All(1.0f);
    return {{{one - yy - zz, xy - wz, xz + wy, transforms.translation.x},
             {xy + wz, one - xx - zz, yz - wx, transforms.translation.y},
             {xz - wy, yz + wx, one - xx - yy, transforms.translation.z}}};
}

/// A row of four products, from that row of the left matrices. The first three columns leave out the zero that the
/// last row of a matrix has there: FastProduct adds -0, which never changes a sum.
TEV2_HOT Float4x4 ProductRow(const Float4x4& left, const FourMatrices& right)
{
    const auto& [first, second, third] = right.rows;
    return {left.x * first.x + left.y * second.x + left.z * third.x,
            left.x * first.y + left.y * second.y + left.z * third.y,
            left.x * first.z + left.y * second.z + left.z * third.z,
            left.x * first.w + left.y * second.w + left.z * third.w + left.w};
}

} // namespace TEV2_PLAYBACK
