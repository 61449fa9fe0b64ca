#include "tev2_loader/records/matrix_hierarchy.h"

#include "tev2_loader/serialisation/arrays.h"

#include <algorithm>
#include <array>

namespace TEV2_LOADER
{

namespace
{

/// An empty name, a parent, two absent tracks, an empty text and five empty property arrays; older layouts
/// have more.
constexpr std::size_t kLeastNode = 2 + 4 + 2 * 4 + 2 + 5 * 4;

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
    MoveTracks(delta_time);
    FormWorldMatrix(PresentPlace());
}

void TEV2_MATRIX_NODE::SetTime(float time)
{
    PutTracks(time);
    FormWorldMatrix(PresentPlace());
}

TEV2_MATRIX_NODE::Place TEV2_MATRIX_NODE::PresentPlace() const
{
    Place place;
    if (rotation)
        place.rotation = rotation->GetValue();
    if (translation)
        place.translation = translation->GetValue();
    if (scale)
        place.scale = scale->GetValue();
    return place;
}

void TEV2_MATRIX_NODE::FormWorldMatrix(const Place& place)
{
    TEV2_MATRIX_3X4 local = RotationMatrix(place.rotation);
    if (scale)
    {
        for (auto& row : local.m)
        {
            row[0] *= place.scale.x;
            row[1] *= place.scale.y;
            row[2] *= place.scale.z;
        }
    }
    local.m[0][3] = place.translation.x;
    local.m[1][3] = place.translation.y;
    local.m[2][3] = place.translation.z;
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

/// In batches, and step by step within each: what the tracks of many nodes are waiting for from memory then
/// comes at the same time.
template <typename Move>
void TEV2_MATRIX_HIERARCHY::Evaluate(Move move)
{
    constexpr std::size_t kBatch = 16;
    std::array<TEV2_MATRIX_NODE::Place, kBatch> places;
    for (std::size_t first = 0; first < nodes.size(); first += kBatch)
    {
        const std::size_t count = std::min(kBatch, nodes.size() - first);
        TEV2_MATRIX_NODE* const batch = &nodes[first];
        for (std::size_t index = 0; index < count; ++index)
            move(batch[index]);
        for (std::size_t index = 0; index < count; ++index)
            places[index] = batch[index].PresentPlace();
        for (std::size_t index = 0; index < count; ++index)
            batch[index].FormWorldMatrix(places[index]);
    }
}

void TEV2_MATRIX_HIERARCHY::Update(float delta_time)
{
    Evaluate([delta_time](TEV2_MATRIX_NODE& node) { node.MoveTracks(delta_time); });
}

void TEV2_MATRIX_HIERARCHY::SetTime(float time)
{
    Evaluate([time](TEV2_MATRIX_NODE& node) { node.PutTracks(time); });
}

} // namespace TEV2_LOADER
