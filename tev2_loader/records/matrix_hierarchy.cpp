#include "tev2_loader/records/matrix_hierarchy.h"

#include "tev2_loader/serialisation/arrays.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/track_mover.h"

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

template <typename Usual, typename Family>
typename Family::Value PresentValue(const std::unique_ptr<Family>& track)
{
    if (!track)
        return {};
    const Usual* usual = Exactly<Usual>(track.get());
    return usual != nullptr ? usual->GetValue() : track->GetValue();
}

/// Calls for memory; whatever the address, nothing can go wrong. Where there is a choice not by a builtin function:
/// compilers leave away calls of functions that do nothing else.
void Prefetch([[maybe_unused]] const void* memory)
{
#if defined(__GNUC__) && defined(TEV2_HAS_SSE)
    __asm__ volatile("prefetcht0 %0" : : "m"(*static_cast<const char*>(memory)));
#elif defined(TEV2_HAS_SSE)
    _mm_prefetch(static_cast<const char*>(memory), _MM_HINT_T0);
#endif
}

void PrefetchTrack(const TEV2_ANIMATABLE* track)
{
    constexpr std::size_t kCacheLine = 64;
    if (track == nullptr)
        return;
    Prefetch(track);
    Prefetch(reinterpret_cast<const char*>(track) + kCacheLine); // within it, or right behind
}

/// The keys around a segment.
template <typename Usual, typename Family>
void PrefetchKeys(const std::unique_ptr<Family>& track, std::size_t key)
{
    const Usual* usual = Exactly<Usual>(track.get());
    if (usual == nullptr || key + 1 >= usual->m_values.size() || key + 1 >= usual->m_times.size())
        return;
    Prefetch(&usual->m_times[key]);
    Prefetch(&usual->m_values[key]);
    Prefetch(&usual->m_values[key + 1]);
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
    if (version >= 1.15f)
        loaded &= LoadOptionalTrack(cursor, version, "scale", scale);
    if (version <= 1.05f)
        LoadLegacyMatrix(cursor, worldMatrix);
    ReadWideString(cursor, userText);
    if (version >= 1.04f)
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
    TEV2_MATRIX_3X4 local = RigidMatrix(turn, place);
    if (scale)
    {
        const TEV2_VECTOR_3 factors = scale->GetValue();
        for (auto& row : local.m)
            (Float4::Load(row) * Float4::Of(factors.x, factors.y, factors.z, 1.0f)).Store(row);
    }
    worldMatrix = parentMatrix != nullptr ? Product(*parentMatrix, local) : local;
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
    LoadRecords(cursor, version, "nodes", nodes, kLeastNode);
    LinkParents();
    for (std::size_t index = 0; index < nodes.size(); ++index)
    {
        if (nodes[index].parentIndex >= 0 && nodes[index].parentMatrix == nullptr)
        {
            const RecordScope scope(cursor, "nodes", index);
            cursor.Warn(TEV2_LOAD_CODE::ParentOutside, "below " + std::to_string(nodes.size()),
                        std::to_string(nodes[index].parentIndex));
        }
    }
    return true;
}

bool TEV2_MATRIX_HIERARCHY::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveRecords(writer, nodes);
}

/// Calls for the tracks of nodes some way ahead, and for the keys that they will need halfway there, so that what
/// has to come from memory comes while other nodes are worked on. A few nodes stay in the cache anyway.
template <typename Move>
void TEV2_MATRIX_HIERARCHY::Evaluate(Move move)
{
    constexpr std::size_t kFewNodes = 256;
    constexpr std::size_t kTracksAhead = 24;
    constexpr std::size_t kKeysAhead = 12;
    TrackMover mover;
    const std::size_t count = nodes.size();
    const std::size_t called_for = count > kFewNodes ? count : 0;
    for (std::size_t index = 0; index < count; ++index)
    {
        if (index + kTracksAhead < called_for)
        {
            const TEV2_MATRIX_NODE& ahead = nodes[index + kTracksAhead];
            PrefetchTrack(ahead.translation.get());
            PrefetchTrack(ahead.rotation.get());
        }
        if (index + kKeysAhead < called_for)
        {
            const TEV2_MATRIX_NODE& ahead = nodes[index + kKeysAhead];
            PrefetchKeys<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(ahead.translation, mover.NearKey());
            PrefetchKeys<TEV2_ANIMATABLE_QUATERNION_SLERP>(ahead.rotation, mover.NearKey());
        }
        nodes[index].MoveTracks([&](TEV2_ANIMATABLE& track) { move(mover, track); });
        nodes[index].FormWorldMatrix();
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
