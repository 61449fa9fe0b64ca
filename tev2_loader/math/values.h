#pragma once

#include "tev2_loader/io/interfaces.h"
#include "tev2_loader/math/matrix.h"
#include "tev2_loader/math/quaternion.h"
#include "tev2_loader/math/vectors.h"

#include <tuple>
#include <utility>

namespace TEV2_LOADER
{

// What tracks can hold besides numbers, vectors and quaternions.

/// A value that is a record of floats.
template <typename Record>
class ValueRecord : public TEV2_SERIALISABLE_OBJECT
{
public:
    /// Always true; missing bytes fail the cursor.
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

} // namespace TEV2_LOADER
