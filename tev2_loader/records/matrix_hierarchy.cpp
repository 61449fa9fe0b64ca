#include "tev2_loader/records/matrix_hierarchy.h"

#include "tev2_loader/serialisation/arrays.h"

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
    UpdateEach(delta_time, translation, rotation, scale);
    Evaluate();
}

void TEV2_MATRIX_NODE::SetTime(float time)
{
    SetTimeEach(time, translation, rotation, scale);
    Evaluate();
}

void TEV2_MATRIX_NODE::Evaluate()
{
    TEV2_MATRIX_3X4 local = RotationMatrix(rotation ? rotation->GetValue() : TEV2_QUATERNION{});
    if (scale)
    {
        const auto [x, y, z] = scale->GetValue();
        for (auto& row : local.m)
        {
            row[0] *= x;
            row[1] *= y;
            row[2] *= z;
        }
    }
    if (translation)
    {
        const auto [x, y, z] = translation->GetValue();
        local.m[0][3] = x;
        local.m[1][3] = y;
        local.m[2][3] = z;
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

void TEV2_MATRIX_HIERARCHY::Update(float delta_time)
{
    for (TEV2_MATRIX_NODE& node : nodes)
        node.Update(delta_time);
}

void TEV2_MATRIX_HIERARCHY::SetTime(float time)
{
    for (TEV2_MATRIX_NODE& node : nodes)
        node.SetTime(time);
}

} // namespace TEV2_LOADER
