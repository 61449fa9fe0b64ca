#include "tev2_loader/records/values.h"

#include <cstring>

namespace TEV2_LOADER
{

namespace
{

/// A row of a matrix, worked on as a whole.
#if defined(__GNUC__)
using Row = float __attribute__((vector_size(16)));
#else
struct Row
{
    float column[4];

    friend Row operator*(float factor, const Row& row)
    {
        const auto& [a, b, c, d] = row.column;
        return {factor * a, factor * b, factor * c, factor * d};
    }
    friend Row operator+(const Row& left, const Row& right)
    {
        const auto& [a, b, c, d] = left.column;
        const auto& [e, f, g, h] = right.column;
        return {a + e, b + f, c + g, d + h};
    }
};
#endif

Row RowOf(const float (&columns)[4])
{
    Row row;
    std::memcpy(&row, columns, sizeof row);
    return row;
}

} // namespace

TEV2_MATRIX_3X4 Product(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    const Row right_rows[3] = {RowOf(right.m[0]), RowOf(right.m[1]), RowOf(right.m[2])};
    TEV2_MATRIX_3X4 product;
    for (int row = 0; row < 3; ++row)
    {
        const float* a = left.m[row];
        // Adding -0 leaves every number as it is, its sign included.
        const Row place = {-0.0f, -0.0f, -0.0f, a[3]};
        const Row sum = a[0] * right_rows[0] + a[1] * right_rows[1] + a[2] * right_rows[2] + place;
        std::memcpy(product.m[row], &sum, sizeof sum);
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

} // namespace TEV2_LOADER
