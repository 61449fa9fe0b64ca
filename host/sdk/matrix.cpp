#include "host/sdk/matrix.h"

#include "host/math/affine.h"
#include "numerics/trigonometry.h"

#include <algorithm>
#include <cmath>

namespace mobu_host
{
namespace
{

// The three turns of an Euler rotation in closed form, for any order of the axes, for row vectors. Not as EulerTurn
// rounds.
Matrix3 FromEuler(const FBVector3d& degrees, FBModelRotationOrder order)
{
    const auto [a, b, c, s] = EulerAxesOf(order);
    const auto [sa, ca] = numerics::SineAndCosineOfDegrees(degrees[static_cast<int>(a)]);
    const auto [sb, cb] = numerics::SineAndCosineOfDegrees(degrees[static_cast<int>(b)]);
    const auto [sc, cc] = numerics::SineAndCosineOfDegrees(degrees[static_cast<int>(c)]);
    Matrix3 turn;
    auto& out = turn.at;
    out[a][a] = cb * cc;
    out[a][b] = s * cb * sc;
    out[a][c] = -s * sb;
    out[b][a] = sa * sb * cc - s * ca * sc;
    out[b][b] = s * sa * sb * sc + ca * cc;
    out[b][c] = s * sa * cb;
    out[c][a] = s * ca * sb * cc + sa * sc;
    out[c][b] = ca * sb * sc - s * sa * cc;
    out[c][c] = ca * cb;
    return turn;
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
    Matrix3 rotation = FromEuler(transform.rotation, rule.order);
    if (!IsZero(rule.post) || !IsZero(rule.pre))
        rotation =
            Transposed(FromEuler(rule.post, kFBEulerXYZ)) * rotation * FromEuler(rule.pre, kFBEulerXYZ);
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
            matrix[4 * row + column] = transform.scaling[row] * rotation.at[row][column];
        matrix[4 * row + 3] = 0.0;
        matrix[12 + row] = transform.translation[row];
    }
    matrix[15] = 1.0;
}

LocalTransform Decompose(const Matrix& matrix, const RotationRule& rule)
{
    LocalTransform transform;
    Matrix3 rotation;
    for (int row = 0; row < 3; ++row)
    {
        const double* axis = &matrix[4 * row];
        const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
        transform.translation[row] = matrix[12 + row];
        transform.scaling[row] = length;
        for (int column = 0; column < 3; ++column)
            rotation.at[row][column] = length > 0.0 ? axis[column] / length : (row == column ? 1.0 : 0.0);
    }
    if (Determinant(rotation) < 0.0)
    {
        transform.scaling[0] = -transform.scaling[0];
        for (double& value : rotation.at[0])
            value = -value;
    }
    if (!IsZero(rule.post) || !IsZero(rule.pre))
        rotation =
            FromEuler(rule.post, kFBEulerXYZ) * rotation * Transposed(FromEuler(rule.pre, kFBEulerXYZ));
    transform.rotation = FBVector3d(EulerAngles(Transposed(rotation), rule.order).data());
    return transform;
}

} // namespace mobu_host
