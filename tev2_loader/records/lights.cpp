#include "tev2_loader/records/lights.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_AMBIENT_LIGHT>;
template struct TEV2_RECORD_CODE<TEV2_GLOBAL_LIGHT_TINT>;
template struct TEV2_RECORD_CODE<TEV2_LIGHT_OBJECT_SHADOW_PARAMS>;
template struct TEV2_RECORD_CODE<TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS>;
template struct TEV2_RECORD_CODE<TEV2_LIGHT_SHADOW_MAP_PARAMS>;
template struct TEV2_RECORD_CODE<TEV2_LIGHT_SHADOW_PARAMS>;
template struct TEV2_RECORD_CODE<MAX_ATTENUATION>;
template struct TEV2_RECORD_CODE<TEV2_MAX_LIGHT_PARAMS>;
template struct TEV2_RECORD_CODE<TEV2_LIGHT>;
template struct TEV2_RECORD_CODE<TEV2_POINT_LIGHT>;
template struct TEV2_RECORD_CODE<TEV2_DIRECTIONAL_LIGHT>;
template struct TEV2_RECORD_CODE<TEV2_SPOT_LIGHT>;

std::unique_ptr<TEV2_LIGHT> TEV2_LIGHT::Create(std::uint32_t type)
{
    auto light = decltype(ClassesOf(std::declval<TEV2_LIGHT&>()))::Create(type);
    return light ? std::move(light) : std::unique_ptr<TEV2_LIGHT>(new TEV2_LIGHT(type));
}

} // namespace TEV2_LOADER
