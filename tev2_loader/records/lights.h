#pragma once

#include "tev2_loader/records/positional_object.h"
#include "tev2_loader/records/unparsed_record.h"

#include <memory>

namespace TEV2_LOADER
{

/// Light that comes from everywhere. Body kept as bytes.
class TEV2_AMBIENT_LIGHT final : public UnparsedRecord<kAmbientLightChunk, TEV2_SERIALISABLE_OBJECT,
                                                       TEV2_INTERNAL_ANIM_OBJECT, TEV2_CHUNK_OBJECT>
{
};

/// The tint of all lights. Body kept as bytes.
class TEV2_GLOBAL_LIGHT_TINT final : public UnparsedRecord<kGlobalLightTintChunk, TEV2_INTERNAL_ANIM_OBJECT,
                                                           TEV2_SERIALISABLE_OBJECT, TEV2_CHUNK_OBJECT>
{
};

/// A placed light. Body kept as bytes. Its type precedes the body: 0 point, 1 directional, 2 spot; any
/// other type is a plain TEV2_LIGHT that keeps its number.
class TEV2_LIGHT : public UnparsedRecord<kLightChunk, TEV2_POSITIONAL_OBJECT, TEV2_CHUNK_OBJECT>
{
public:
    explicit TEV2_LIGHT(std::uint32_t type) : type_(type) {}

    /// Makes the light of a type; never null.
    static std::unique_ptr<TEV2_LIGHT> Create(std::uint32_t type);

    virtual std::uint32_t GetType() const { return type_; }

private:
    std::uint32_t type_;
};

class TEV2_POINT_LIGHT final : public TEV2_LIGHT
{
public:
    static constexpr std::uint32_t kType = 0;
    TEV2_POINT_LIGHT() : TEV2_LIGHT(kType) {}
};

class TEV2_DIRECTIONAL_LIGHT final : public TEV2_LIGHT
{
public:
    static constexpr std::uint32_t kType = 1;
    TEV2_DIRECTIONAL_LIGHT() : TEV2_LIGHT(kType) {}
};

class TEV2_SPOT_LIGHT final : public TEV2_LIGHT
{
public:
    static constexpr std::uint32_t kType = 2;
    TEV2_SPOT_LIGHT() : TEV2_LIGHT(kType) {}
};

} // namespace TEV2_LOADER
