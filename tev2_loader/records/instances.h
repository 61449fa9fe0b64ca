#pragma once

#include "tev2_loader/records/lit_object.h"
#include "tev2_loader/records/positional_object.h"
#include "tev2_loader/records/scaled_object.h"
#include "tev2_loader/records/unparsed_record.h"

#include <memory>

namespace TEV2_LOADER
{

/// An instance of an object. Body kept as bytes. The index of its list is written before the body.
class TEV2_INSTANCE : public UnparsedRecord<kInstanceChunk, TEV2_POSITIONAL_OBJECT,
                                            UNUSED__TEV2_SCALED_OBJECT, TEV2_CHUNK_OBJECT>
{
public:
    /// Makes the class of a chunk id (14, 16, 18, 19); null for any other id.
    static std::unique_ptr<TEV2_INSTANCE> Create(std::uint32_t chunk_id);

    /// The kind of an instance's chunk id; null for any other id.
    static const TEV2_KIND* FindKind(std::uint32_t chunk_id);
};

class TEV2_GEOM_INSTANCE : public TEV2_INSTANCE, public TEV2_LIT_OBJECT
{
public:
    std::uint32_t GetChunkId() const override { return kGeomInstanceChunk; }
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override
    {
        return TEV2_INSTANCE::Load(cursor, version);
    }
    bool Save(TEV2_FILE_WRITER& writer) const override { return TEV2_INSTANCE::Save(writer); }
};

class TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS final : public TEV2_GEOM_INSTANCE
{
public:
    std::uint32_t GetChunkId() const override { return kInstanceMaterialsChunk; }
};

class TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS final : public TEV2_GEOM_INSTANCE
{
public:
    std::uint32_t GetChunkId() const override { return kInstanceSubObjectsChunk; }
};

} // namespace TEV2_LOADER
