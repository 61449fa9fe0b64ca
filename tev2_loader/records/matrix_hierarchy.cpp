#include "tev2_loader/records/matrix_hierarchy.h"

#include "tev2_loader/detail/fast_math.h"
#include "tev2_loader/detail/track_mover.h"
#include "tev2_loader/io/arrays.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

#include <typeinfo>

namespace TEV2_LOADER
{

namespace
{

/// An empty name, a parent, two absent tracks, an empty text and five empty property arrays; older layouts
/// have more.
constexpr std::size_t kLeastNode = 2 + 4 + 2 * 4 + 2 + 5 * 4;

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

/// A 4x4 matrix column by column, the last row of no use.
void LoadLegacyMatrix(TEV2_MEMORY_CURSOR& cursor, TEV2_MATRIX_3X4& matrix)
{
    for (int column = 0; column < 4; ++column)
    {
        for (auto& row : matrix.m)
            row[column] = cursor.ReadF32();
        cursor.ReadF32();
    }
}

} // namespace

bool TEV2_MATRIX_NODE::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    bool loaded = TEV2_ENTITY::Load(cursor, version);
    parentIndex = cursor.ReadI32();
    loaded &= LoadOptionalTrack(cursor, version, "translation", translation);
    loaded &= LoadOptionalTrack(cursor, version, "rotation", rotation);
    if (version >= kSinceScale)
        loaded &= LoadOptionalTrack(cursor, version, "scale", scale);
    if (version <= kUntilLegacyMatrix)
        LoadLegacyMatrix(cursor, worldMatrix);
    ReadWideString(cursor, userText);
    if (version >= kSinceProperties)
        loaded &= properties.Load(cursor, version);
    return loaded;
}

bool TEV2_MATRIX_NODE::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = TEV2_ENTITY::Save(writer);
    saved &= writer.WriteI32(parentIndex);
    saved &= SaveOptionalTrack(writer, translation);
    saved &= SaveOptionalTrack(writer, rotation);
    saved &= SaveOptionalTrack(writer, scale);
    WriteWideString(*writer.stream, userText);
    properties.Save(writer);
    return saved;
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

bool TEV2_MATRIX_HIERARCHY::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    LoadRecords(cursor, version, "nodes", nodes, kLeastNode,
                [&cursor](const TEV2_MATRIX_NODE& node, std::size_t begin, std::uint32_t count)
                {
                    if (node.parentIndex < 0 || static_cast<std::uint32_t>(node.parentIndex) < count)
                        return;
                    const std::size_t parent = begin + DiskSize(node.name);
                    cursor.Warn(TEV2_LOAD_CODE::ParentOutside, "below " + std::to_string(count),
                                std::to_string(node.parentIndex), cursor.Offset() - parent);
                });
    LinkParents();
    return true;
}

bool TEV2_MATRIX_HIERARCHY::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveRecords(writer, nodes);
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
