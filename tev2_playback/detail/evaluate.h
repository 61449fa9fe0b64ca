#pragma once

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_playback/detail/channel.h"
#include "tev2_playback/detail/skeleton_data.h"
#include "tev2_playback/detail/transform_matrix.h"

#include <cstddef>

// The arithmetic of playing: the same, number for number, as that of tracks and nodes, four nodes at a time. The clip's
// groups are evaluated one after another and handed to a sink:
//
//     void Put(const Group& group, const FourTransforms& transforms);      // of a group in lanes
//     void Put(const Group& group, const Transform& transform);            // of a node alone

namespace TEV2_PLAYBACK
{

using TEV2_LOADER::Float4;
using TEV2_LOADER::Pick;

/// Translations and rotations of four nodes, component by component.
struct FourTransforms
{
    Float4 translation[3];
    Float4 rotation[4];
};

/// Rows of four become columns.
inline void Transpose(Float4 (&rows)[4])
{
    const Float4 low01 = Pick<0, 1, 0, 1>(rows[0], rows[1]);
    const Float4 high01 = Pick<2, 3, 2, 3>(rows[0], rows[1]);
    const Float4 low23 = Pick<0, 1, 0, 1>(rows[2], rows[3]);
    const Float4 high23 = Pick<2, 3, 2, 3>(rows[2], rows[3]);
    rows[0] = Pick<0, 2, 0, 2>(low01, low23);
    rows[1] = Pick<1, 3, 1, 3>(low01, low23);
    rows[2] = Pick<0, 2, 0, 2>(high01, high23);
    rows[3] = Pick<1, 3, 1, 3>(high01, high23);
}

inline Float4 LoadFour(const float* floats)
{
    return Float4::Load(*reinterpret_cast<const float(*)[4]>(floats));
}

/// Along the arc where lanes are not nearly parallel, one by one.
void TurnAlongArcs(const Float4 (&open)[4], const Float4 (&close)[4], Float4 dot, Float4 fraction,
                   unsigned straight, Float4 (&turned)[4]);

inline void TurnBetween(const Float4 (&open)[4], const Float4 (&close)[4], Float4 fraction,
                        unsigned always_straight, Float4 (&turned)[4])
{
    const Float4 dot = open[0] * close[0] + open[3] * close[3] + open[1] * close[1] + open[2] * close[2];
    for (int component = 0; component < 4; ++component)
        turned[component] = open[component] + (close[component] - open[component]) * fraction;
    const unsigned straight =
        Float4::Above(dot, Float4::All(TEV2_LOADER::FastSlerp::kNearlyParallel)) | always_straight;
    if (straight != 0xF) [[unlikely]]
        TurnAlongArcs(open, close, dot, fraction, straight, turned);
}

/// The matrices of four nodes, row by row: rows[r][n] is row r of node n.
inline void FormMatrices(const FourTransforms& transforms, Float4 (&rows)[3][4])
{
    const auto& [x, y, z, w] = transforms.rotation;
    const Float4 x2 = x + x;
    const Float4 y2 = y + y;
    const Float4 z2 = z + z;
    const Float4 w2 = w + w;
    const Float4 xx = x2 * x;
    const Float4 yy = y2 * y;
    const Float4 zz = z2 * z;
    const Float4 xy = x2 * y;
    const Float4 xz = x2 * z;
    const Float4 yz = y2 * z;
    const Float4 wx = w2 * x;
    const Float4 wy = w2 * y;
    const Float4 wz = w2 * z;
    const Float4 one = Float4::All(1.0f);
    const Float4 formed[3][4] = {{one - yy - zz, xy - wz, xz + wy, transforms.translation[0]},
                                 {xy + wz, one - xx - zz, yz - wx, transforms.translation[1]},
                                 {xz - wy, yz + wx, one - xx - yy, transforms.translation[2]}};
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 4; ++column)
            rows[row][column] = formed[row][column];
        Transpose(rows[row]);
    }
}

/// Evaluates groups at the places of their clocks.
class Evaluation
{
public:
    /// Places of all clocks of the nodes.
    Evaluation(const SkeletonData& skeleton, const Place* places) : skeleton_(skeleton), places_(places)
    {
        if (skeleton.rowSize == 0)
            return;
        row_ = skeleton.rows.data() + std::size_t{places[0].key} * skeleton.rowSize;
        fraction_ = Float4::All(places[0].fraction);
    }

    template <typename Sink>
    void Evaluate(const Group& group, Sink& sink) const
    {
        if (group.way == Way::Alone)
            return sink.Put(group, Alone(skeleton_.alone[group.keys]));
        FourTransforms four;
        if (group.way == Way::Rows)
            FromRows(group, four);
        else
            FromLanes(group, four);
        sink.Put(group, four);
    }

private:
    void FromRows(const Group& group, FourTransforms& four) const
    {
        const float* open = row_ + group.keys;
        const float* close = open + skeleton_.rowSize;
        if (group.moves == Moves::Rotation)
            Rest(group, four.translation);
        else
        {
            for (Float4& component : four.translation)
            {
                const Float4 from = LoadFour(open);
                component = from + (LoadFour(close) - from) * fraction_;
                open += 4;
                close += 4;
            }
        }
        if (group.moves == Moves::Translation)
            return Rest(group, four.rotation);
        Float4 from[4];
        Float4 to[4];
        for (int component = 0; component < 4; ++component)
        {
            from[component] = LoadFour(open + 4 * component);
            to[component] = LoadFour(close + 4 * component);
        }
        TurnBetween(from, to, fraction_, group.straight, four.rotation);
    }

    void FromLanes(const Group& group, FourTransforms& four) const
    {
        const Lane* lanes = &skeleton_.lanes[group.keys];
        if (group.moves == Moves::Rotation)
            Rest(group, four.translation);
        else
        {
            Float4 from[4];
            Float4 to[4];
            const Float4 fraction = Gather<3>(lanes, from, to);
            for (int component = 0; component < 3; ++component)
                four.translation[component] = from[component] + (to[component] - from[component]) * fraction;
            lanes += 4;
        }
        if (group.moves == Moves::Translation)
            return Rest(group, four.rotation);
        Float4 from[4];
        Float4 to[4];
        const Float4 fraction = Gather<4>(lanes, from, to);
        TurnBetween(from, to, fraction, group.straight, four.rotation);
    }

    /// The two keys of four lanes, component by component, and their fractions.
    template <std::size_t kFloats>
    Float4 Gather(const Lane* lanes, Float4 (&open)[4], Float4 (&close)[4]) const
    {
        for (int lane = 0; lane < 4; ++lane)
        {
            const float* key =
                skeleton_.gathered.data() + lanes[lane].keys + kFloats * places_[lanes[lane].clock].key;
            open[lane] = LoadFour(key);
            close[lane] = LoadFour(key + kFloats);
        }
        Transpose(open);
        Transpose(close);
        return Float4::Of(places_[lanes[0].clock].fraction, places_[lanes[1].clock].fraction,
                          places_[lanes[2].clock].fraction, places_[lanes[3].clock].fraction);
    }

    template <std::size_t kComponents>
    void Rest(const Group& group, Float4 (&components)[kComponents]) const
    {
        const float* from = &skeleton_.resting[group.resting];
        for (Float4& component : components)
        {
            component = LoadFour(from);
            from += 4;
        }
    }

    Transform Alone(const LoneNode& node) const;

    const SkeletonData& skeleton_;
    const Place* places_;
    const float* row_ = nullptr;
    Float4 fraction_ = Float4::All(0.0f);
};

/// Local matrices of what moves, in the place of the node's world matrix.
struct MatrixSink
{
    TEV2_LOADER::TEV2_MATRIX_3X4* matrices;

    void Put(const Group& group, const FourTransforms& four) const
    {
        Float4 rows[3][4];
        FormMatrices(four, rows);
        for (std::uint32_t lane = 0; lane < group.lanes; ++lane)
            for (int row = 0; row < 3; ++row)
                rows[row][lane].Store(matrices[group.nodes[lane]].m[row]);
    }

    void Put(const Group& group, const Transform& transform) const
    {
        matrices[group.nodes[0]] = MatrixOf(transform);
    }
};

/// Transforms of what moves.
struct TransformSink
{
    Transform* transforms;

    void Put(const Group& group, const FourTransforms& four) const
    {
        Float4 translations[4] = {four.translation[0], four.translation[1], four.translation[2],
                                  Float4::All(1.0f)};
        Float4 rotations[4] = {four.rotation[0], four.rotation[1], four.rotation[2], four.rotation[3]};
        Transpose(translations);
        Transpose(rotations);
        for (std::uint32_t lane = 0; lane < group.lanes; ++lane)
        {
            Transform& transform = transforms[group.nodes[lane]];
            float translation[4];
            translations[lane].Store(translation);
            transform.translation = {translation[0], translation[1], translation[2]};
            transform.scale = {1.0f, 1.0f, 1.0f};
            rotations[lane].Store(transform.rotation);
        }
    }

    void Put(const Group& group, const Transform& transform) const { transforms[group.nodes[0]] = transform; }
};

} // namespace TEV2_PLAYBACK
