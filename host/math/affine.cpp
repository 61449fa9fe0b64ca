#include "host/math/affine.h"

#include "numerics/trigonometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace mobu_host
{
namespace
{

constexpr double kRadians = std::numbers::pi / 180.0;

Matrix3 AxisTurn(int axis, double degrees)
{
    const auto [sine, cosine] = numerics::SineAndCosineOfDegrees(degrees);
    const int b = (axis + 1) % 3;
    const int c = (axis + 2) % 3;
    Matrix3 turn;
    turn.at[b][b] = turn.at[c][c] = cosine;
    turn.at[b][c] = -sine;
    turn.at[c][b] = sine;
    return turn;
}

Quaternion Middle(const Quaternion& a, const Quaternion& b)
{
    Quaternion sum{a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3]};
    const double length = std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2] + sum[3] * sum[3]);
    for (double& part : sum)
        part /= length;
    return sum;
}

} // namespace

Vector operator+(const Vector& a, const Vector& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Vector operator-(const Vector& a, const Vector& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector operator*(const Vector& a, double factor)
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

Vector Cross(const Vector& a, const Vector& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Length(const Vector& a)
{
    return std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
}

Vector Column(const Matrix3& matrix, std::size_t column)
{
    return {matrix.at[0][column], matrix.at[1][column], matrix.at[2][column]};
}

Matrix3 OfColumns(const Vector& x, const Vector& y, const Vector& z)
{
    return {{{x[0], y[0], z[0]}, {x[1], y[1], z[1]}, {x[2], y[2], z[2]}}};
}

Matrix3 operator*(const Matrix3& a, const Matrix3& b)
{
    Matrix3 product;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            product.at[row][column] = a.at[row][0] * b.at[0][column] + a.at[row][1] * b.at[1][column] +
                                      a.at[row][2] * b.at[2][column];
    return product;
}

Vector operator*(const Matrix3& a, const Vector& b)
{
    Vector product;
    for (std::size_t row = 0; row < 3; ++row)
        product[row] = a.at[row][0] * b[0] + a.at[row][1] * b[1] + a.at[row][2] * b[2];
    return product;
}

Affine operator*(const Affine& a, const Affine& b)
{
    return {a.linear * b.linear, a.linear * b.place + a.place};
}

Matrix3 Transposed(const Matrix3& a)
{
    Matrix3 transposed;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            transposed.at[row][column] = a.at[column][row];
    return transposed;
}

Matrix3 Scaling(const Vector& factors)
{
    Matrix3 scaling;
    for (int i = 0; i < 3; ++i)
        scaling.at[i][i] = factors[static_cast<std::size_t>(i)];
    return scaling;
}

double Determinant(const Matrix3& a)
{
    const auto& m = a.at;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

bool Invert(const Matrix3& a, Matrix3& inverse)
{
    const double determinant = Determinant(a);
    const double factor = 1.0 / determinant;
    if (determinant == 0.0 || !std::isfinite(factor))
        return false;
    const auto& m = a.at;
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            const int r1 = (column + 1) % 3, r2 = (column + 2) % 3;
            const int c1 = (row + 1) % 3, c2 = (row + 2) % 3;
            inverse.at[row][column] = factor * (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]);
        }
    }
    return true;
}

EulerAxes EulerAxesOf(int order)
{
    static constexpr EulerAxes kAxes[6] = {{0, 1, 2, 1.0},  {0, 2, 1, -1.0}, {1, 2, 0, 1.0},
                                           {1, 0, 2, -1.0}, {2, 0, 1, 1.0},  {2, 1, 0, -1.0}};
    return kAxes[order >= 0 && order < 6 ? order : 0];
}

Matrix3 EulerTurn(const Vector& degrees, int order)
{
    const EulerAxes axes = EulerAxesOf(order);
    const auto turn = [&](std::size_t axis) { return AxisTurn(static_cast<int>(axis), degrees[axis]); };
    return turn(axes.third) * turn(axes.second) * turn(axes.first);
}

Vector EulerAngles(const Matrix3& turn, int order)
{
    const auto [a, b, c, sign] = EulerAxesOf(order);
    const double sine = std::clamp(-sign * turn.at[c][a], -1.0, 1.0);
    Vector degrees{};
    degrees[b] = std::asin(sine) / kRadians;
    if (std::abs(sine) < 1.0 - 1e-12)
    {
        degrees[a] = std::atan2(sign * turn.at[c][b], turn.at[c][c]) / kRadians;
        degrees[c] = std::atan2(sign * turn.at[b][a], turn.at[a][a]) / kRadians;
    }
    else // both outer axes turn about one line: the first one takes it all
    {
        degrees[a] = std::atan2(-sign * turn.at[b][c], turn.at[b][b]) / kRadians;
    }
    return degrees;
}

Quaternion QuaternionOf(const Matrix3& turn)
{
    const auto& m = turn.at;
    const double trace = m[0][0] + m[1][1] + m[2][2];
    if (trace > 0.0)
    {
        const double root = 2.0 * std::sqrt(trace + 1.0);
        return {0.25 * root, (m[2][1] - m[1][2]) / root, (m[0][2] - m[2][0]) / root,
                (m[1][0] - m[0][1]) / root};
    }
    const std::size_t i = m[0][0] >= m[1][1] && m[0][0] >= m[2][2] ? 0 : m[1][1] >= m[2][2] ? 1 : 2;
    const std::size_t j = (i + 1) % 3;
    const std::size_t k = (i + 2) % 3;
    const double root = 2.0 * std::sqrt(1.0 + m[i][i] - m[j][j] - m[k][k]);
    Quaternion q;
    q[0] = (m[k][j] - m[j][k]) / root;
    q[1 + i] = 0.25 * root;
    q[1 + j] = (m[j][i] + m[i][j]) / root;
    q[1 + k] = (m[k][i] + m[i][k]) / root;
    return q;
}

Matrix3 TurnOf(const Quaternion& q)
{
    const auto [w, x, y, z] = q;
    Matrix3 turn;
    const double rows[3][3] = {{1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y - w * z), 2.0 * (x * z + w * y)},
                               {2.0 * (x * y + w * z), 1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z - w * x)},
                               {2.0 * (x * z - w * y), 2.0 * (y * z + w * x), 1.0 - 2.0 * (x * x + y * y)}};
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            turn.at[row][column] = rows[row][column];
    return turn;
}

// By halving the arc: no function of the system's library but the square root, which is exact everywhere.
Quaternion TurnBetween(const Quaternion& from, const Quaternion& to, double fraction)
{
    if (!(fraction > 0.0))
        return from;
    if (fraction >= 1.0)
        return to;
    Quaternion a = from;
    Quaternion b = to;
    if (a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3] < 0.0)
        for (double& part : b)
            part = -part;
    double low = 0.0, high = 1.0;
    Quaternion middle = Middle(a, b);
    for (int i = 0; i < 50; ++i)
    {
        middle = Middle(a, b);
        const double half = 0.5 * (low + high);
        if (half == fraction)
            break;
        (half < fraction ? low : high) = half;
        (half < fraction ? a : b) = middle;
    }
    return middle;
}

Matrix3 TurnBetween(const Matrix3& from, const Matrix3& to, double fraction)
{
    if (!(fraction > 0.0))
        return from;
    if (fraction >= 1.0)
        return to;
    return TurnOf(TurnBetween(QuaternionOf(from), QuaternionOf(to), fraction));
}

} // namespace mobu_host
