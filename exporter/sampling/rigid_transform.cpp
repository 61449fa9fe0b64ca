#include "exporter/sampling/rigid_transform.h"

#include "exporter/sampling/trigonometry.h"

#include <cmath>

namespace tev2_exporter
{

TEV2_VECTOR_3 Column(const TEV2_MATRIX_3X4& matrix, int column)
{
    return {matrix.m[0][column], matrix.m[1][column], matrix.m[2][column]};
}

void SetColumn(TEV2_MATRIX_3X4& matrix, int column, const TEV2_VECTOR_3& value)
{
    matrix.m[0][column] = value.x;
    matrix.m[1][column] = value.y;
    matrix.m[2][column] = value.z;
}

TEV2_VECTOR_3 Normalised(const TEV2_VECTOR_3& vector)
{
    const float scale = 1.0f / std::sqrt(vector.x * vector.x + vector.y * vector.y + vector.z * vector.z);
    return {vector.x * scale, vector.y * scale, vector.z * scale};
}

TEV2_QUATERNION ToQuaternion(const TEV2_MATRIX_3X4& matrix)
{
    const auto& m = matrix.m;
    const float trace = m[0][0] + m[1][1] + m[2][2] + 1.0f;
    if (trace >= 1.0f)
    {
        const float s = 2.0f * std::sqrt(trace);
        const float f = 1.0f / s;
        return {(m[2][1] - m[1][2]) * f, (m[0][2] - m[2][0]) * f, (m[1][0] - m[0][1]) * f, s * 0.25f};
    }

    int i = m[1][1] > m[0][0] ? 1 : 0;
    if (m[2][2] > m[i][i])
        i = 2;
    const int j = (i + 1) % 3;
    const int k = (j + 1) % 3;
    const float r = std::sqrt(m[i][i] - m[j][j] - m[k][k] + 1.0f);
    const float f = 0.5f / r;
    float q[3];
    q[i] = r * 0.5f;
    q[j] = (m[i][j] + m[j][i]) * f;
    q[k] = (m[i][k] + m[k][i]) * f;
    return {q[0], q[1], q[2], -(m[j][k] - m[k][j]) * f};
}

TEV2_MATRIX_3X4 ToMatrix(const TEV2_QUATERNION& rotation, const TEV2_VECTOR_3& translation)
{
    const auto& [x, y, z, w] = rotation;
    const float xx = 2.0f * x * x;
    const float yy = 2.0f * y * y;
    const float zz = 2.0f * z * z;
    const float xy = 2.0f * x * y;
    const float xz = 2.0f * x * z;
    const float yz = 2.0f * y * z;
    const float wx = 2.0f * w * x;
    const float wy = 2.0f * w * y;
    const float wz = 2.0f * w * z;
    return {{{1.0f - yy - zz, xy - wz, xz + wy, translation.x},
             {xy + wz, 1.0f - xx - zz, yz - wx, translation.y},
             {xz - wy, yz + wx, 1.0f - xx - yy, translation.z}}};
}

TEV2_QUATERNION Multiply(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    return {left.x * right.w + right.x * left.w + left.y * right.z - left.z * right.y,
            left.y * right.w + right.y * left.w + left.z * right.x - right.z * left.x,
            left.z * right.w + right.z * left.w + right.y * left.x - left.y * right.x,
            right.w * left.w - left.x * right.x - left.y * right.y - left.z * right.z};
}

TEV2_QUATERNION RotationAbout(const TEV2_VECTOR_3& axis, float angle)
{
    const auto [sine, cosine] = SineAndCosine(angle * 0.5f);
    return {axis.x * sine, axis.y * sine, axis.z * sine, cosine};
}

TEV2_VECTOR_3 TransformPoint(const TEV2_MATRIX_3X4& matrix, const TEV2_VECTOR_3& point)
{
    const auto& m = matrix.m;
    return {m[0][0] * point.x + m[0][1] * point.y + m[0][2] * point.z + m[0][3],
            m[1][0] * point.x + m[1][1] * point.y + m[1][2] * point.z + m[1][3],
            m[2][0] * point.x + m[2][1] * point.y + m[2][2] * point.z + m[2][3]};
}

TEV2_MATRIX_3X4 AffineInverse(const TEV2_MATRIX_3X4& matrix)
{
    const auto& m = matrix.m;
    const float c00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    const float c01 = m[1][2] * m[2][0] - m[1][0] * m[2][2];
    const float c02 = m[1][0] * m[2][1] - m[1][1] * m[2][0];
    const float c10 = m[0][2] * m[2][1] - m[0][1] * m[2][2];
    const float c11 = m[0][0] * m[2][2] - m[0][2] * m[2][0];
    const float c12 = m[0][1] * m[2][0] - m[0][0] * m[2][1];
    const float c20 = m[0][1] * m[1][2] - m[0][2] * m[1][1];
    const float c21 = m[0][2] * m[1][0] - m[0][0] * m[1][2];
    const float c22 = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    const float determinant = m[0][0] * c00 + m[0][1] * c01 + m[0][2] * c02;

    TEV2_MATRIX_3X4 inverse{{{c00 / determinant, c10 / determinant, c20 / determinant, 0.0f},
                             {c01 / determinant, c11 / determinant, c21 / determinant, 0.0f},
                             {c02 / determinant, c12 / determinant, c22 / determinant, 0.0f}}};
    const TEV2_VECTOR_3 back = TransformPoint(inverse, Column(matrix, 3));
    SetColumn(inverse, 3, {-back.x, -back.y, -back.z});
    return inverse;
}

} // namespace tev2_exporter
