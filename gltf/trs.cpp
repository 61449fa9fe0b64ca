#include "gltf/trs.h"

#include <algorithm>
#include <cmath>

namespace gltf
{
namespace
{

using Rows = std::array<std::array<double, 3>, 3>;

double Determinant(const Rows& m)
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

std::array<double, 4> RotationOf(const Rows& m)
{
    const double trace = m[0][0] + m[1][1] + m[2][2];
    if (trace > 0.0)
    {
        const double root = 2.0 * std::sqrt(trace + 1.0);
        return {(m[2][1] - m[1][2]) / root, (m[0][2] - m[2][0]) / root, (m[1][0] - m[0][1]) / root,
                0.25 * root};
    }
    const std::size_t i = m[0][0] >= m[1][1] && m[0][0] >= m[2][2] ? 0 : m[1][1] >= m[2][2] ? 1 : 2;
    const std::size_t j = (i + 1) % 3;
    const std::size_t k = (i + 2) % 3;
    const double root = 2.0 * std::sqrt(1.0 + m[i][i] - m[j][j] - m[k][k]);
    std::array<double, 4> q;
    q[i] = 0.25 * root;
    q[j] = (m[j][i] + m[i][j]) / root;
    q[k] = (m[k][i] + m[i][k]) / root;
    q[3] = (m[k][j] - m[j][k]) / root;
    return q;
}

void Normalise(std::array<double, 4>& q)
{
    double largest = 0.0;
    for (const double part : q)
        largest = std::max(largest, std::abs(part));
    if (!(largest > 0.0) || !std::isfinite(largest))
    {
        q = {0.0, 0.0, 0.0, 1.0};
        return;
    }
    double square = 0.0;
    for (double& part : q)
    {
        part /= largest; // so that no square is too large or too small
        square += part * part;
    }
    for (double& part : q)
        part /= std::sqrt(square);
}

} // namespace

Trs Decomposed(const ColumnMatrix& matrix)
{
    Rows turn;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
            turn[row][column] = matrix[4 * column + row];
    }
    const double sign = Determinant(turn) < 0.0 ? -1.0 : 1.0;
    Trs trs;
    trs.translation = {matrix[12], matrix[13], matrix[14]};
    bool has_turn = true;
    for (std::size_t column = 0; column < 3; ++column)
    {
        const double length =
            sign * std::sqrt(turn[0][column] * turn[0][column] + turn[1][column] * turn[1][column] +
                             turn[2][column] * turn[2][column]);
        trs.scale[column] = length;
        has_turn = has_turn && length != 0.0;
        for (auto& row : turn)
            row[column] /= length;
    }
    if (has_turn)
    {
        trs.rotation = RotationOf(turn);
        Normalise(trs.rotation);
    }
    return trs;
}

ColumnMatrix Composed(const Trs& trs)
{
    const auto [x, y, z, w] = trs.rotation;
    const double rows[3][3] = {{1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y - w * z), 2.0 * (x * z + w * y)},
                               {2.0 * (x * y + w * z), 1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z - w * x)},
                               {2.0 * (x * z - w * y), 2.0 * (y * z + w * x), 1.0 - 2.0 * (x * x + y * y)}};
    ColumnMatrix matrix{};
    for (std::size_t column = 0; column < 3; ++column)
    {
        for (std::size_t row = 0; row < 3; ++row)
            matrix[4 * column + row] = rows[row][column] * trs.scale[column];
        matrix[12 + column] = trs.translation[column];
    }
    matrix[15] = 1.0;
    return matrix;
}

bool IsSheared(const ColumnMatrix& matrix)
{
    const ColumnMatrix again = Composed(Decomposed(matrix));
    double largest = 1.0;
    for (std::size_t i = 0; i < 12; ++i)
        largest = std::max(largest, std::abs(matrix[i]));
    for (std::size_t i = 0; i < matrix.size(); ++i)
    {
        if (!(std::abs(again[i] - matrix[i]) <= 1e-5 * largest))
            return true;
    }
    return false;
}

} // namespace gltf
