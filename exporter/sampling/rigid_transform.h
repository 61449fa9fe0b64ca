#pragma once

// Rotations and affine matrices in single precision, with the exact order of operations that the keys of the
// file depend on. Matrices are 3 rows of 4, column vectors, the translation in column 3.

#include "tev2_loader/math/values.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

namespace tev2_exporter
{

using TEV2_LOADER::TEV2_MATRIX_3X4;
using TEV2_LOADER::TEV2_QUATERNION;
using TEV2_LOADER::TEV2_VECTOR_3;

inline constexpr TEV2_QUATERNION kIdentityQuaternion{0.0f, 0.0f, 0.0f, 1.0f};

TEV2_VECTOR_3 Column(const TEV2_MATRIX_3X4& matrix, int column);
void SetColumn(TEV2_MATRIX_3X4& matrix, int column, const TEV2_VECTOR_3& value);

/// `vector` times 1 / its length; a vector of length 0 gives NaN.
TEV2_VECTOR_3 Normalised(const TEV2_VECTOR_3& vector);

/// Quaternion of the rotation in columns 0 to 2. Neither normalised nor given a preferred sign.
TEV2_QUATERNION ToQuaternion(const TEV2_MATRIX_3X4& matrix);

/// Rotation by `angle` (radians) about `axis` (unit length).
TEV2_QUATERNION RotationAbout(const TEV2_VECTOR_3& axis, float angle);

TEV2_VECTOR_3 TransformPoint(const TEV2_MATRIX_3X4& matrix, const TEV2_VECTOR_3& point);

} // namespace tev2_exporter
