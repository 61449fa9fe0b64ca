#include "tev2_loader/records/instances.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_INSTANCE>;
template struct TEV2_RECORD_CODE<TEV2_GEOM_INSTANCE>;
template struct TEV2_RECORD_CODE<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>;
template struct TEV2_RECORD_CODE<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>;

std::unique_ptr<TEV2_INSTANCE> TEV2_INSTANCE::Create(std::uint32_t chunk_id)
{
    return decltype(ClassesOf(std::declval<TEV2_INSTANCE&>()))::Create(chunk_id);
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
