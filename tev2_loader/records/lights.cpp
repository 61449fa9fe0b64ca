#include "tev2_loader/records/lights.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_LIGHT> TEV2_LIGHT::Create(std::uint32_t type)
{
    switch (type)
    {
    case TEV2_POINT_LIGHT::kType:
        return std::make_unique<TEV2_POINT_LIGHT>();
    case TEV2_DIRECTIONAL_LIGHT::kType:
        return std::make_unique<TEV2_DIRECTIONAL_LIGHT>();
    case TEV2_SPOT_LIGHT::kType:
        return std::make_unique<TEV2_SPOT_LIGHT>();
    default:
        return std::make_unique<TEV2_LIGHT>(type);
    }
}

} // namespace TEV2_LOADER
