#pragma once

#include "mobu_host/scene.h"

// Row-vector 4x4 matrices as 16 doubles, row by row.

namespace mobu_host
{

using Matrix = double[16];

/// How a model makes a matrix of its Rotation.
struct RotationRule
{
    FBModelRotationOrder order = kFBEulerXYZ;
    FBVector3d pre;
    FBVector3d post;
};

void SetIdentity(Matrix& matrix);
void Multiply(const Matrix& first, const Matrix& second, Matrix& product); // product is neither factor
bool Invert(const Matrix& matrix, Matrix& inverse); // false, and the identity, when it has no inverse

/// Scaling, inverse post-rotation, rotation, pre-rotation, translation: in this order for a row vector.
void Compose(const LocalTransform& transform, const RotationRule& rule, Matrix& matrix);
/// The inverse of Compose for a matrix without shear; a mirrored one gets a negative scaling in X.
LocalTransform Decompose(const Matrix& matrix, const RotationRule& rule);

} // namespace mobu_host
