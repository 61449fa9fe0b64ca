#include "gltf/convert/tangents.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

using Direction = std::array<double, 3>;

Direction DirectionOf(const TEV2_VECTOR_3& v)
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

double DotOf(const Direction& a, const Direction& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Direction CrossOf(const Direction& a, const Direction& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Direction Along(const Direction& a, double factor, const Direction& b, double other)
{
    return {a[0] * factor + b[0] * other, a[1] * factor + b[1] * other, a[2] * factor + b[2] * other};
}

/// Where u and v grow, summed over the triangles of each vertex.
struct Sums
{
    std::vector<Direction> u, v;
};

void AddTriangle(Sums& sums, const TEV2_RIGID_VERTICES& vertices, const TEV2_TRIANGLE& corners, Exchange own,
                 std::size_t uv_set)
{
    std::array<Direction, 3> places{};
    std::array<std::array<double, 2>, 3> uvs{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        places[i] = DirectionOf(Exchanged(vertices.positions[corners[i]], own));
        const TEV2_VECTOR_2& uv = vertices.uvs[uv_set][corners[i]];
        uvs[i] = {static_cast<double>(uv.x), static_cast<double>(uv.y)};
    }
    const Direction first = Along(places[1], 1.0, places[0], -1.0);
    const Direction second = Along(places[2], 1.0, places[0], -1.0);
    const std::array<double, 2> du{uvs[1][0] - uvs[0][0], uvs[2][0] - uvs[0][0]};
    const std::array<double, 2> dv{uvs[1][1] - uvs[0][1], uvs[2][1] - uvs[0][1]};
    const double area = du[0] * dv[1] - du[1] * dv[0];
    if (area == 0.0 || !std::isfinite(area))
        return;
    const Direction u = Along(first, dv[1] / area, second, -dv[0] / area);
    const Direction v = Along(second, du[0] / area, first, -du[1] / area);
    for (const std::uint32_t corner : corners)
    {
        sums.u[corner] = Along(sums.u[corner], 1.0, u, 1.0);
        sums.v[corner] = Along(sums.v[corner], 1.0, v, 1.0);
    }
}

} // namespace

TEV2_VECTOR_3 AnyTangent(const TEV2_VECTOR_3& normal)
{
    const Direction axis = std::abs(normal.x) < 0.9f ? Direction{1.0, 0.0, 0.0} : Direction{0.0, 1.0, 0.0};
    const Direction across = CrossOf(DirectionOf(normal), axis);
    const double length = std::sqrt(DotOf(across, across));
    return {static_cast<float>(across[0] / length), static_cast<float>(across[1] / length),
            static_cast<float>(across[2] / length)};
}

std::vector<float> MakeTangents(const TEV2_RIGID_VERTICES& vertices,
                                std::span<const TEV2_TRI_SUB_OBJECT> parts, Exchange own, std::size_t uv_set)
{
    const std::size_t count = vertices.Count();
    if (vertices.normals.size() != count || uv_set >= vertices.uvs.size() ||
        vertices.uvs[uv_set].size() != count)
        return {};
    Sums sums{std::vector<Direction>(count), std::vector<Direction>(count)};
    for (const TEV2_TRI_SUB_OBJECT& part : parts)
        for (const TEV2_TRIANGLE& corners : part.triangles)
            if (*std::max_element(corners.begin(), corners.end()) < count)
                AddTriangle(sums, vertices, corners, own, uv_set);
    std::vector<float> tangents;
    tangents.reserve(count * 4);
    for (std::size_t i = 0; i < count; ++i)
    {
        Direction normal = DirectionOf(Exchanged(vertices.normals[i], own));
        const double normal_length = std::sqrt(DotOf(normal, normal));
        if (!(normal_length > 0.0) || !std::isfinite(normal_length))
            normal = {0.0, 1.0, 0.0};
        else
            normal = Along(normal, 1.0 / normal_length, normal, 0.0);
        const Direction flat = Along(sums.u[i], 1.0, normal, -DotOf(normal, sums.u[i]));
        const double length = std::sqrt(DotOf(flat, flat));
        const bool is_there = length > 1e-30 && std::isfinite(length);
        const TEV2_VECTOR_3 tangent =
            is_there
                ? TEV2_VECTOR_3{static_cast<float>(flat[0] / length), static_cast<float>(flat[1] / length),
                                static_cast<float>(flat[2] / length)}
                : AnyTangent({static_cast<float>(normal[0]), static_cast<float>(normal[1]),
                              static_cast<float>(normal[2])});
        const double side = DotOf(CrossOf(normal, DirectionOf(tangent)), sums.v[i]);
        tangents.insert(tangents.end(), {tangent.x, tangent.y, tangent.z, side > 0.0 ? -1.0f : 1.0f});
    }
    return tangents;
}

} // namespace tev2_gltf
