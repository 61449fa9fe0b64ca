#pragma once

#include "tev2_loader/math/matrix.h"

#include <algorithm>

namespace tev2_python
{

/// Writes four rows of four; the last is 0, 0, 0, 1.
inline void CopyMatrix(const TEV2_LOADER::TEV2_MATRIX_3X4& matrix, float* out)
{
    static constexpr float kLastRow[] = {0.0f, 0.0f, 0.0f, 1.0f};
    std::copy_n(kLastRow, 4, std::copy_n(&matrix.m[0][0], 12, out));
}

} // namespace tev2_python
