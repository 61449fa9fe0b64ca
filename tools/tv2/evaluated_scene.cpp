#include "tools/tv2/evaluated_scene.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

/// Sends rewound tracks, of which any may be null, to a time.
template <typename... Tracks>
void SetTimeOf(float time, const Tracks&... tracks)
{
    const auto set = [time](TEV2_ANIMATABLE* track)
    {
        if (track == nullptr)
            return;
        tev2_compare::Rewind(*track);
        track->SetTime(time);
    };
    (set(tracks.get()), ...);
}

double Rounded(double radians)
{
    constexpr double kPlaces = 10'000.0;
    return std::round(radians * (180.0 / std::numbers::pi) * kPlaces) / kPlaces + 0.0; // no -0
}

/// The angles of a rotation by its matrix, row after row.
EulerDegrees DegreesOfRows(const std::array<std::array<double, 3>, 3>& rows)
{
    constexpr double kUpright = 1.0 - 1e-12;
    const double sine = std::clamp(-rows[2][0], -1.0, 1.0);
    if (std::abs(sine) > kUpright) // the first and the third turn about the same axis
        return {0.0, Rounded(std::asin(sine)), Rounded(std::atan2(-rows[0][1], rows[1][1]))};
    return {Rounded(std::atan2(rows[2][1], rows[2][2])), Rounded(std::asin(sine)),
            Rounded(std::atan2(rows[1][0], rows[0][0]))};
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

void EvaluatedScene::Rewind()
{
    nodes_.Rewind();
    MoveOthers(std::numeric_limits<float>::quiet_NaN()); // moves no track
}

void EvaluatedScene::SetTime(float time)
{
    nodes_.SetTime(time);
    MoveOthers(time);
}

void EvaluatedScene::MoveOthers(float time)
{
    for (auto& node : scene_.matrixHierarchy.nodes)
    {
        const auto move = [time](auto& values)
        {
            for (auto& value : values)
                SetTimeOf(time, value.track);
        };
        move(node.properties.intValues);
        move(node.properties.floatValues);
        move(node.properties.vector3Values);
        move(node.properties.vector4Values);
    }
    for (const auto& camera : scene_.cameras)
        if (camera)
            SetTimeOf(time, camera->distance, camera->fieldOfView, camera->secondaryRange, camera->clipRange);
    SetTimeOf(time, scene_.cameraMan.cameraIndex);
}

std::optional<std::int32_t> EvaluatedScene::ActiveCamera() const
{
    const auto& track = scene_.cameraMan.cameraIndex;
    return track ? std::optional(track->GetValue()) : std::nullopt;
}

LocalPose LocalPoseOf(const TEV2_MATRIX_NODE& node)
{
    LocalPose pose;
    if (node.translation)
        pose.translation = node.translation->GetValue();
    if (node.rotation)
        pose.rotation = node.rotation->GetValue();
    if (node.scale)
        pose.scale = node.scale->GetValue();
    return pose;
}

EulerDegrees DegreesOf(const TEV2_QUATERNION& rotation)
{
    const double length =
        std::hypot(std::hypot(static_cast<double>(rotation.x), static_cast<double>(rotation.y)),
                   std::hypot(static_cast<double>(rotation.z), static_cast<double>(rotation.w)));
    if (length == 0.0)
        return {};
    if (!std::isfinite(length))
        return {kNaN, kNaN, kNaN};
    const double x = static_cast<double>(rotation.x) / length;
    const double y = static_cast<double>(rotation.y) / length;
    const double z = static_cast<double>(rotation.z) / length;
    const double w = static_cast<double>(rotation.w) / length;
    return DegreesOfRows({{{1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y - w * z), 2.0 * (x * z + w * y)},
                           {2.0 * (x * y + w * z), 1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z - w * x)},
                           {2.0 * (x * z - w * y), 2.0 * (y * z + w * x), 1.0 - 2.0 * (x * x + y * y)}}});
}

WorldPose WorldPoseOf(const TEV2_MATRIX_3X4& world)
{
    WorldPose pose{.translation = {world.m[0][3], world.m[1][3], world.m[2][3]}};
    std::array<std::array<double, 3>, 3> rows{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            rows[row][column] = static_cast<double>(world.m[row][column]);
    const auto minor = [&](std::size_t a, std::size_t b)
    { return rows[1][a] * rows[2][b] - rows[1][b] * rows[2][a]; };
    const double volume = rows[0][0] * minor(1, 2) - rows[0][1] * minor(0, 2) + rows[0][2] * minor(0, 1);
    for (std::size_t column = 0; column < 3; ++column)
    {
        double& scale = pose.scale[column];
        scale = std::hypot(rows[0][column], rows[1][column], rows[2][column]);
        if (column == 0 && volume < 0.0)
            scale = -scale;
        for (auto& row : rows)
            row[column] /= scale;
    }
    const bool turned =
        std::ranges::all_of(pose.scale, [](double scale) { return std::isfinite(scale) && scale != 0.0; });
    pose.degrees = turned ? DegreesOfRows(rows) : EulerDegrees{kNaN, kNaN, kNaN};
    return pose;
}

} // namespace tv2
