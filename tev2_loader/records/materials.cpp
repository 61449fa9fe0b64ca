#include "tev2_loader/records/materials.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_MATERIAL> TEV2_MATERIAL::Create(std::uint32_t type)
{
    switch (type)
    {
    case TEV2_STANDARD_MATERIAL::kType:
        return std::make_unique<TEV2_STANDARD_MATERIAL>();
    case TEV2_SHADER_MATERIAL::kType:
        return std::make_unique<TEV2_SHADER_MATERIAL>();
    default:
        return std::make_unique<TEV2_MATERIAL>(type);
    }
}

} // namespace TEV2_LOADER
