#pragma once

#include "tev2_loader/records/lit_object.h"
#include "tev2_loader/records/positional_object.h"
#include "tev2_loader/records/scaled_object.h"
#include "tev2_loader/records/unparsed_record.h"

namespace TEV2_LOADER
{

// References into other files. The bodies of all of them are kept as bytes.

/// kChunkId is 15 or 20.
template <std::uint32_t kChunkId>
class TEV2_XREF final : public UnparsedRecord<kChunkId, TEV2_CHUNK_OBJECT, TEV2_INTERNAL_ANIM_OBJECT>
{
};

class TEV2_XREF_OBJECT final
    : public UnparsedRecord<kXrefObjectChunk, TEV2_POSITIONAL_OBJECT, UNUSED__TEV2_SCALED_OBJECT,
                            TEV2_LIT_OBJECT, TEV2_CHUNK_OBJECT>
{
};

class TEV2_XREF_SPEEDTREE final
    : public UnparsedRecord<kXrefSpeedTreeChunk, TEV2_POSITIONAL_OBJECT, UNUSED__TEV2_SCALED_OBJECT,
                            TEV2_LIT_OBJECT, TEV2_CHUNK_OBJECT>
{
};

} // namespace TEV2_LOADER
