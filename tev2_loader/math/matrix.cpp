#include "tev2_loader/math/matrix.h"

#include "tev2_loader/math/detail/fast_math.h"

namespace TEV2_LOADER
{

TEV2_MATRIX_3X4 Product(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    return FastProduct(left, right);
}

TEV2_MATRIX_3X4 RigidMatrix(const TEV2_QUATERNION& rotation, const TEV2_VECTOR_3& translation)
{
    return FastRigidMatrix(rotation, translation);
}

TEV2_MATRIX_3X4 Inverse(const TEV2_MATRIX_3X4& matrix)
{
    const auto& m = matrix.m;
    TEV2_MATRIX_3X4 inverse;
    auto& to = inverse.m;
    for (int row = 0; row < 3; ++row)
    {
        // Cofactors, transposed; going round cyclically gives them their signs.
        const int r1 = (row + 1) % 3;
        const int r2 = (row + 2) % 3;
        for (int column = 0; column < 3; ++column)
        {
            const int c1 = (column + 1) % 3;
            const int c2 = (column + 2) % 3;
            to[column][row] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
        }
    }
    const float determinant = m[0][0] * to[0][0] + m[0][1] * to[1][0] + m[0][2] * to[2][0];
    for (auto& row : to)
    {
        for (int column = 0; column < 3; ++column)
            row[column] /= determinant;
        row[3] = -(row[0] * m[0][3] + row[1] * m[1][3] + row[2] * m[2][3]);
    }
    return inverse;
}

} // namespace TEV2_LOADER
