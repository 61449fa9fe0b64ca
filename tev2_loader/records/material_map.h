#pragma once

#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// The base of material maps, and the class of a map of the environment whose layout is not known, which is kept as
/// bytes.
class TEV2_MATERIAL_MAP
    : public TEV2_MOVING_RECORD_OF<TEV2_MATERIAL_MAP, TEV2_ENTITY, TEV2_INTERNAL_ANIM_OBJECT, TEV2_KEPT_BODY>
{
public:
    using Untyped = TEV2_MATERIAL_MAP;

    /// Makes the map of a type; null for a type without a class.
    static std::unique_ptr<TEV2_MATERIAL_MAP> Create(std::uint32_t type);

    /// Makes a map of any type for bytes to keep; never null.
    static std::unique_ptr<TEV2_MATERIAL_MAP> MakeKept(std::uint32_t type);

    /// The type in front of the map in the file.
    std::uint32_t GetType() const { return type_; }

    /// How much of the map is applied, 0 to 1. Null: 1.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> amount;

    template <typename Self, typename Archive>
    static void Fields(Self& map, Archive& archive)
    {
        TEV2_ENTITY::Fields(map, archive);
        archive.Track("amount", map.amount);
    }

    /// Size of the largest class of maps, for memory limits.
    static constexpr std::size_t kMostBytes = 512;

    /// What a load finds where no map has the type.
    static constexpr TEV2_LOAD_CODE kUnknownType = TEV2_LOAD_CODE::BodyKept;

protected:
    explicit TEV2_MATERIAL_MAP(std::uint32_t type) : type_(type) {}

private:
    std::uint32_t type_;
};

} // namespace TEV2_LOADER
