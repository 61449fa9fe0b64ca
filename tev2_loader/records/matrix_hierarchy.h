#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/math/values.h"
#include "tev2_loader/records/extended_properties.h"
#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// A joint of the skeleton: its transform relative to its parent over time, and its transform in the world at the
/// current time.
class TEV2_MATRIX_NODE final : public TEV2_ENTITY, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// Index of the parent in the hierarchy's nodes; any negative value is a node at top level.
    std::int32_t parentIndex = -1;

    /// Relative to the parent, metres. Null: no translation.
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> translation;

    /// Relative to the parent. Null: no rotation. Values are used as they are, unit or not.
    std::unique_ptr<TEV2_ANIMATABLE_QUATERNION> rotation;

    /// Along the node's own axes, applied before the rotation. Null: none. From version 1.15.
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> scale;

    /// The parent's worldMatrix or null; not owned. Set by LinkParents of the hierarchy, never written.
    const TEV2_MATRIX_3X4* parentMatrix = nullptr;

    /// As of the last Update or SetTime; never written. Files up to version 1.05 bring one along.
    TEV2_MATRIX_3X4 worldMatrix;

    TEV2_WIDE_STRING userText;
    TEV2_EXTENDED_PROPERTIES properties; ///< from version 1.04

    template <typename Self, typename Archive>
    static void Fields(Self& node, Archive& archive)
    {
        TEV2_ENTITY::Fields(node, archive);
        archive.Value("parentIndex", node.parentIndex, Counts::kSave);
        archive.Track("translation", node.translation, Counts::kBoth);
        archive.Track("rotation", node.rotation, Counts::kBoth);
        if (archive.Since(kSinceScale))
            archive.Track("scale", node.scale, Counts::kBoth);
        if (archive.UpTo(kUntilLegacyMatrix))
            archive.LegacyMatrix("worldMatrix", node.worldMatrix);
        archive.Text("userText", node.userText);
        if (archive.Since(kSinceProperties))
            archive.Record("properties", node.properties, Counts::kLoad);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;

    /// Move the tracks (not those of the properties), then form worldMatrix from them and from the
    /// current *parentMatrix.
    void Update(float delta_time) override;
    void SetTime(float time) override;

private:
    friend class TEV2_MATRIX_HIERARCHY;

    template <typename Move>
    void MoveTracks(Move move);
    void FormWorldMatrix();
};

/// The skeleton: nodes in file order, every parent before its children.
class TEV2_MATRIX_HIERARCHY : public TEV2_INTERNAL_ANIM_OBJECT,
                              public TEV2_SERIALISABLE_OBJECT,
                              public TEV2_CHUNK_OBJECT
{
public:
    /// Growing it moves the nodes: call LinkParents afterwards.
    std::vector<TEV2_MATRIX_NODE> nodes;

    /// Sets every node's parentMatrix from its parentIndex; null when that is negative or no node's index.
    /// Load does this itself.
    void LinkParents();

    template <typename Self, typename Archive>
    static void Fields(Self& hierarchy, Archive& archive)
    {
        archive.Records(
            "nodes", hierarchy.nodes, Counts::kSave,
            [](TEV2_MEMORY_CURSOR& cursor, const auto& node, std::size_t begin, std::uint32_t count)
            { ExamineParent(cursor, node.parentIndex, begin + DiskSize(node.name), count); });
    }

    /// Whether the limits allow the number of nodes that the cursor is at; if not, it fails. Reads nothing.
    static bool AllowCount(TEV2_MEMORY_CURSOR& cursor);

    /// Whether the limits allow the depth of `count` nodes; if not, the cursor fails.
    static bool AllowNesting(TEV2_MEMORY_CURSOR& cursor, std::size_t count,
                             const std::function<std::int32_t(std::size_t)>& parent_of);

    /// False, and the cursor failed, where there are more nodes, or deeper ones, than its limits allow; otherwise true:
    /// a node that could not be read fails the cursor alone.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
    std::uint32_t GetChunkId() const override { return kMatrixHierarchyChunk; }

    /// Evaluate all nodes in order.
    void Update(float delta_time) override;
    void SetTime(float time) override;

private:
    static void ExamineParent(TEV2_MEMORY_CURSOR& cursor, std::int32_t parent, std::size_t offset,
                              std::uint32_t count);

    template <typename Move>
    void Evaluate(Move move);
};

} // namespace TEV2_LOADER
