#include "tev2_playback/pose.h"

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_playback/detail/clip_data.h"
#include "tev2_playback/detail/four_lanes.h"
#include "tev2_playback/detail/transform_matrix.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kFour = 4;

static_assert(sizeof(Transform) == 10 * sizeof(float));

/// Four transforms, component by component.
struct FourPoses
{
    Float3x4 translation;
    Float3x4 scale;
    Float4x4 rotation;
};

FourPoses LoadPoses(const Transform* transforms)
{
    const auto columns = [transforms](std::size_t first)
    {
        const auto* const floats = reinterpret_cast<const float*>(transforms) + first;
        constexpr std::size_t kNext = sizeof(Transform) / sizeof(float);
        return Transposed({LoadFour(floats), LoadFour(floats + kNext), LoadFour(floats + 2 * kNext),
                           LoadFour(floats + 3 * kNext)});
    };
    const Float4x4 first = columns(0);  // translation, scale x
    const Float4x4 middle = columns(4); // scale y and z, half of the rotation
    return {{first.x, first.y, first.z}, {first.w, middle.x, middle.y}, columns(6)};
}

void StorePoses(const FourPoses& poses, Transform* transforms)
{
    const auto& [translation, scale, rotation] = poses;
    const auto store = [transforms](std::size_t first, const Float4x4& columns)
    {
        const Float4x4 rows = Transposed(columns);
        auto* floats = reinterpret_cast<float*>(transforms) + first;
        for (const Float4& row : {rows.x, rows.y, rows.z, rows.w})
        {
            row.Store(*reinterpret_cast<float(*)[4]>(floats));
            floats += sizeof(Transform) / sizeof(float);
        }
    };
    store(0, {translation.x, translation.y, translation.z, scale.x});
    store(4, {scale.y, scale.z, rotation.x, rotation.y});
    store(6, rotation);
}

/// out = combine(left, right, weight), four nodes at a time.
template <typename Combine>
void CombinePoses(std::span<const Transform> left, std::span<const Transform> right, std::span<Transform> out,
                  float weight, std::span<const float> mask, const Combine& combine)
{
    std::size_t count = std::min({left.size(), right.size(), out.size()});
    if (!mask.empty())
        count = std::min(count, mask.size());
    const Float4 all = Float4::All(weight);
    std::size_t at = 0;
    for (; at + kFour <= count; at += kFour)
        StorePoses(combine(LoadPoses(&left[at]), LoadPoses(&right[at]),
                           mask.empty() ? all : all * LoadFour(&mask[at])),
                   &out[at]);
    if (at == count)
        return;
    const std::size_t rest = count - at;
    Transform lefts[kFour];
    Transform rights[kFour];
    float factors[kFour] = {1.0f, 1.0f, 1.0f, 1.0f};
    std::copy_n(left.begin() + static_cast<std::ptrdiff_t>(at), rest, lefts);
    std::copy_n(right.begin() + static_cast<std::ptrdiff_t>(at), rest, rights);
    if (!mask.empty())
        std::copy_n(mask.begin() + static_cast<std::ptrdiff_t>(at), rest, factors);
    StorePoses(combine(LoadPoses(lefts), LoadPoses(rights), all * LoadFour(factors)), lefts);
    std::copy_n(lefts, rest, out.begin() + static_cast<std::ptrdiff_t>(at));
}

template <typename Function>
Float3x4 ForEach(const Float3x4& left, const Float3x4& right, const Function& function)
{
    return {function(left.x, right.x), function(left.y, right.y), function(left.z, right.z)};
}

template <typename Function>
Float4x4 ForEach(const Float4x4& left, const Float4x4& right, const Function& function)
{
    return {function(left.x, right.x), function(left.y, right.y), function(left.z, right.z),
            function(left.w, right.w)};
}

Float4 DotOf(const Float4x4& left, const Float4x4& right)
{
    return left.x * right.x + left.y * right.y + left.z * right.z + left.w * right.w;
}

Float4 Negated(Float4 lanes)
{
    return lanes * Float4::All(-1.0f);
}

Float4x4 IdentityRotations()
{
    const Float4 zero = Float4::All(0.0f);
    return {zero, zero, zero, Float4::All(1.0f)};
}

/// Rotations made of length 1; the fallback where that cannot be.
Float4x4 Normalised(const Float4x4& rotation, const Float4x4& fallback)
{
    const Float4 square = DotOf(rotation, rotation);
    const Float4 length = Float4::Root(square);
    const Float4 least = Float4::All(std::numeric_limits<float>::min());
    const Float4 most = Float4::All(std::numeric_limits<float>::max());
    return ForEach(rotation, fallback,
                   [&](Float4 component, Float4 otherwise)
                   {
                       const Float4 unless_long =
                           Float4::IfAbove(square, most, otherwise, component / length);
                       return Float4::IfAbove(square, least, unless_long, otherwise);
                   });
}

Float4x4 ProductOf(const Float4x4& left, const Float4x4& right)
{
    const auto& [lx, ly, lz, lw] = left;
    const auto& [rx, ry, rz, rw] = right;
    return {lw * rx + lx * rw + ly * rz - lz * ry, lw * ry - lx * rz + ly * rw + lz * rx,
            lw * rz + lx * ry - ly * rx + lz * rw, lw * rw - lx * rx - ly * ry - lz * rz};
}

/// Straight from one rotation to the nearer one of the two quaternions of another.
Float4x4 MovedTowards(const Float4x4& from, const Float4x4& to, Float4 weight)
{
    const Float4 dot = DotOf(from, to);
    return ForEach(from, to,
                   [&](Float4 begin, Float4 end)
                   {
                       const Float4 near = Float4::IfAbove(Float4::All(0.0f), dot, Negated(end), end);
                       return Between(begin, near, weight);
                   });
}

FourPoses Blended(const FourPoses& to, const FourPoses& from, Float4 weight)
{
    const auto exact_at_ends = [weight](Float4 begin, Float4 end, Float4 between)
    {
        return Float4::IfEqual(weight, Float4::All(0.0f), begin,
                               Float4::IfEqual(weight, Float4::All(1.0f), end, between));
    };
    const auto linear = [&](Float4 begin, Float4 end)
    { return exact_at_ends(begin, end, Between(begin, end, weight)); };
    const Float4x4 turned = Normalised(MovedTowards(to.rotation, from.rotation, weight), to.rotation);
    return {ForEach(to.translation, from.translation, linear),
            ForEach(to.scale, from.scale, linear),
            {exact_at_ends(to.rotation.x, from.rotation.x, turned.x),
             exact_at_ends(to.rotation.y, from.rotation.y, turned.y),
             exact_at_ends(to.rotation.z, from.rotation.z, turned.z),
             exact_at_ends(to.rotation.w, from.rotation.w, turned.w)}};
}

FourPoses Added(const FourPoses& to, const FourPoses& delta, Float4 weight)
{
    const Float4 one = Float4::All(1.0f);
    const auto unless_zero = [weight](Float4 same, Float4 changed)
    { return Float4::IfEqual(weight, Float4::All(0.0f), same, changed); };
    const Float4x4 turn =
        Normalised(MovedTowards(IdentityRotations(), delta.rotation, weight), IdentityRotations());
    return {ForEach(to.translation, delta.translation,
                    [&](Float4 value, Float4 more) { return unless_zero(value, value + more * weight); }),
            ForEach(to.scale, delta.scale,
                    [&](Float4 value, Float4 factor)
                    { return unless_zero(value, value * Between(one, factor, weight)); }),
            ForEach(to.rotation, ProductOf(turn, to.rotation), unless_zero)};
}

FourPoses DifferenceOf(const FourPoses& pose, const FourPoses& reference, Float4 /*weight*/)
{
    const auto& [x, y, z, w] = reference.rotation;
    const Float4x4 conjugate = {Negated(x), Negated(y), Negated(z), w};
    return {ForEach(pose.translation, reference.translation,
                    [](Float4 left, Float4 right) { return left - right; }),
            ForEach(pose.scale, reference.scale,
                    [](Float4 left, Float4 right)
                    { return Float4::IfEqual(right, Float4::All(0.0f), Float4::All(1.0f), left / right); }),
            Normalised(ProductOf(pose.rotation, conjugate), IdentityRotations())};
}

} // namespace

void Blend(std::span<Transform> to, std::span<const Transform> from, float weight,
           std::span<const float> mask)
{
    CombinePoses(to, from, to, weight, mask, Blended);
}

void Add(std::span<Transform> to, std::span<const Transform> delta, float weight, std::span<const float> mask)
{
    CombinePoses(to, delta, to, weight, mask, Added);
}

void Difference(std::span<const Transform> pose, std::span<const Transform> reference,
                std::span<Transform> out)
{
    CombinePoses(pose, reference, out, 1.0f, {}, DifferenceOf);
}

namespace
{

/// Local matrices, four at a time, in the places of the world matrices.
void FormLocals(std::span<const Transform> pose, std::span<TEV2_MATRIX_3X4> locals)
{
    std::size_t at = 0;
    for (; at + kFour <= pose.size(); at += kFour)
    {
        const FourPoses poses = LoadPoses(&pose[at]);
        const FourMatrices matrices = MatricesOf({poses.translation, poses.rotation});
        for (int row = 0; row < 3; ++row)
        {
            const auto& [x, y, z, w] = matrices.rows[row];
            const Float4x4 rows = Transposed({x * poses.scale.x, y * poses.scale.y, z * poses.scale.z, w});
            TEV2_MATRIX_3X4* local = &locals[at];
            for (const Float4& columns : {rows.x, rows.y, rows.z, rows.w})
                columns.Store((local++)->m[row]);
        }
    }
    for (; at < pose.size(); ++at)
        locals[at] = MatrixOf(pose[at]);
}

} // namespace

void ToWorld(const Clip& clip, std::span<const Transform> pose, std::span<TEV2_MATRIX_3X4> world)
{
    const SkeletonData& skeleton = DataOf(clip).skeleton;
    const std::size_t nodes = skeleton.parents.size();
    const std::size_t count = std::min({nodes, pose.size(), world.size()});
    FormLocals(pose.first(count), world);
    const TEV2_MATRIX_3X4* const top = skeleton.top == kNone ? nullptr : &skeleton.worlds[skeleton.top];
    const TEV2_MATRIX_3X4* late = skeleton.worlds.data() + nodes + (top != nullptr ? 1 : 0);
    for (std::size_t node = 0; node < count; ++node)
    {
        const auto parent = static_cast<std::uint32_t>(skeleton.parents[node]); // -1 is beyond all
        if (parent < node)
            world[node] = FastProduct(world[parent], world[node]);
        else if (parent < nodes)
            world[node] = FastProduct(*late++, world[node]);
        else if (top != nullptr)
            world[node] = FastProduct(*top, world[node]);
    }
}

void MaskBelow(const Clip& clip, std::size_t node, float factor, std::span<float> mask)
{
    // Nodes found below are marked in the mask itself, by a NaN that no other computation gives.
    constexpr std::uint32_t kMark = 0x7FED7EA5u;
    const std::span<const std::int32_t> parents = DataOf(clip).skeleton.parents;
    const std::size_t count = std::min(parents.size(), mask.size());
    if (node >= count)
        return;
    mask[node] = std::bit_cast<float>(kMark);
    for (std::size_t at = node + 1; at < count; ++at)
    {
        const auto parent = static_cast<std::uint32_t>(parents[at]); // -1 is beyond all
        if (parent < at && std::bit_cast<std::uint32_t>(mask[parent]) == kMark)
            mask[at] = mask[parent];
    }
    for (float& entry : mask.subspan(node, count - node))
        if (std::bit_cast<std::uint32_t>(entry) == kMark)
            entry = factor;
}

} // namespace TEV2_PLAYBACK
