#include "tev2_loader/records/material_maps.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_BITMAP_CROP_PLACE>;
template struct TEV2_RECORD_CODE<TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS>;
template struct TEV2_RECORD_CODE<TEV2_UV_MATERIAL_WRAP_MODE>;
template struct TEV2_RECORD_CODE<TEV2_BITMAP_MATERIAL_MAP_COORDINATES>;
template struct TEV2_RECORD_CODE<TEV2_BITMAP_MATERIAL_MAP_TIME>;
template struct TEV2_RECORD_CODE<TEV2_MATERIAL_MAP>;
template struct TEV2_RECORD_CODE<TEV2_BITMAP_MATERIAL_MAP>;
template struct TEV2_RECORD_CODE<TEV2_NORMAL_CHANNEL_DIRECTION>;
template struct TEV2_RECORD_CODE<TEV2_NORMAL_MATERIAL_MAP>;

static_assert(sizeof(TEV2_BITMAP_MATERIAL_MAP) <= TEV2_MATERIAL_MAP::kMostBytes);
static_assert(sizeof(TEV2_NORMAL_MATERIAL_MAP) <= TEV2_MATERIAL_MAP::kMostBytes);

std::unique_ptr<TEV2_MATERIAL_MAP> TEV2_MATERIAL_MAP::Create(std::uint32_t type)
{
    return decltype(ClassesOf(std::declval<TEV2_MATERIAL_MAP&>()))::Create(type);
}

std::unique_ptr<TEV2_MATERIAL_MAP> TEV2_MATERIAL_MAP::MakeKept(std::uint32_t type)
{
    auto map = Create(type);
    return map ? std::move(map) : std::unique_ptr<TEV2_MATERIAL_MAP>(new TEV2_MATERIAL_MAP(type));
}

std::unique_ptr<TEV2_BITMAP_MATERIAL_MAP> TEV2_BITMAP_MATERIAL_MAP::Create(std::uint32_t type)
{
    return type == kType ? std::make_unique<TEV2_BITMAP_MATERIAL_MAP>() : nullptr;
}

} // namespace TEV2_LOADER
