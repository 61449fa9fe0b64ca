#include "gltf/convert/world_poses.h"

#include "gltf/convert/rotation_keys.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

using Column = std::array<double, 3>;

/// Three axes and the origin.
struct Basis
{
    std::array<Column, 3> axes{Column{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    Column origin{};

    Column Turned(const Column& v) const
    {
        Column result{};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t axis = 0; axis < 3; ++axis)
                result[i] += axes[axis][i] * v[axis];
        return result;
    }
};

Column ColumnOf(const TEV2_VECTOR_3& v)
{
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

std::array<Column, 3> AxesOf(const TEV2_QUATERNION& rotation)
{
    const auto x = static_cast<double>(rotation.x), y = static_cast<double>(rotation.y),
               z = static_cast<double>(rotation.z), w = static_cast<double>(rotation.w);
    return {Column{1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
            Column{2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
            Column{2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)}};
}

double Dot(const Column& a, const Column& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Column Cross(const Column& a, const Column& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Of length 1; false for one without length.
bool Normalise(Column& v)
{
    const double length = std::sqrt(Dot(v, v));
    for (double& component : v)
        component /= length;
    return length > 0.0 && std::isfinite(length);
}

/// Z and Y as a camera has them; X follows from them.
TEV2_QUATERNION RotationOf(const std::array<Column, 3>& axes)
{
    Column z = axes[2];
    Column x = Cross(axes[1], z);
    if (!Normalise(z) || !Normalise(x))
        return {};
    const Column y = Cross(z, x);
    const double trace = x[0] + y[1] + z[2];
    const std::array<double, 4> squares = {1 + 2 * x[0] - trace, 1 + 2 * y[1] - trace, 1 + 2 * z[2] - trace,
                                           1 + trace};
    // The rows of the symmetric matrix 4 q q^T; the one with the greatest diagonal is the most exact.
    const std::array<std::array<double, 4>, 4> rows = {{{squares[0], x[1] + y[0], x[2] + z[0], y[2] - z[1]},
                                                        {x[1] + y[0], squares[1], y[2] + z[1], z[0] - x[2]},
                                                        {x[2] + z[0], y[2] + z[1], squares[2], x[1] - y[0]},
                                                        {y[2] - z[1], z[0] - x[2], x[1] - y[0], squares[3]}}};
    const auto& row =
        rows[static_cast<std::size_t>(std::max_element(squares.begin(), squares.end()) - squares.begin())];
    const double length = std::sqrt(row[0] * row[0] + row[1] * row[1] + row[2] * row[2] + row[3] * row[3]);
    return {static_cast<float>(row[0] / length), static_cast<float>(row[1] / length),
            static_cast<float>(row[2] / length), static_cast<float>(row[3] / length)};
}

/// The nearest float; 0 for NaN.
float Finite(double value)
{
    constexpr double kMost = static_cast<double>(std::numeric_limits<float>::max());
    return std::isnan(value) ? 0.0f : static_cast<float>(std::clamp(value, -kMost, kMost));
}

template <typename Track>
typename Track::Value Moved(const std::unique_ptr<Track>& track, float time,
                            const typename Track::Value& absent)
{
    if (!track)
        return absent;
    track->SetTime(time);
    const auto value = track->GetValue();
    return IsFinite(value) ? value : absent;
}

void AppendTimes(std::vector<float>& times, const TEV2_ANIMATABLE* track)
{
    if (track != nullptr && track->m_times.size() > 1)
        std::copy_if(track->m_times.begin(), track->m_times.end(), std::back_inserter(times),
                     [](float time) { return std::isfinite(time); });
}

} // namespace

WorldPoses::WorldPoses(const ToGltfContext& context, const GltfNodes& nodes, std::size_t source,
                       std::uint32_t node)
{
    const auto& from = context.sources[source].scene.matrixHierarchy.nodes;
    for (std::optional<std::size_t> at = node; at && *at < from.size(); at = nodes.ParentOf(*at))
    {
        const TEV2_MATRIX_NODE& joint = from[*at];
        chain_.push_back(
            {CloneTrack(joint.translation), CloneTrack(joint.rotation), CloneTrack(joint.scale)});
        AppendTimes(times_, joint.translation.get());
        AppendTimes(times_, joint.rotation.get());
        AppendTimes(times_, joint.scale.get());
    }
    std::reverse(chain_.begin(), chain_.end());
    std::sort(times_.begin(), times_.end());
    times_.erase(std::unique(times_.begin(), times_.end()), times_.end());
}

WorldPose WorldPoses::At(float time)
{
    Basis world;
    for (Joint& joint : chain_)
    {
        const Column offset = world.Turned(ColumnOf(Moved(joint.translation, time, {})));
        std::array<Column, 3> axes = AxesOf(UnitRotation(Moved(joint.rotation, time, {})));
        const Column factors = ColumnOf(Moved(joint.scale, time, {1.0f, 1.0f, 1.0f}));
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            world.origin[axis] += offset[axis];
            for (double& component : axes[axis])
                component *= factors[axis];
            axes[axis] = world.Turned(axes[axis]);
        }
        world.axes = axes;
    }
    return {{Finite(world.origin[0]), Finite(world.origin[1]), Finite(world.origin[2])},
            RotationOf(world.axes)};
}

} // namespace tev2_gltf
