#include "tev2_playback/detail/evaluate.h"

#include "tev2_playback/detail/channel.h"
#include "tev2_playback/detail/four_lanes.h"
#include "tev2_playback/detail/transform_matrix.h"

#include <algorithm>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

Float4x4 TurnedAlongArcs(const Turn& turn, unsigned straight)
{
    struct Lanes
    {
        float x[4], y[4], z[4], w[4];

        explicit Lanes(const Float4x4& rotations)
        {
            rotations.x.Store(x);
            rotations.y.Store(y);
            rotations.z.Store(z);
            rotations.w.Store(w);
        }
        TEV2_QUATERNION operator[](int lane) const { return {x[lane], y[lane], z[lane], w[lane]}; }
    };
    const Lanes open(turn.open);
    const Lanes close(turn.close);
    Lanes turned(turn.straight);
    float dots[4];
    float fractions[4];
    turn.dot.Store(dots);
    turn.fraction.Store(fractions);
    for (int lane = 0; lane < 4; ++lane)
    {
        if ((straight & 1u << lane) != 0)
            continue;
        const TEV2_QUATERNION arc = AlongArc(open[lane], close[lane], dots[lane], fractions[lane]);
        turned.x[lane] = arc.x;
        turned.y[lane] = arc.y;
        turned.z[lane] = arc.z;
        turned.w[lane] = arc.w;
    }
    return {Float4::Load(turned.x), Float4::Load(turned.y), Float4::Load(turned.z), Float4::Load(turned.w)};
}

namespace
{

/// Evaluates groups at the places of their clocks, and hands them to a sink:
///
///     void Put(const Group& group, const FourTransforms& transforms);      // of a group in lanes
///     void Put(const Group& group, const Transform& transform);            // of a node alone
class Evaluation
{
public:
    /// Places of all clocks of the nodes.
    Evaluation(const SkeletonData& skeleton, const Place* places) : skeleton_(skeleton), places_(places)
    {
        if (skeleton.rowSize == 0)
            return;
        open_ = skeleton.rows.data() + std::size_t{places[0].key} * skeleton.rowSize;
        close_ = open_ + skeleton.rowSize;
        fraction_ = Float4::All(places[0].fraction);
    }

    template <typename Sink>
    TEV2_HOT void Evaluate(const Group& group, const Sink& sink) const
    {
        if (group.way == Way::Alone)
            return sink.Put(group, Alone(skeleton_.alone[group.keys]));
        sink.Put(group, group.way == Way::Rows ? FromRows(group) : FromLanes(group));
    }

private:
    TEV2_HOT FourTransforms FromRows(const Group& group) const
    {
        const float* open = open_ + group.keys;
        const float* close = close_ + group.keys;
        const float* const resting = skeleton_.resting.data() + group.resting;
        FourTransforms four;
        if (group.moves == Moves::Rotation)
            four.translation = LoadVectors(resting);
        else
        {
            four.translation = Between(LoadVectors(open), LoadVectors(close), fraction_);
            open += 12;
            close += 12;
        }
        if (group.moves == Moves::Translation)
            four.rotation = LoadRotations(resting);
        else
            four.rotation =
                TurnedBetween(LoadRotations(open), LoadRotations(close), fraction_, group.straight);
        return four;
    }

    FourTransforms FromLanes(const Group& group) const
    {
        const Lane* lanes = skeleton_.lanes.data() + group.keys;
        const float* const resting = skeleton_.resting.data() + group.resting;
        FourTransforms four;
        if (group.moves == Moves::Rotation)
            four.translation = LoadVectors(resting);
        else
        {
            const Float4x4 open = Gathered<3>(lanes, 0);
            const Float4x4 close = Gathered<3>(lanes, 1);
            four.translation =
                Between({open.x, open.y, open.z}, {close.x, close.y, close.z}, Fractions(lanes));
            lanes += 4;
        }
        if (group.moves == Moves::Translation)
            four.rotation = LoadRotations(resting);
        else
            four.rotation =
                TurnedBetween(Gathered<4>(lanes, 0), Gathered<4>(lanes, 1), Fractions(lanes), group.straight);
        return four;
    }

    /// Of four lanes the keys at their places, or the ones after these.
    template <std::size_t kFloats>
    TEV2_HOT Float4x4 Gathered(const Lane* lanes, std::size_t after) const
    {
        const auto key = [this, lanes, after](int lane)
        {
            return LoadFour(skeleton_.gathered.data() + lanes[lane].keys +
                            kFloats * (places_[lanes[lane].clock].key + after));
        };
        return Transposed({key(0), key(1), key(2), key(3)});
    }

    Float4 Fractions(const Lane* lanes) const
    {
        return Float4::Of(places_[lanes[0].clock].fraction, places_[lanes[1].clock].fraction,
                          places_[lanes[2].clock].fraction, places_[lanes[3].clock].fraction);
    }

    Transform Alone(const LoneNode& node) const;

    const SkeletonData& skeleton_;
    const Place* places_;
    const float* open_ = nullptr; ///< the two rows around the time
    const float* close_ = nullptr;
    Float4 fraction_ = Float4::All(0.0f);
};

Transform Evaluation::Alone(const LoneNode& node) const
{
    const auto value = [this]<typename Value>(std::uint32_t index, Value absent, const auto& interpolate)
    {
        if (index == kNone)
            return absent;
        const Channel& channel = skeleton_.channels[index];
        const ChannelValues<Value> values{skeleton_.words.data() + channel.values, channel.count};
        const Place place = channel.clock == kNone ? Place() : places_[channel.clock];
        return ValueAt<Value>(values, place, interpolate);
    };
    Transform transform;
    transform.translation = value(node.translation, transform.translation, Linear());
    transform.scale = value(node.scale, transform.scale, Linear());
    const std::uint32_t kind = node.rotation == kNone ? 0 : skeleton_.channels[node.rotation].kind;
    transform.rotation = value(node.rotation, transform.rotation, Turning{kind});
    return transform;
}

/// World matrices of groups below their parents; the local matrices of other nodes, in the same place.
struct MatrixSink
{
    TEV2_MATRIX_3X4* matrices;

    TEV2_HOT void Put(const Group& group, const FourTransforms& four) const
    {
        const FourMatrices local = MatricesOf(four);
        TEV2_MATRIX_3X4* const to[4] = {&matrices[group.nodes[0]], &matrices[group.nodes[1]],
                                        &matrices[group.nodes[2]], &matrices[group.nodes[3]]};
        if (group.belowParents)
        {
            const TEV2_MATRIX_3X4* const parents[4] = {
                &matrices[group.parents[0]], &matrices[group.parents[1]], &matrices[group.parents[2]],
                &matrices[group.parents[3]]};
            PutRow<0>(to, ProductRow(Row<0>(parents), local));
            PutRow<1>(to, ProductRow(Row<1>(parents), local));
            PutRow<2>(to, ProductRow(Row<2>(parents), local));
        }
        else
        {
            PutRow<0>(to, local.rows[0]);
            PutRow<1>(to, local.rows[1]);
            PutRow<2>(to, local.rows[2]);
        }
    }

    void Put(const Group& group, const Transform& transform) const
    {
        matrices[group.nodes[0]] = MatrixOf(transform);
    }

private:
    template <int row>
    TEV2_HOT static Float4x4 Row(const TEV2_MATRIX_3X4* const (&from)[4])
    {
        return Transposed({Float4::Load(from[0]->m[row]), Float4::Load(from[1]->m[row]),
                           Float4::Load(from[2]->m[row]), Float4::Load(from[3]->m[row])});
    }

    /// Lanes without a node repeat the first, which is written last for that.
    template <int row>
    TEV2_HOT static void PutRow(TEV2_MATRIX_3X4* const (&to)[4], const Float4x4& elements)
    {
        const Float4x4 rows = Transposed(elements);
        rows.w.Store(to[3]->m[row]);
        rows.z.Store(to[2]->m[row]);
        rows.y.Store(to[1]->m[row]);
        rows.x.Store(to[0]->m[row]);
    }
};

/// Transforms of what moves.
struct TransformSink
{
    Transform* transforms;

    TEV2_HOT void Put(const Group& group, const FourTransforms& four) const
    {
        const Float3x4& moved = four.translation;
        const Float4x4 translations = Transposed({moved.x, moved.y, moved.z, Float4::All(1.0f)});
        const Float4x4 rotations = Transposed(four.rotation);
        PutLane(group.nodes[3], translations.w, rotations.w);
        PutLane(group.nodes[2], translations.z, rotations.z);
        PutLane(group.nodes[1], translations.y, rotations.y);
        PutLane(group.nodes[0], translations.x, rotations.x);
    }

    void Put(const Group& group, const Transform& transform) const { transforms[group.nodes[0]] = transform; }

private:
    void PutLane(std::uint32_t node, Float4 translation, Float4 rotation) const
    {
        Transform& transform = transforms[node];
        float floats[4];
        translation.Store(floats);
        transform.translation = {floats[0], floats[1], floats[2]};
        rotation.Store(transform.rotation);
    }
};

} // namespace

void EvaluateWorlds(const SkeletonData& skeleton, const Place* places, TEV2_MATRIX_3X4* worlds)
{
    const Evaluation evaluation(skeleton, places);
    const MatrixSink sink{worlds};
    const WorldProduct* product = skeleton.products.data();
    for (const Group group : skeleton.groups) // a copy, which no store changes
    {
        evaluation.Evaluate(group, sink);
        for (const WorldProduct* const end = skeleton.products.data() + group.products; product < end;
             ++product)
        {
            const TEV2_MATRIX_3X4& local =
                product->resting == kNone ? worlds[product->node] : skeleton.locals[product->resting];
            worlds[product->node] = FastProduct(worlds[product->parent], local);
        }
    }
}

void EvaluateTransforms(const SkeletonData& skeleton, const Place* places, Transform* transforms)
{
    std::ranges::copy(skeleton.transforms, transforms);
    const Evaluation evaluation(skeleton, places);
    const TransformSink sink{transforms};
    for (const Group group : skeleton.groups)
        evaluation.Evaluate(group, sink);
}

} // namespace TEV2_PLAYBACK
