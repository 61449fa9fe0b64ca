#include "gltf/convert/exchange.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace
{

using namespace tev2_gltf;

using Matrix = std::array<std::array<double, 3>, 3>;

constexpr std::array kExchanges = {Exchange::NegateX, Exchange::SwapYZ, Exchange::NegateZ};

Matrix MatrixOf(Exchange exchange)
{
    switch (exchange)
    {
    case Exchange::NegateX:
        return {{{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    case Exchange::SwapYZ:
        return {{{1, 0, 0}, {0, 0, 1}, {0, 1, 0}}};
    case Exchange::NegateZ:
        break;
    }
    return {{{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}};
}

Matrix MatrixOf(const TEV2_QUATERNION& q)
{
    const double x = q.x, y = q.y, z = q.z, w = q.w;
    return {{{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
             {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
             {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}}};
}

Matrix operator*(const Matrix& a, const Matrix& b)
{
    Matrix product{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            for (std::size_t i = 0; i < 3; ++i)
                product[row][column] += a[row][i] * b[i][column];
    return product;
}

void ExpectNear(const Matrix& found, const Matrix& expected)
{
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            EXPECT_NEAR(found[row][column], expected[row][column], 1e-6);
}

TEST(Exchange, RotatesAsTheMatricesDoForAllPairs)
{
    std::mt19937 random(7);
    std::normal_distribution<double> normal;
    for (const Exchange parent : kExchanges)
    {
        for (const Exchange own : kExchanges)
        {
            std::array<double, 4> v{normal(random), normal(random), normal(random), normal(random)};
            const double length = std::hypot(std::hypot(v[0], v[1]), std::hypot(v[2], v[3]));
            const TEV2_QUATERNION q{static_cast<float>(v[0] / length), static_cast<float>(v[1] / length),
                                    static_cast<float>(v[2] / length), static_cast<float>(v[3] / length)};
            const TEV2_QUATERNION there = ExchangedRotation(q, parent, own);
            ExpectNear(MatrixOf(there), MatrixOf(parent) * MatrixOf(q) * MatrixOf(own));
            ExpectNear(MatrixOf(ExchangedRotation(there, parent, own)), MatrixOf(q));
        }
    }
}

TEST(Exchange, MovesVectorsScalesAndMatricesExactly)
{
    const TEV2_VECTOR_3 v{1.0f, 2.0f, 3.0f};
    TEV2_MATRIX_3X4 matrix;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            matrix.m[row][column] = static_cast<float>(row * 4 + column + 1);
    for (const Exchange to : kExchanges)
    {
        const Matrix left = MatrixOf(to);
        const TEV2_VECTOR_3 moved = Exchanged(v, to);
        const std::array<float, 3> found{moved.x, moved.y, moved.z};
        for (std::size_t row = 0; row < 3; ++row)
            EXPECT_EQ(found[row], left[row][0] * 1.0 + left[row][1] * 2.0 + left[row][2] * 3.0);
        for (const Exchange from : kExchanges)
        {
            const TEV2_MATRIX_3X4 result = Exchanged(matrix, to, from);
            const Matrix linear =
                left * Matrix{{{1, 2, 3}, {5, 6, 7}, {9, 10, 11}}} * MatrixOf(from); // rows of `matrix`
            for (std::size_t row = 0; row < 3; ++row)
            {
                for (std::size_t column = 0; column < 3; ++column)
                    EXPECT_EQ(result.m[row][column], linear[row][column]);
                EXPECT_EQ(result.m[row][3], left[row][0] * 4 + left[row][1] * 8 + left[row][2] * 12);
            }
        }
    }
    const TEV2_VECTOR_3 swapped = ExchangedScale(v, Exchange::SwapYZ);
    EXPECT_EQ(swapped.y, 3.0f);
    EXPECT_EQ(swapped.z, 2.0f);
    EXPECT_EQ(ExchangedScale(v, Exchange::NegateX).x, 1.0f);
}

} // namespace
