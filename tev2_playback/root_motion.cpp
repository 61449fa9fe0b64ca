#include "tev2_playback/root_motion.h"

#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"

#include <cmath>
#include <vector>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

RootMotion::RootMotion(const Clip& clip, std::size_t node, std::pmr::memory_resource* memory) : node_(node)
{
    if (memory == nullptr)
        memory = std::pmr::new_delete_resource();
    if (node >= clip.NodeCount())
        return;
    Player player(clip, memory);
    std::pmr::vector<Transform> pose(clip.NodeCount(), memory);
    player.SetTime(clip.TimeRange().maximum);
    player.Sample(pose);
    const Rigid end = RigidOf(pose[node]);
    player.SetTime(clip.TimeRange().minimum);
    player.Sample(pose);
    start_ = pose[node];
    earlier_ = RigidOf(start_);
    lap_ = Product(end, Inverse(earlier_));

    pose[node] = {};
    std::pmr::vector<TEV2_MATRIX_3X4> world(clip.NodeCount(), memory);
    ToWorld(clip, pose, world);
    parent_ = world[node];
}

Transform RootMotion::Movement(std::span<const Transform> pose, const PlayedSpan& played)
{
    if (node_ >= pose.size())
        return {};
    const Rigid later = RigidOf(pose[node_]);
    const Rigid lap = played.backward ? Inverse(lap_) : lap_;
    const Rigid laps = Power(lap, played.turns ? 0 : played.crossings);
    const Rigid start = RigidOf(start_);
    const Rigid movement = Product(Product(Inverse(earlier_), laps), later);
    earlier_ = later;
    return InWorld(Product(Product(start, movement), Inverse(start)));
}

void RootMotion::Restart(std::span<const Transform> pose)
{
    if (node_ < pose.size())
        earlier_ = RigidOf(pose[node_]);
}

void RootMotion::Hold(std::span<Transform> pose) const
{
    if (node_ < pose.size())
        pose[node_] = start_;
}

/// The rotation made of length 1; none where that cannot be.
RootMotion::Rigid RootMotion::RigidOf(const Transform& transform)
{
    const auto& [x, y, z, w] = transform.rotation;
    const double numbers[4] = {static_cast<double>(x), static_cast<double>(y), static_cast<double>(z),
                               static_cast<double>(w)};
    double square = 0.0;
    for (const double number : numbers)
        square += number * number;
    Rigid rigid;
    if (square > 0.0 && std::isfinite(square))
        for (int i = 0; i < 4; ++i)
            rigid.rotation[i] = numbers[i] / std::sqrt(square);
    rigid.translation[0] = static_cast<double>(transform.translation.x);
    rigid.translation[1] = static_cast<double>(transform.translation.y);
    rigid.translation[2] = static_cast<double>(transform.translation.z);
    return rigid;
}

RootMotion::Rigid RootMotion::Product(const Rigid& left, const Rigid& right)
{
    const auto& [lx, ly, lz, lw] = left.rotation;
    const auto& [rx, ry, rz, rw] = right.rotation;
    const auto& [x, y, z] = right.translation;
    Rigid product{{lw * rx + lx * rw + ly * rz - lz * ry, lw * ry - lx * rz + ly * rw + lz * rx,
                   lw * rz + lx * ry - ly * rx + lz * rw, lw * rw - lx * rx - ly * ry - lz * rz},
                  {}};
    double square = 0.0;
    for (const double number : product.rotation)
        square += number * number;
    for (double& number : product.rotation) // rounding does not grow in powers
        number /= std::sqrt(square);
    // A vector v turned by q is v + 2w (q x v) + 2 q x (q x v).
    const double cross[3] = {ly * z - lz * y, lz * x - lx * z, lx * y - ly * x};
    product.translation[0] = left.translation[0] + x + 2.0 * (lw * cross[0] + ly * cross[2] - lz * cross[1]);
    product.translation[1] = left.translation[1] + y + 2.0 * (lw * cross[1] + lz * cross[0] - lx * cross[2]);
    product.translation[2] = left.translation[2] + z + 2.0 * (lw * cross[2] + lx * cross[1] - ly * cross[0]);
    return product;
}

RootMotion::Rigid RootMotion::Inverse(const Rigid& rigid)
{
    const auto& [x, y, z, w] = rigid.rotation;
    const auto& [tx, ty, tz] = rigid.translation;
    return Product({{-x, -y, -z, w}, {}}, {{0.0, 0.0, 0.0, 1.0}, {-tx, -ty, -tz}});
}

RootMotion::Rigid RootMotion::Power(Rigid rigid, std::uint64_t exponent)
{
    Rigid power;
    for (; exponent != 0; exponent /= 2)
    {
        if (exponent % 2 != 0)
            power = Product(power, rigid);
        rigid = Product(rigid, rigid);
    }
    return power;
}

/// parent * movement * inverse(parent), where the movement is in the axes of the parent.
Transform RootMotion::InWorld(const Rigid& movement) const
{
    const auto at = [this](int row, int column) { return static_cast<double>(parent_.m[row][column]); };
    const auto turned = [&](const double(&v)[3], int row)
    { return at(row, 0) * v[0] + at(row, 1) * v[1] + at(row, 2) * v[2]; };
    const auto& [x, y, z, w] = movement.rotation;
    const double axis[3] = {x, y, z};
    const double determinant = at(0, 0) * (at(1, 1) * at(2, 2) - at(1, 2) * at(2, 1)) -
                               at(0, 1) * (at(1, 0) * at(2, 2) - at(1, 2) * at(2, 0)) +
                               at(0, 2) * (at(1, 0) * at(2, 1) - at(1, 1) * at(2, 0));
    // A mirror turns the other way round. The axis keeps its length, the sine of half the angle.
    double length = std::hypot(turned(axis, 0), turned(axis, 1), turned(axis, 2));
    length = (determinant < 0.0 ? -1.0 : 1.0) * std::hypot(x, y, z) / (length > 0.0 ? length : 1.0);
    const Rigid rotation{{turned(axis, 0) * length, turned(axis, 1) * length, turned(axis, 2) * length, w},
                         {}};
    const Rigid origin = Product(rotation, {{0.0, 0.0, 0.0, 1.0}, {at(0, 3), at(1, 3), at(2, 3)}});

    const auto& [rx, ry, rz, rw] = rotation.rotation;
    double moved[3];
    for (int row = 0; row < 3; ++row)
        moved[row] = at(row, 3) + turned(movement.translation, row) - origin.translation[row];
    if (!std::isfinite(rx + ry + rz + rw + moved[0] + moved[1] + moved[2]))
        return {};
    Transform step;
    step.rotation = {static_cast<float>(rx), static_cast<float>(ry), static_cast<float>(rz),
                     static_cast<float>(rw)};
    step.translation = {static_cast<float>(moved[0]), static_cast<float>(moved[1]),
                        static_cast<float>(moved[2])};
    return step;
}

} // namespace TEV2_PLAYBACK
