#include "host/sdk/matrix.h"

#include "numerics/trigonometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace mobu_host
{
namespace
{

constexpr double kRadians = std::numbers::pi / 180.0;

using Rotation3 = double[3][3];

struct AxisOrder
{
    int first, second, third;
    double sign; // -1 for an odd permutation of X, Y, Z
};

AxisOrder AxesOf(FBModelRotationOrder order)
{
    switch (order)
    {
    case kFBEulerXZY:
        return {0, 2, 1, -1.0};
    case kFBEulerYZX:
        return {1, 2, 0, 1.0};
    case kFBEulerYXZ:
        return {1, 0, 2, -1.0};
    case kFBEulerZXY:
        return {2, 0, 1, 1.0};
    case kFBEulerZYX:
        return {2, 1, 0, -1.0};
    case kFBEulerXYZ:
    case kFBSphericXYZ:
        break;
    }
    return {0, 1, 2, 1.0};
}

void Multiply3(const Rotation3& a, const Rotation3& b, Rotation3& product)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            product[row][column] =
                a[row][0] * b[0][column] + a[row][1] * b[1][column] + a[row][2] * b[2][column];
}

void Transpose3(const Rotation3& from, Rotation3& to)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            to[row][column] = from[column][row];
}

// The three turns of an Euler rotation in closed form, for any order of the axes.
void FromEuler(const FBVector3d& degrees, FBModelRotationOrder order, Rotation3& out)
{
    const AxisOrder axes = AxesOf(order);
    const int a = axes.first;
    const int b = axes.second;
    const int c = axes.third;
    const double s = axes.sign;
    const auto [sa, ca] = numerics::SineAndCosineOfDegrees(degrees[a]);
    const auto [sb, cb] = numerics::SineAndCosineOfDegrees(degrees[b]);
    const auto [sc, cc] = numerics::SineAndCosineOfDegrees(degrees[c]);
    out[a][a] = cb * cc;
    out[a][b] = s * cb * sc;
    out[a][c] = -s * sb;
    out[b][a] = sa * sb * cc - s * ca * sc;
    out[b][b] = s * sa * sb * sc + ca * cc;
    out[b][c] = s * sa * cb;
    out[c][a] = s * ca * sb * cc + sa * sc;
    out[c][b] = ca * sb * sc - s * sa * cc;
    out[c][c] = ca * cb;
}

FBVector3d ToEuler(const Rotation3& m, FBModelRotationOrder order)
{
    const AxisOrder axes = AxesOf(order);
    const int a = axes.first;
    const int b = axes.second;
    const int c = axes.third;
    const double s = axes.sign;
    const double sine = std::clamp(-s * m[a][c], -1.0, 1.0);
    FBVector3d degrees;
    degrees[b] = std::asin(sine) / kRadians;
    if (std::abs(sine) < 1.0 - 1e-12)
    {
        degrees[a] = std::atan2(s * m[b][c], m[c][c]) / kRadians;
        degrees[c] = std::atan2(s * m[a][b], m[a][a]) / kRadians;
    }
    else // both outer axes turn about one line: the first one takes it all
    {
        degrees[a] = std::atan2(-s * m[c][b], m[b][b]) / kRadians;
    }
    return degrees;
}

bool IsZero(const FBVector3d& vector)
{
    return vector[0] == 0.0 && vector[1] == 0.0 && vector[2] == 0.0;
}

} // namespace

void SetIdentity(Matrix& matrix)
{
    for (int i = 0; i < 16; ++i)
        matrix[i] = i % 5 == 0 ? 1.0 : 0.0;
}

void Multiply(const Matrix& first, const Matrix& second, Matrix& product)
{
    for (int row = 0; row < 16; row += 4)
        for (int column = 0; column < 4; ++column)
            product[row + column] = first[row] * second[column] + first[row + 1] * second[4 + column] +
                                    first[row + 2] * second[8 + column] +
                                    first[row + 3] * second[12 + column];
}

bool Invert(const Matrix& matrix, Matrix& inverse)
{
    double left[4][8];
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
        {
            left[row][column] = matrix[4 * row + column];
            left[row][4 + column] = row == column ? 1.0 : 0.0;
        }
    for (int pivot = 0; pivot < 4; ++pivot)
    {
        int best = pivot;
        for (int row = pivot + 1; row < 4; ++row)
            if (std::abs(left[row][pivot]) > std::abs(left[best][pivot]))
                best = row;
        if (!(std::abs(left[best][pivot]) > 0.0))
        {
            SetIdentity(inverse);
            return false;
        }
        std::swap_ranges(left[pivot], left[pivot] + 8, left[best]);
        const double scale = 1.0 / left[pivot][pivot];
        for (double& value : left[pivot])
            value *= scale;
        for (int row = 0; row < 4; ++row)
        {
            const double factor = left[row][pivot];
            if (row != pivot && factor != 0.0)
                for (int column = 0; column < 8; ++column)
                    left[row][column] -= factor * left[pivot][column];
        }
    }
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            inverse[4 * row + column] = left[row][4 + column];
    return true;
}

void Compose(const LocalTransform& transform, const RotationRule& rule, Matrix& matrix)
{
    Rotation3 rotation;
    FromEuler(transform.rotation, rule.order, rotation);
    if (!IsZero(rule.post) || !IsZero(rule.pre))
    {
        Rotation3 pre, post, post_undone, half;
        FromEuler(rule.pre, kFBEulerXYZ, pre);
        FromEuler(rule.post, kFBEulerXYZ, post);
        Transpose3(post, post_undone);
        Multiply3(post_undone, rotation, half);
        Multiply3(half, pre, rotation);
    }
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
            matrix[4 * row + column] = transform.scaling[row] * rotation[row][column];
        matrix[4 * row + 3] = 0.0;
        matrix[12 + row] = transform.translation[row];
    }
    matrix[15] = 1.0;
}

LocalTransform Decompose(const Matrix& matrix, const RotationRule& rule)
{
    LocalTransform transform;
    Rotation3 rotation;
    for (int row = 0; row < 3; ++row)
    {
        const double* axis = &matrix[4 * row];
        const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
        transform.translation[row] = matrix[12 + row];
        transform.scaling[row] = length;
        for (int column = 0; column < 3; ++column)
            rotation[row][column] = length > 0.0 ? axis[column] / length : (row == column ? 1.0 : 0.0);
    }
    const auto& r = rotation;
    const double determinant = r[0][0] * (r[1][1] * r[2][2] - r[1][2] * r[2][1]) -
                               r[0][1] * (r[1][0] * r[2][2] - r[1][2] * r[2][0]) +
                               r[0][2] * (r[1][0] * r[2][1] - r[1][1] * r[2][0]);
    if (determinant < 0.0)
    {
        transform.scaling[0] = -transform.scaling[0];
        for (double& value : rotation[0])
            value = -value;
    }
    if (!IsZero(rule.post) || !IsZero(rule.pre))
    {
        Rotation3 pre, pre_undone, post, half;
        FromEuler(rule.pre, kFBEulerXYZ, pre);
        FromEuler(rule.post, kFBEulerXYZ, post);
        Transpose3(pre, pre_undone);
        Multiply3(post, rotation, half);
        Multiply3(half, pre_undone, rotation);
    }
    transform.rotation = ToEuler(rotation, rule.order);
    return transform;
}

} // namespace mobu_host
