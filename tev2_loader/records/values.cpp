#include "tev2_loader/records/values.h"

namespace TEV2_LOADER
{

TEV2_MATRIX_3X4 Product(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    TEV2_MATRIX_3X4 product;
    for (int row = 0; row < 3; ++row)
    {
        const float* a = left.m[row];
        for (int column = 0; column < 4; ++column)
        {
            product.m[row][column] =
                a[0] * right.m[0][column] + a[1] * right.m[1][column] + a[2] * right.m[2][column];
        }
        product.m[row][3] += a[3];
    }
    return product;
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
    const float factor = determinant == 0.0f ? 0.0f : 1.0f / determinant;
    for (auto& row : to)
    {
        for (int column = 0; column < 3; ++column)
            row[column] *= factor;
        row[3] = -(row[0] * m[0][3] + row[1] * m[1][3] + row[2] * m[2][3]);
    }
    return inverse;
}

} // namespace TEV2_LOADER
