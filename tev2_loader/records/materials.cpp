#include "tev2_loader/records/materials.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_MATERIAL>;
template struct TEV2_RECORD_CODE<TEV2_STANDARD_MATERIAL>;
template struct TEV2_RECORD_CODE<TEV2_SHADER_STRING_PARAM>;
template struct TEV2_RECORD_CODE<TEV2_SHADER_LIGHT_PARAM>;
template struct TEV2_RECORD_CODE<TEV2_SHADER_MATERIAL>;

std::unique_ptr<TEV2_MATERIAL> TEV2_MATERIAL::Create(std::uint32_t type)
{
    auto material = decltype(ClassesOf(std::declval<TEV2_MATERIAL&>()))::Create(type);
    return material ? std::move(material) : std::unique_ptr<TEV2_MATERIAL>(new TEV2_MATERIAL(type));
}

} // namespace TEV2_LOADER
