#pragma once

#include <array>
#include <cstddef>

/// Double-precision vectors, rotations and affine maps, in column form: a point is multiplied from the right. Results
/// are the same on every platform, but for EulerAngles.

namespace mobu_host
{

using Vector = std::array<double, 3>;

struct Matrix3
{
    double at[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}; // row, column

    bool operator==(const Matrix3& other) const = default;
};

struct Affine
{
    Matrix3 linear;
    Vector place{};

    bool operator==(const Affine& other) const = default;
};

inline constexpr Vector kOnes{1.0, 1.0, 1.0};

Vector operator+(const Vector& a, const Vector& b);
Vector operator-(const Vector& a, const Vector& b);
Vector operator*(const Vector& a, double factor);
Vector Cross(const Vector& a, const Vector& b);
double Length(const Vector& a);

Vector Column(const Matrix3& matrix, std::size_t column);
Matrix3 OfColumns(const Vector& x, const Vector& y, const Vector& z);
Matrix3 operator*(const Matrix3& a, const Matrix3& b);
Vector operator*(const Matrix3& a, const Vector& b);
Affine operator*(const Affine& a, const Affine& b);
Matrix3 Transposed(const Matrix3& a);
Matrix3 Scaling(const Vector& factors);
double Determinant(const Matrix3& a);

/// False, with `inverse` unchanged, for a matrix without inverse.
bool Invert(const Matrix3& a, Matrix3& inverse);

/// The axes of a rotation order, in the order in which they are applied.
struct EulerAxes
{
    std::size_t first, second, third;
    double sign; // -1 for an odd permutation of X, Y, Z
};

/// Orders 0 to 5 are XYZ, XZY, YZX, YXZ, ZXY, ZYX. Any other counts as XYZ.
EulerAxes EulerAxesOf(int order);

/// The rotation by three angles in degrees.
Matrix3 EulerTurn(const Vector& degrees, int order);

/// The angles in degrees from which EulerTurn makes a rotation. Where the first and the last axis coincide, the last
/// angle is 0.
Vector EulerAngles(const Matrix3& turn, int order);

/// A rotation as w, x, y, z, of length 1.
using Quaternion = std::array<double, 4>;

Quaternion QuaternionOf(const Matrix3& turn);
Matrix3 TurnOf(const Quaternion& q);

/// Interpolates between two rotations along the shorter arc; `fraction` is clamped to 0 ... 1.
Quaternion TurnBetween(const Quaternion& from, const Quaternion& to, double fraction);
Matrix3 TurnBetween(const Matrix3& from, const Matrix3& to, double fraction);

} // namespace mobu_host
