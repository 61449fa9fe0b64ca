#pragma once

#include "tev2_loader/requirements.h"

#include <tuple>

namespace TEV2_LOADER
{

// Vectors, and the arithmetic of all values that consist of floats. Such a value lists them in file order as
// Components(); +, -, * and == work component by component (a NaN equals nothing).
//
//     TEV2_VECTOR_3 middle = (TEV2_VECTOR_3{0, 1, 0} + TEV2_VECTOR_3{2, 1, 0}) * 0.5f;

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

/// Two directions along the surface of a vertex; with its normal they are the axes of normal maps.
struct TEV2_VERTEX_FRAME
{
    TEV2_VECTOR_3 binormal;
    TEV2_VECTOR_3 tangent;

    auto Components() { return std::tuple_cat(binormal.Components(), tangent.Components()); }
    auto Components() const { return std::tuple_cat(binormal.Components(), tangent.Components()); }
};

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
