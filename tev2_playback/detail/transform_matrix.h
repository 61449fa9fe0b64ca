#pragma once

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_playback/transform.h"

namespace TEV2_PLAYBACK
{

/// The matrix of a transform, with the bits of a node's. A factor of 1 changes none.
inline TEV2_LOADER::TEV2_MATRIX_3X4 MatrixOf(const Transform& transform)
{
    using namespace TEV2_LOADER;
    TEV2_MATRIX_3X4 matrix = FastRigidMatrix(transform.rotation, transform.translation);
    const Float4 factors = Float4::Of(transform.scale.x, transform.scale.y, transform.scale.z, 1.0f);
    for (auto& row : matrix.m)
        (Float4::Load(row) * factors).Store(row);
    return matrix;
}

} // namespace TEV2_PLAYBACK
