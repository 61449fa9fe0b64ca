#include "gltf/convert/exchange.h"

#include <array>
#include <numbers>
#include <utility>

namespace tev2_gltf
{
namespace
{

struct Rotation
{
    double x, y, z, w;
};

Rotation Product(const Rotation& left, const Rotation& right)
{
    return {left.w * right.x + left.x * right.w + left.y * right.z - left.z * right.y,
            left.w * right.y - left.x * right.z + left.y * right.w + left.z * right.x,
            left.w * right.z + left.x * right.y - left.y * right.x + left.z * right.w,
            left.w * right.w - left.x * right.x - left.y * right.y - left.z * right.z};
}

constexpr double kHalfRoot = std::numbers::sqrt2 / 2.0;

/// The rotation exchange x SwapYZ.
Rotation AfterSwap(Exchange exchange)
{
    switch (exchange)
    {
    case Exchange::NegateZ:
        return {-kHalfRoot, 0.0, 0.0, kHalfRoot};
    case Exchange::NegateX:
        return {0.0, kHalfRoot, kHalfRoot, 0.0};
    case Exchange::SwapYZ:
        break;
    }
    return {0.0, 0.0, 0.0, 1.0};
}

/// The rotation SwapYZ x exchange.
Rotation BeforeSwap(Exchange exchange)
{
    const Rotation after = AfterSwap(exchange);
    return exchange == Exchange::NegateZ ? Rotation{-after.x, -after.y, -after.z, after.w} : after;
}

} // namespace

TEV2_VECTOR_3 Exchanged(const TEV2_VECTOR_3& vector, Exchange own)
{
    switch (own)
    {
    case Exchange::NegateX:
        return {-vector.x, vector.y, vector.z};
    case Exchange::SwapYZ:
        return {vector.x, vector.z, vector.y};
    case Exchange::NegateZ:
        break;
    }
    return {vector.x, vector.y, -vector.z};
}

TEV2_VECTOR_3 ExchangedScale(const TEV2_VECTOR_3& scale, Exchange own)
{
    return own == Exchange::SwapYZ ? TEV2_VECTOR_3{scale.x, scale.z, scale.y} : scale;
}

TEV2_QUATERNION ExchangedRotation(const TEV2_QUATERNION& rotation, Exchange parent, Exchange own)
{
    // SwapYZ x rotation x SwapYZ, with the mirroring taken out.
    const TEV2_QUATERNION swapped{-rotation.x, -rotation.z, -rotation.y, rotation.w};
    if (parent == Exchange::SwapYZ && own == Exchange::SwapYZ)
        return swapped;
    const auto wide = [](float number) { return static_cast<double>(number); };
    const Rotation middle{wide(swapped.x), wide(swapped.y), wide(swapped.z), wide(swapped.w)};
    const Rotation turned = Product(Product(AfterSwap(parent), middle), BeforeSwap(own));
    return {static_cast<float>(turned.x), static_cast<float>(turned.y), static_cast<float>(turned.z),
            static_cast<float>(turned.w)};
}

TEV2_MATRIX_3X4 Exchanged(const TEV2_MATRIX_3X4& matrix, Exchange to, Exchange from)
{
    TEV2_MATRIX_3X4 result;
    std::array<TEV2_VECTOR_3, 4> columns;
    for (int column = 0; column < 4; ++column)
    {
        columns[static_cast<std::size_t>(column)] =
            Exchanged({matrix.m[0][column], matrix.m[1][column], matrix.m[2][column]}, to);
    }
    const auto negated = [](const TEV2_VECTOR_3& column) {
        return TEV2_VECTOR_3{-column.x, -column.y, -column.z};
    };
    switch (from)
    {
    case Exchange::NegateX:
        columns[0] = negated(columns[0]);
        break;
    case Exchange::SwapYZ:
        std::swap(columns[1], columns[2]);
        break;
    case Exchange::NegateZ:
        columns[2] = negated(columns[2]);
        break;
    }
    for (int column = 0; column < 4; ++column)
    {
        const TEV2_VECTOR_3& values = columns[static_cast<std::size_t>(column)];
        result.m[0][column] = values.x;
        result.m[1][column] = values.y;
        result.m[2][column] = values.z;
    }
    return result;
}

} // namespace tev2_gltf
