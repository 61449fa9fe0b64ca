#include "exporter/sampling/rigid_transform.h"

#include "numerics/trigonometry.h"

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

TEV2_QUATERNION RotationAbout(const TEV2_VECTOR_3& axis, float angle)
{
    const auto exact = numerics::SineAndCosine(static_cast<double>(angle * 0.5f));
    const auto sine = static_cast<float>(exact.sine);
    const auto cosine = static_cast<float>(exact.cosine);
    return {axis.x * sine, axis.y * sine, axis.z * sine, cosine};
}

TEV2_VECTOR_3 TransformPoint(const TEV2_MATRIX_3X4& matrix, const TEV2_VECTOR_3& point)
{
    const auto& m = matrix.m;
    return {m[0][0] * point.x + m[0][1] * point.y + m[0][2] * point.z + m[0][3],
            m[1][0] * point.x + m[1][1] * point.y + m[1][2] * point.z + m[1][3],
            m[2][0] * point.x + m[2][1] * point.y + m[2][2] * point.z + m[2][3]};
}

} // namespace tev2_exporter
