#include "tev2_loader/records/instances.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_INSTANCE> TEV2_INSTANCE::Create(std::uint32_t chunk_id)
{
    switch (chunk_id)
    {
    case 14:
        return std::make_unique<TEV2_INSTANCE>();
    case 16:
        return std::make_unique<TEV2_GEOM_INSTANCE>();
    case 18:
        return std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>();
    case 19:
        return std::make_unique<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>();
    default:
        return nullptr;
    }
}

} // namespace TEV2_LOADER
