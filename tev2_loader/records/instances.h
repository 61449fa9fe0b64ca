#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/lit_object.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/records/scaled_object.h"
#include "tev2_loader/records/tri_sub_object.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// An object of the scene shown again, at a node of its own. The index of its list, which is written before the body,
/// says what is repeated: 0 an anim mesh, 1 a bezier spline, 2 a camera, 3 a light, 4 a morph mesh, 5 a rigid, 6 a
/// weighted mesh, 7 a helper, 8 a cross-reference object, 9 a SpeedTree reference. Lists 7 and 9 are never saved.
class TEV2_INSTANCE
    : public TEV2_MOVING_RECORD_OF<TEV2_INSTANCE, TEV2_POSITIONAL_OBJECT, UNUSED__TEV2_SCALED_OBJECT,
                                   TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    static constexpr std::uint32_t kType = kInstanceChunk;

    /// Makes the class of a chunk id (14, 16, 18, 19); null for any other id.
    static std::unique_ptr<TEV2_INSTANCE> Create(std::uint32_t chunk_id);

    /// The kind of an instance's chunk id; null for any other id.
    static const TEV2_KIND* FindKind(std::uint32_t chunk_id);

    /// Index of the repeated object in the array that the list names, or kNone. May lie beyond it.
    std::uint32_t source = kNone;

    template <typename Self, typename Archive>
    static void Fields(Self& instance, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(instance, archive);
        archive.Layout();
        archive.Value("source", instance.source);
    }

    std::uint32_t GetChunkId() const override { return kType; }
};

/// An instance with lights of its own.
class TEV2_GEOM_INSTANCE : public TEV2_MOVING_RECORD_OF<TEV2_GEOM_INSTANCE, TEV2_INSTANCE, TEV2_LIT_OBJECT>
{
public:
    static constexpr std::uint32_t kType = kGeomInstanceChunk;

    template <typename Self, typename Archive>
    static void Fields(Self& instance, Archive& archive)
    {
        TEV2_INSTANCE::Fields(instance, archive);
        TEV2_LIT_OBJECT::Fields(instance, archive);
    }

    std::uint32_t GetChunkId() const override { return kType; }
};

/// An instance with materials of its own.
class TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS final
    : public TEV2_MOVING_RECORD_OF<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS, TEV2_GEOM_INSTANCE>
{
public:
    static constexpr std::uint32_t kType = kInstanceMaterialsChunk;

    /// Index in the scene's materials for each sub-object of the source; kNone: no material.
    std::vector<std::uint32_t> materials;

    template <typename Self, typename Archive>
    static void Fields(Self& instance, Archive& archive)
    {
        TEV2_GEOM_INSTANCE::Fields(instance, archive);
        archive.Values("materials", instance.materials);
    }

    std::uint32_t GetChunkId() const override { return kType; }
};

/// An instance with triangles of its own over the vertices of its source.
class TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS final
    : public TEV2_MOVING_RECORD_OF<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS, TEV2_GEOM_INSTANCE>
{
public:
    static constexpr std::uint32_t kType = kInstanceSubObjectsChunk;

    /// Corners may lie beyond the vertices of the source, which a load does not check: compare them before use.
    std::vector<TEV2_TRI_SUB_OBJECT> subObjects;

    template <typename Self, typename Archive>
    static void Fields(Self& instance, Archive& archive)
    {
        TEV2_GEOM_INSTANCE::Fields(instance, archive);
        archive.Records("subObjects", instance.subObjects);
    }

    std::uint32_t GetChunkId() const override { return kType; }
};

TEV2_CLASSES<TEV2_INSTANCE, TEV2_INSTANCE, TEV2_GEOM_INSTANCE, TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS,
             TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>
ClassesOf(const TEV2_INSTANCE&);

} // namespace TEV2_LOADER
