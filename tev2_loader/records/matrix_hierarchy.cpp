#include "tev2_loader/records/matrix_hierarchy.h"

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_loader/records/archives.h"
#include "tev2_loader/tracks/detail/track_mover.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

#include <algorithm>
#include <typeinfo>

namespace TEV2_LOADER
{

namespace
{

/// The track as one of this class when it is nothing else, so that what it does can be compiled into the place. Null
/// where finding that out takes longer than a virtual call.
template <typename Concrete, typename Family>
const Concrete* Exactly([[maybe_unused]] const Family* track)
{
#if defined(__GNUC__)
    if (track != nullptr && &typeid(*track) == &typeid(Concrete))
        return static_cast<const Concrete*>(track);
#endif
    return nullptr;
}

TEV2_VECTOR_3 FastValue(const TEV2_ANIMATABLE_VECTOR_3_LINEAR& track)
{
    return track.GetValue();
}

TEV2_QUATERNION FastValue(const TEV2_ANIMATABLE_QUATERNION_SLERP& track)
{
    return track.ValueBy(FastSlerp());
}

template <typename Usual, typename Family>
typename Family::Value PresentValue(const std::unique_ptr<Family>& track)
{
    if (!track)
        return {};
    const Usual* usual = Exactly<Usual>(track.get());
    return usual != nullptr ? FastValue(*usual) : track->GetValue();
}

/// Whether no node has more than most nodes from itself up to the top level. Parents in a circle have.
bool NestsWithin(std::size_t count, const std::function<std::int32_t(std::size_t)>& parent_index,
                 std::size_t most)
{
    const auto parent_of = [&](std::size_t node)
    { return std::min(static_cast<std::size_t>(parent_index(node)), count); }; // a negative one is beyond all
    std::vector<std::uint32_t> depths(count + 1, 0); // 0: not known yet, and that of no node
    std::vector<std::size_t> way;
    for (std::size_t node = 0; node < count; ++node)
    {
        way.clear();
        for (std::size_t at = node; at != count && depths[at] == 0; at = parent_of(at))
        {
            way.push_back(at);
            if (way.size() > count)
                return false;
        }
        for (; !way.empty(); way.pop_back())
        {
            const std::uint32_t depth = depths[parent_of(way.back())] + 1;
            if (depth > most)
                return false;
            depths[way.back()] = depth;
        }
    }
    return true;
}

} // namespace

bool TEV2_MATRIX_NODE::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_MATRIX_NODE::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

template <typename Move>
void TEV2_MATRIX_NODE::MoveTracks(Move move)
{
    if (translation)
        move(*translation);
    if (rotation)
        move(*rotation);
    if (scale)
        move(*scale);
}

void TEV2_MATRIX_NODE::FormWorldMatrix()
{
    const auto place = PresentValue<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(translation);
    const auto turn = PresentValue<TEV2_ANIMATABLE_QUATERNION_SLERP>(rotation);
    TEV2_MATRIX_3X4 local = FastRigidMatrix(turn, place);
    if (scale)
    {
        const TEV2_VECTOR_3 factors = scale->GetValue();
        for (auto& row : local.m)
            (Float4::Load(row) * Float4::Of(factors.x, factors.y, factors.z, 1.0f)).Store(row);
    }
    worldMatrix = parentMatrix != nullptr ? FastProduct(*parentMatrix, local) : local;
}

void TEV2_MATRIX_NODE::Update(float delta_time)
{
    MoveTracks([delta_time](TEV2_ANIMATABLE& track) { track.Update(delta_time); });
    FormWorldMatrix();
}

void TEV2_MATRIX_NODE::SetTime(float time)
{
    MoveTracks([time](TEV2_ANIMATABLE& track) { track.SetTime(time); });
    FormWorldMatrix();
}

void TEV2_MATRIX_HIERARCHY::LinkParents()
{
    for (TEV2_MATRIX_NODE& node : nodes)
    {
        const bool linked =
            node.parentIndex >= 0 && static_cast<std::size_t>(node.parentIndex) < nodes.size();
        node.parentMatrix = linked ? &nodes[static_cast<std::size_t>(node.parentIndex)].worldMatrix : nullptr;
    }
}

void TEV2_MATRIX_HIERARCHY::ExamineParent(TEV2_MEMORY_CURSOR& cursor, std::int32_t parent, std::size_t offset,
                                          std::uint32_t count)
{
    if (parent >= 0 && static_cast<std::uint32_t>(parent) >= count)
        cursor.Warn(TEV2_LOAD_CODE::ParentOutside, "below " + std::to_string(count), std::to_string(parent),
                    cursor.Offset() - offset);
}

bool TEV2_MATRIX_HIERARCHY::AllowCount(TEV2_MEMORY_CURSOR& cursor)
{
    const std::size_t most = cursor.Limits().nodes;
    TEV2_MEMORY_CURSOR ahead(cursor.current, cursor.Remaining());
    const std::uint32_t count = ahead.ReadU32();
    return most == 0 || count <= most ||
           cursor.Fail(TEV2_LOAD_CODE::LimitExceeded, "at most " + std::to_string(most) + " nodes",
                       std::to_string(count));
}

bool TEV2_MATRIX_HIERARCHY::AllowNesting(TEV2_MEMORY_CURSOR& cursor, std::size_t count,
                                         const std::function<std::int32_t(std::size_t)>& parent_of)
{
    const std::size_t most = cursor.Limits().nesting;
    return most == 0 || cursor.Failed() || NestsWithin(count, parent_of, most) ||
           cursor.Fail(TEV2_LOAD_CODE::LimitExceeded,
                       "nodes nested at most " + std::to_string(most) + " deep", "deeper");
}

bool TEV2_MATRIX_HIERARCHY::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    if (!AllowCount(cursor))
        return false;
    LoadFields(*this, cursor, version);
    LinkParents();
    return AllowNesting(cursor, nodes.size(), [this](std::size_t node) { return nodes[node].parentIndex; });
}

bool TEV2_MATRIX_HIERARCHY::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

template <typename Move>
void TEV2_MATRIX_HIERARCHY::Evaluate(Move move)
{
    TrackMover mover;
    for (TEV2_MATRIX_NODE& node : nodes)
    {
        node.MoveTracks([&](TEV2_ANIMATABLE& track) { move(mover, track); });
        node.FormWorldMatrix();
    }
}

void TEV2_MATRIX_HIERARCHY::Update(float delta_time)
{
    Evaluate([delta_time](TrackMover& mover, TEV2_ANIMATABLE& track) { mover.Update(track, delta_time); });
}

void TEV2_MATRIX_HIERARCHY::SetTime(float time)
{
    Evaluate([time](TrackMover& mover, TEV2_ANIMATABLE& track) { mover.SetTime(track, time); });
}

} // namespace TEV2_LOADER
