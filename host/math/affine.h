#pragma once

// Double-precision vectors, rotations and affine maps in column form: a point is multiplied from the right.

#include <array>

namespace mobu_host
{

using Vector = std::array<double, 3>;

struct Matrix3
{
    double at[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}; // row, column

    bool operator==(const Matrix3& other) const = default;
};

// Linear part and place.
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

Matrix3 operator*(const Matrix3& a, const Matrix3& b);
Vector operator*(const Matrix3& a, const Vector& b);
Affine operator*(const Affine& a, const Affine& b);
Matrix3 Transposed(const Matrix3& a);
Matrix3 Scaling(const Vector& factors);
double Determinant(const Matrix3& a);
bool Invert(const Matrix3& a, Matrix3& inverse); // false, and nothing done, for one without inverse

// Angles in degrees; order 0 to 5 is XYZ, XZY, YZX, YXZ, ZXY, ZYX, axes in the order in which they are applied. Any
// other order counts as XYZ.
Matrix3 EulerTurn(const Vector& degrees, int order);

// The angles in degrees of a turn, those from which EulerTurn makes it.
Vector EulerAngles(const Matrix3& turn, int order);

// A turn as w, x, y, z, of length 1.
using Quaternion = std::array<double, 4>;

Quaternion QuaternionOf(const Matrix3& turn);
Matrix3 TurnOf(const Quaternion& q);

// A part of the way from one turn to the other, along the shorter arc.
Quaternion TurnBetween(const Quaternion& from, const Quaternion& to, double fraction);
Matrix3 TurnBetween(const Matrix3& from, const Matrix3& to, double fraction);

} // namespace mobu_host
