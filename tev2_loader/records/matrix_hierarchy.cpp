#include "tev2_loader/records/matrix_hierarchy.h"

#include "tev2_loader/serialisation/arrays.h"
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

/// The track as one of this class when it is nothing else: what it does needs no look at its table then.
template <typename Concrete, typename Family>
const Concrete* Exactly(const Family& track)
{
    return &typeid(track) == &typeid(Concrete) ? static_cast<const Concrete*>(&track) : nullptr;
}

template <typename Usual, typename Family>
typename Family::Value PresentValue(const Family& track)
{
    const Usual* usual = Exactly<Usual>(track);
    return usual != nullptr ? usual->GetValue() : track.GetValue();
}

void Prefetch([[maybe_unused]] const void* memory)
{
#if defined(__GNUC__)
    __builtin_prefetch(memory);
#endif
}

void PrefetchTrack(const TEV2_ANIMATABLE* track)
{
    Prefetch(track);
    Prefetch(reinterpret_cast<const char*>(track) + 64);
}

/// The keys around a segment.
template <typename Usual, typename Family>
void PrefetchKeys(const Family* track, std::size_t key)
{
    const Usual* usual = track != nullptr ? Exactly<Usual>(*track) : nullptr;
    if (usual == nullptr || key + 1 >= usual->m_values.size())
        return;
    Prefetch(usual->m_times.data() + key);
    Prefetch(usual->m_values.data() + key);
    Prefetch(reinterpret_cast<const char*>(usual->m_values.data() + key + 2) - 1);
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

void TEV2_MATRIX_NODE::Update(float delta_time)
{
    UpdateEach(delta_time, translation, rotation, scale);
    FormWorldMatrix();
}

void TEV2_MATRIX_NODE::SetTime(float time)
{
    SetTimeEach(time, translation, rotation, scale);
    FormWorldMatrix();
}

void TEV2_MATRIX_NODE::FormWorldMatrix()
{
    const TEV2_VECTOR_3 place =
        translation ? PresentValue<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(*translation) : TEV2_VECTOR_3{};
    const TEV2_QUATERNION turn =
        rotation ? PresentValue<TEV2_ANIMATABLE_QUATERNION_SLERP>(*rotation) : TEV2_QUATERNION{};
    TEV2_MATRIX_3X4 local = RigidMatrix(turn, place);
    if (scale)
    {
        const TEV2_VECTOR_3 factors = scale->GetValue();
        for (auto& row : local.m)
            (Float4::Load(row) * Float4::Of(factors.x, factors.y, factors.z, 1.0f)).Store(row);
    }
    worldMatrix = parentMatrix != nullptr ? Product(*parentMatrix, local) : local;
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
/// has to come from memory comes while other nodes are worked on.
template <typename Move>
void TEV2_MATRIX_HIERARCHY::Evaluate(Move move)
{
    constexpr std::size_t kTracksAhead = 24;
    constexpr std::size_t kKeysAhead = 12;
    std::uint32_t near_key = 0;
    for (std::size_t index = 0; index < nodes.size(); ++index)
    {
        if (index + kTracksAhead < nodes.size())
        {
            const TEV2_MATRIX_NODE& far = nodes[index + kTracksAhead];
            PrefetchTrack(far.translation.get());
            PrefetchTrack(far.rotation.get());
            const TEV2_MATRIX_NODE& near = nodes[index + kKeysAhead];
            PrefetchKeys<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(near.translation.get(), near_key);
            PrefetchKeys<TEV2_ANIMATABLE_QUATERNION_SLERP>(near.rotation.get(), near_key);
        }
        TEV2_MATRIX_NODE& node = nodes[index];
        for (TEV2_ANIMATABLE* track : std::initializer_list<TEV2_ANIMATABLE*>{
                 node.translation.get(), node.rotation.get(), node.scale.get()})
        {
            if (track != nullptr)
                move(*track, near_key);
        }
        node.FormWorldMatrix();
    }
}

void TEV2_MATRIX_HIERARCHY::Update(float delta_time)
{
    Evaluate([delta_time](TEV2_ANIMATABLE& track, std::uint32_t& near_key)
             { track.Update(delta_time, near_key); });
}

void TEV2_MATRIX_HIERARCHY::SetTime(float time)
{
    Evaluate([time](TEV2_ANIMATABLE& track, std::uint32_t& near_key) { track.SetTime(time, near_key); });
}

} // namespace TEV2_LOADER
