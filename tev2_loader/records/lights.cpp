#include "tev2_loader/records/lights.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_LIGHT> TEV2_LIGHT::Create(std::uint32_t type)
{
    using Types = TEV2_CLASSES<TEV2_LIGHT, TEV2_POINT_LIGHT, TEV2_DIRECTIONAL_LIGHT, TEV2_SPOT_LIGHT>;
    auto light = Types::Create(type);
    return light ? std::move(light) : std::make_unique<TEV2_LIGHT>(type);
}

} // namespace TEV2_LOADER
