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
    for (auto& row : to)
    {
        for (int column = 0; column < 3; ++column)
            row[column] /= determinant;
        row[3] = -(row[0] * m[0][3] + row[1] * m[1][3] + row[2] * m[2][3]);
    }
    return inverse;
}

TEV2_MATRIX_3X4 RotationMatrix(const TEV2_QUATERNION& q)
{
    const auto [x, y, z, w] = q;
    TEV2_MATRIX_3X4 matrix;
    matrix.m[0][0] = 1.0f - 2.0f * y * y - 2.0f * z * z;
    matrix.m[0][1] = 2.0f * x * y - 2.0f * w * z;
    matrix.m[0][2] = 2.0f * x * z + 2.0f * w * y;
    matrix.m[1][0] = 2.0f * x * y + 2.0f * w * z;
    matrix.m[1][1] = 1.0f - 2.0f * x * x - 2.0f * z * z;
    matrix.m[1][2] = 2.0f * y * z - 2.0f * w * x;
    matrix.m[2][0] = 2.0f * x * z - 2.0f * w * y;
    matrix.m[2][1] = 2.0f * y * z + 2.0f * w * x;
    matrix.m[2][2] = 1.0f - 2.0f * x * x - 2.0f * y * y;
    return matrix;
}

} // namespace TEV2_LOADER
