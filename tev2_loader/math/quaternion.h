#pragma once

#include "tev2_loader/math/vectors.h"

namespace TEV2_LOADER
{

/// A rotation, scalar part last; the identity unless given. Nothing here normalises it.
struct TEV2_QUATERNION
{
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 1.0f;

    auto Components() { return std::tie(x, y, z, w); }
    auto Components() const { return std::tie(x, y, z, w); }
};

/// The Hamilton product left * right: the rotation that applies right first.
TEV2_QUATERNION Product(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right);

/// The dot product of two rotations as four-component vectors.
float Dot(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right);

} // namespace TEV2_LOADER
