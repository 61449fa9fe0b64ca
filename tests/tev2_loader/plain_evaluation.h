#pragma once

#include "tev2_loader/records/matrix_hierarchy.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

#include <cmath>

// Evaluation as the format describes it, one number and one key after another: what the library's own, faster
// evaluation must agree with to the last bit. Times ascend; between equal ones the fraction is 0. A cursor beyond the
// keys is at the last one.

namespace tv2_tests::plain
{

using namespace TEV2_LOADER;

inline float PresentTime(const TEV2_ANIMATABLE& track)
{
    const std::vector<float>& times = track.m_times;
    if (times.size() < 2)
        return 0.0f;
    const std::size_t key = track.m_current_key;
    if (key > times.size() - 2)
        return times[times.size() - 2] + (times.back() - times[times.size() - 2]) * 1.0f;
    return times[key] + (times[key + 1] - times[key]) * track.m_fraction;
}

inline void SetTime(TEV2_ANIMATABLE& track, float time)
{
    const std::vector<float>& times = track.m_times;
    const std::size_t count = times.size();
    if (count < 2)
        return;
    if (time >= times.back())
    {
        track.m_current_key = static_cast<std::uint32_t>(count - 2);
        track.m_fraction = 1.0f;
        return;
    }
    if (times.front() >= time)
    {
        track.m_current_key = 0;
        track.m_fraction = 0.0f;
        return;
    }
    const std::size_t present = track.m_current_key < count - 1 ? track.m_current_key : count - 2;
    std::size_t key = present;
    const auto holds = [&] { return times[key] <= time && times[key + 1] >= time; };
    const auto search_forward = [&]
    {
        for (key = present; key < count - 1 && !holds();)
            ++key;
        return key < count - 1;
    };
    const auto search_backward = [&]
    {
        for (key = present; key < count && !holds();) // below 0 it is the largest number
            --key;
        return key < count;
    };
    // The present time is rounded: what it says is ahead can be behind by a bit.
    const bool found = time - PresentTime(track) >= 0.0f ? search_forward() || search_backward()
                                                         : search_backward() || search_forward();
    if (!found)
        return;
    track.m_current_key = static_cast<std::uint32_t>(key);
    const float span = times[key + 1] - times[key];
    track.m_fraction = span > 0.0f ? (time - times[key]) / span : 0.0f;
}

inline void Update(TEV2_ANIMATABLE& track, float delta_time)
{
    const float time = PresentTime(track) + delta_time;
    if (track.m_times.size() < 2 || track.m_times.back() >= time)
        return SetTime(track, time);
    const float first = track.m_times.front();
    const float span = track.m_times.back() - first;
    const float lengths = (time - track.m_times.back()) / span;
    SetTime(track, (lengths - std::trunc(lengths + 0.5f)) * span + first);
}

inline TEV2_VECTOR_3 Value(const TEV2_ANIMATABLE_VECTOR_3& of)
{
    const auto& track = dynamic_cast<const TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(of);
    if (track.m_values.size() == 1)
        return track.m_values[0];
    const TEV2_VECTOR_3& a = track.m_values[track.m_current_key];
    const TEV2_VECTOR_3& b = track.m_values[track.m_current_key + 1];
    const float t = track.m_fraction;
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
}

inline TEV2_QUATERNION Between(const TEV2_QUATERNION& a, const TEV2_QUATERNION& b, float t, bool along_arc)
{
    const float d = a.x * b.x + a.w * b.w + a.y * b.y + a.z * b.z;
    if (!along_arc || d > 0.99f)
        return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t, a.w + (b.w - a.w) * t};
    const float angle = std::acos(d);
    const float s = 1.0f / std::sin(angle);
    const float p = std::sin((1.0f - t) * angle) * s;
    const float q = std::sin(t * angle) * s;
    return {a.x * p + b.x * q, a.y * p + b.y * q, a.z * p + b.z * q, a.w * p + b.w * q};
}

template <typename Track>
TEV2_QUATERNION ValueOf(const Track& track)
{
    return track.m_values.size() == 1
               ? track.m_values[0]
               : Between(track.m_values[track.m_current_key], track.m_values[track.m_current_key + 1],
                         track.m_fraction, track.GetType() == 6);
}

inline TEV2_QUATERNION Value(const TEV2_ANIMATABLE_QUATERNION& of)
{
    if (const auto* slerp = dynamic_cast<const TEV2_ANIMATABLE_QUATERNION_SLERP*>(&of))
        return ValueOf(*slerp);
    return ValueOf(dynamic_cast<const TEV2_ANIMATABLE_QUATERNION_LERP&>(of));
}

inline TEV2_MATRIX_3X4 LocalMatrix(const TEV2_MATRIX_NODE& node)
{
    const auto [x, y, z, w] = node.rotation ? Value(*node.rotation) : TEV2_QUATERNION{};
    const auto [tx, ty, tz] = node.translation ? Value(*node.translation) : TEV2_VECTOR_3{};
    TEV2_MATRIX_3X4 local{
        {{1.0f - 2.0f * y * y - 2.0f * z * z, 2.0f * x * y - 2.0f * w * z, 2.0f * x * z + 2.0f * w * y, tx},
         {2.0f * x * y + 2.0f * w * z, 1.0f - 2.0f * x * x - 2.0f * z * z, 2.0f * y * z - 2.0f * w * x, ty},
         {2.0f * x * z - 2.0f * w * y, 2.0f * y * z + 2.0f * w * x, 1.0f - 2.0f * x * x - 2.0f * y * y, tz}}};
    if (node.scale)
    {
        const TEV2_VECTOR_3 scale = Value(*node.scale);
        for (auto& row : local.m)
        {
            row[0] *= scale.x;
            row[1] *= scale.y;
            row[2] *= scale.z;
        }
    }
    return local;
}

inline TEV2_MATRIX_3X4 Product(const TEV2_MATRIX_3X4& left, const TEV2_MATRIX_3X4& right)
{
    TEV2_MATRIX_3X4 product;
    for (int row = 0; row < 3; ++row)
    {
        const float* a = left.m[row];
        for (int column = 0; column < 4; ++column)
        {
            product.m[row][column] =
                a[0] * right.m[0][column] + a[1] * right.m[1][column] + a[2] * right.m[2][column];
        }
        product.m[row][3] += a[3];
    }
    return product;
}

} // namespace tv2_tests::plain
