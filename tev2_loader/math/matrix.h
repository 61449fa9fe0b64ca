#pragma once

#include "tev2_loader/math/quaternion.h"

namespace TEV2_LOADER
{

/// Three rows of four: rotation and scale in columns 0 to 2, translation in column 3; points are column
/// vectors. The identity unless given.
struct TEV2_MATRIX_3X4
{
    float m[3][4] = {{1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, 1.0f, 0.0f}};
};

/// left times right: the transform that applies right first.
TEV2_MATRIX_3X4 Product(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right);

/// The affine inverse: cofactors divided by the determinant. Not finite when the matrix is singular.
TEV2_MATRIX_3X4 Inverse(const TEV2_MATRIX_3X4& matrix);

/// The matrix of a unit quaternion and a translation. The quaternion is used as it is.
///  1 - 2yy - 2zz    2xy - 2wz        2xz + 2wy        tx
///  2xy + 2wz        1 - 2xx - 2zz    2yz - 2wx        ty
///  2xz - 2wy        2yz + 2wx        1 - 2xx - 2yy    tz
TEV2_MATRIX_3X4 RigidMatrix(const TEV2_QUATERNION& rotation, const TEV2_VECTOR_3& translation);

} // namespace TEV2_LOADER
