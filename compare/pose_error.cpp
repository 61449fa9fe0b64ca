#include "compare/pose_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

namespace tev2_compare
{

using TEV2_LOADER::TEV2_MATRIX_3X4;

namespace
{

using Vector = std::array<double, 3>;
using Axes = std::array<Vector, 3>; ///< columns of a 3x3 matrix

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Dot(const Vector& left, const Vector& right)
{
    return left[0] * right[0] + left[1] * right[1] + left[2] * right[2];
}

Vector Cross(const Vector& left, const Vector& right)
{
    return {left[1] * right[2] - left[2] * right[1], left[2] * right[0] - left[0] * right[2],
            left[0] * right[1] - left[1] * right[0]};
}

/// Whether numbers that are not finite are in the same places of both; `finite` whether there are none.
struct Finiteness
{
    bool same = true;
    bool finite = true;

    void Compare(float left, float right)
    {
        if (std::isfinite(left) && std::isfinite(right))
            return;
        finite = false;
        same = same && (left == right || (std::isnan(left) && std::isnan(right)));
    }

    double Error() const { return same ? 0.0 : kInfinity; }
};

/// One step of Newton's way to the closest orthogonal matrix: the mean of a matrix and its inverse transposed.
bool StepToOrthogonal(Axes& axes)
{
    const Axes across = {Cross(axes[1], axes[2]), Cross(axes[2], axes[0]), Cross(axes[0], axes[1])};
    const double volume = Dot(axes[0], across[0]);
    constexpr double kFlat = 1e-12;
    if (!(std::abs(volume) > kFlat))
        return false;
    for (std::size_t column = 0; column < 3; ++column)
        for (std::size_t row = 0; row < 3; ++row)
            axes[column][row] = 0.5 * (axes[column][row] + across[column][row] / volume);
    return true;
}

double FarthestFromOrthogonal(const Axes& axes)
{
    double farthest = 0.0;
    for (std::size_t column = 0; column < 3; ++column)
    {
        farthest = std::max(farthest, std::abs(Dot(axes[column], axes[column]) - 1.0));
        farthest = std::max(farthest, std::abs(Dot(axes[column], axes[(column + 1) % 3])));
    }
    return farthest;
}

/// The axes of a finite matrix without scale and shear; none where there is no rotation.
std::optional<Axes> RotationOf(const TEV2_MATRIX_3X4& matrix)
{
    Axes axes{};
    std::size_t missing = 3;
    for (std::size_t column = 0; column < 3; ++column)
    {
        for (std::size_t row = 0; row < 3; ++row)
            axes[column][row] = static_cast<double>(matrix.m[row][column]);
        const double length = std::sqrt(Dot(axes[column], axes[column]));
        if (length > 0.0)
        {
            for (double& component : axes[column])
                component /= length;
            continue;
        }
        if (missing != 3)
            return std::nullopt;
        missing = column;
    }
    if (missing != 3)
        axes[missing] = Cross(axes[(missing + 1) % 3], axes[(missing + 2) % 3]);
    constexpr double kRounding = 1e-6; // of single precision; closer is not a better rotation
    constexpr int kMostSteps = 60;     // each halves what is far off, and squares what is close
    for (int step = 0; step < kMostSteps && FarthestFromOrthogonal(axes) > kRounding; ++step)
        if (!StepToOrthogonal(axes))
            return std::nullopt;
    return axes;
}

double DegreesBetween(const Axes& left, const Axes& right)
{
    // of left^-1 right: twice its sine along the axis of rotation, and twice its cosine
    const auto entry = [&](std::size_t row, std::size_t column) { return Dot(left[row], right[column]); };
    const Vector sine = {entry(2, 1) - entry(1, 2), entry(0, 2) - entry(2, 0), entry(1, 0) - entry(0, 1)};
    const double cosine = entry(0, 0) + entry(1, 1) + entry(2, 2) - 1.0;
    const bool mirrored =
        (Dot(left[0], Cross(left[1], left[2])) < 0.0) != (Dot(right[0], Cross(right[1], right[2])) < 0.0);
    if (mirrored)
        return 180.0;
    return std::atan2(std::sqrt(Dot(sine, sine)), cosine) * (180.0 / std::numbers::pi);
}

double RotationError(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    Finiteness finiteness;
    bool equal = true;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            finiteness.Compare(left.m[row][column], right.m[row][column]);
            equal = equal && left.m[row][column] == right.m[row][column];
        }
    }
    if (!finiteness.finite)
        return finiteness.Error();
    if (equal)
        return 0.0;
    const auto left_rotation = RotationOf(left);
    const auto right_rotation = RotationOf(right);
    return left_rotation && right_rotation ? DegreesBetween(*left_rotation, *right_rotation) : 0.0;
}

double PlaceError(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    Finiteness finiteness;
    Vector apart{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        finiteness.Compare(left.m[row][3], right.m[row][3]);
        apart[row] = static_cast<double>(right.m[row][3]) - static_cast<double>(left.m[row][3]);
    }
    constexpr double kMillimetres = 1000.0; // in a metre
    return finiteness.finite ? std::sqrt(Dot(apart, apart)) * kMillimetres : finiteness.Error();
}

} // namespace

PoseError ErrorBetween(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    return {PlaceError(left, right), RotationError(left, right)};
}

void ErrorOverTime::Add(float time, double error)
{
    ++times_;
    sum_ += error;
    if (error > worst_)
    {
        worst_ = error;
        worst_time_ = time;
    }
}

} // namespace tev2_compare
