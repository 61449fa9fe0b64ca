#pragma once

#include "tev2_loader/records/object_bases.h"

#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// The base of material maps. The bodies of the format's maps are not known, so that no type has a class here.
class TEV2_MATERIAL_MAP : public TEV2_ENTITY, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// Makes the map of a type; null for a type without a class, which every type is.
    static std::unique_ptr<TEV2_MATERIAL_MAP> Create(std::uint32_t type);

    virtual std::uint32_t GetType() const = 0;
};

} // namespace TEV2_LOADER
