#pragma once

#include "tev2_loader/records/object_bases.h"

namespace TEV2_LOADER
{

/// The base of material maps. There is no map that can be loaded yet.
class TEV2_MATERIAL_MAP : public TEV2_ENTITY, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    virtual std::uint32_t GetType() const = 0;
};

} // namespace TEV2_LOADER
