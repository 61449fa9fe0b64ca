#include "tev2_loader/records/instances.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_INSTANCE> TEV2_INSTANCE::Create(std::uint32_t chunk_id)
{
    switch (chunk_id)
    {
    case kInstanceChunk:
        return std::make_unique<TEV2_INSTANCE>();
    case kGeomInstanceChunk:
        return std::make_unique<TEV2_GEOM_INSTANCE>();
    case kInstanceMaterialsChunk:
        return std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>();
    case kInstanceSubObjectsChunk:
        return std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>();
    default:
        return nullptr;
    }
}

const TEV2_KIND* TEV2_INSTANCE::FindKind(std::uint32_t chunk_id)
{
    for (const TEV2_KIND* kind :
         {&kInstanceChunk, &kGeomInstanceChunk, &kInstanceMaterialsChunk, &kInstanceSubObjectsChunk})
        if (*kind == chunk_id)
            return kind;
    return nullptr;
}

} // namespace TEV2_LOADER
