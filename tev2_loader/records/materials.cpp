#include "tev2_loader/records/materials.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_MATERIAL> TEV2_MATERIAL::Create(std::uint32_t type)
{
    using Types = TEV2_CLASSES<TEV2_MATERIAL, TEV2_STANDARD_MATERIAL, TEV2_SHADER_MATERIAL>;
    auto material = Types::Create(type);
    return material ? std::move(material) : std::make_unique<TEV2_MATERIAL>(type);
}

} // namespace TEV2_LOADER
