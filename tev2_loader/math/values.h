#pragma once

#include "tev2_loader/detail/float4.h"
#include "tev2_loader/records/object_bases.h"

#include <cstddef>
#include <tuple>
#include <utility>

namespace TEV2_LOADER
{

// The values that tracks hold. Each lists its floats in file order as Components(); on that stand its
// arithmetic, its comparison (a NaN equals nothing) and, for the value records, Load and Save.

struct TEV2_VECTOR_2
{
    float x = 0.0f;
    float y = 0.0f;

    auto Components() { return std::tie(x, y); }
    auto Components() const { return std::tie(x, y); }
};

struct TEV2_VECTOR_3
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    auto Components() { return std::tie(x, y, z); }
    auto Components() const { return std::tie(x, y, z); }
};

struct TEV2_VECTOR_4
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 0.0f;

    auto Components() { return std::tie(x, y, z, w); }
    auto Components() const { return std::tie(x, y, z, w); }
};

/// A rotation, scalar part last; the identity unless given. Not normalised by anything here.
struct TEV2_QUATERNION
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 1.0f;

    auto Components() { return std::tie(x, y, z, w); }
    auto Components() const { return std::tie(x, y, z, w); }
};

/// Three rows of four: rotation and scale in columns 0 to 2, translation in column 3; points are column
/// vectors. The identity unless given.
struct TEV2_MATRIX_3X4
{
    float m[3][4] = {{1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}};
};

/// left times right: the transform that applies right first.
inline TEV2_MATRIX_3X4 Product(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
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

/// The affine inverse: cofactors divided by the determinant. Of a matrix that has none it gives values that
/// are not finite.
TEV2_MATRIX_3X4 Inverse(const TEV2_MATRIX_3X4& matrix);

/// The matrix of a unit quaternion and a translation. Not normalised: another quaternion gives another matrix.
///     1 - 2yy - 2zz    2xy - 2wz        2xz + 2wy        tx
///     2xy + 2wz        1 - 2xx - 2zz    2yz - 2wx        ty
///     2xz - 2wy        2yz + 2wx        1 - 2xx - 2yy    tz
inline TEV2_MATRIX_3X4 RigidMatrix(const TEV2_QUATERNION& rotation, const TEV2_VECTOR_3& translation)
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

/// A value that is a record: its floats, 4 bytes each.
template <typename Record>
class ValueRecord : public TEV2_SERIALISABLE_OBJECT
{
public:
    /// Always true; a record past the end of the image fails the cursor.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float /*version*/) override
    {
        std::apply([&cursor](auto&... component) { ((component = cursor.ReadF32()), ...); },
                   static_cast<Record&>(*this).Components());
        return true;
    }

    /// True when all floats were written.
    bool Save(TEV2_FILE_WRITER& writer) const override
    {
        bool saved = true;
        std::apply([&](const auto&... component) { ((saved &= writer.WriteF32(component)), ...); },
                   static_cast<const Record&>(*this).Components());
        return saved;
    }
};

/// Two bounds: near and far, or start and end.
class TEV2_FLOAT32_RANGE final : public ValueRecord<TEV2_FLOAT32_RANGE>
{
public:
    float minimum = 0.0f;
    float maximum = 0.0f;

    TEV2_FLOAT32_RANGE() = default;
    TEV2_FLOAT32_RANGE(float least, float most) : minimum(least), maximum(most) {}

    auto Components() { return std::tie(minimum, maximum); }
    auto Components() const { return std::tie(minimum, maximum); }
};

class TEV2_COLOUR final : public ValueRecord<TEV2_COLOUR>
{
public:
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 0.0f;

    TEV2_COLOUR() = default;
    TEV2_COLOUR(float r, float g, float b, float a) : red(r), green(g), blue(b), alpha(a) {}

    auto Components() { return std::tie(red, green, blue, alpha); }
    auto Components() const { return std::tie(red, green, blue, alpha); }
};

/// Two opposite corners of a rectangle.
class TEV2_RECTF final : public ValueRecord<TEV2_RECTF>
{
public:
    TEV2_VECTOR_2 minimum;
    TEV2_VECTOR_2 maximum;

    TEV2_RECTF() = default;
    TEV2_RECTF(const TEV2_VECTOR_2& least, const TEV2_VECTOR_2& most) : minimum(least), maximum(most) {}

    auto Components() { return std::tuple_cat(minimum.Components(), maximum.Components()); }
    auto Components() const { return std::tuple_cat(minimum.Components(), maximum.Components()); }
};

class TEV2_BINORMAL_TANGENT final : public ValueRecord<TEV2_BINORMAL_TANGENT>
{
public:
    TEV2_VECTOR_3 binormal;
    TEV2_VECTOR_3 tangent;

    TEV2_BINORMAL_TANGENT() = default;
    TEV2_BINORMAL_TANGENT(const TEV2_VECTOR_3& the_binormal, const TEV2_VECTOR_3& the_tangent)
        : binormal(the_binormal), tangent(the_tangent)
    {
    }

    auto Components() { return std::tuple_cat(binormal.Components(), tangent.Components()); }
    auto Components() const { return std::tuple_cat(binormal.Components(), tangent.Components()); }
};

/// Two opposite corners of a box along the axes, metres.
class TEV2_BOUNDING_BOX final : public ValueRecord<TEV2_BOUNDING_BOX>
{
public:
    TEV2_VECTOR_3 minimum;
    TEV2_VECTOR_3 maximum;

    TEV2_BOUNDING_BOX() = default;
    TEV2_BOUNDING_BOX(const TEV2_VECTOR_3& least, const TEV2_VECTOR_3& most) : minimum(least), maximum(most)
    {
    }

    auto Components() { return std::tuple_cat(minimum.Components(), maximum.Components()); }
    auto Components() const { return std::tuple_cat(minimum.Components(), maximum.Components()); }
};

/// Bytes of a value of this type on disk.
template <typename Value>
inline constexpr std::size_t
    kDiskSize = sizeof(float) * std::tuple_size_v<decltype(std::declval<const Value&>().Components())>;

/// A value made of several floats.
template <typename Value>
concept ComponentValue = requires(Value value)
{
    value.Components();
};

/// Applies operation(left, right) to each pair of components.
template <ComponentValue Value, typename Operation>
Value Zip(Value left, const Value& right, Operation operation)
{
    std::apply(
        [&](auto&... to)
        { std::apply([&](const auto&... from) { ((to = operation(to, from)), ...); }, right.Components()); },
        left.Components());
    return left;
}

template <ComponentValue Value>
Value operator+(const Value& left, const Value& right)
{
    return Zip(left, right, [](float a, float b) { return a + b; });
}

template <ComponentValue Value>
Value operator-(const Value& left, const Value& right)
{
    return Zip(left, right, [](float a, float b) { return a - b; });
}

template <ComponentValue Value>
Value operator-(const Value& value)
{
    return Zip(value, value, [](float a, float) { return -a; });
}

template <ComponentValue Value>
Value operator*(const Value& value, float factor)
{
    return Zip(value, value, [factor](float a, float) { return a * factor; });
}

template <ComponentValue Value>
bool operator==(const Value& left, const Value& right)
{
    return left.Components() == right.Components();
}

} // namespace TEV2_LOADER
