#pragma once

#include "tev2_loader/records/unparsed_record.h"

#include <memory>

namespace TEV2_LOADER
{

/// A material. Body kept as bytes. Its type precedes the body: 0 standard, 1 shader; any other type is a
/// plain TEV2_MATERIAL that keeps its number.
class TEV2_MATERIAL
    : public UnparsedRecord<kMaterialChunk, TEV2_ENTITY, TEV2_INTERNAL_ANIM_OBJECT, TEV2_CHUNK_OBJECT>
{
public:
    explicit TEV2_MATERIAL(std::uint32_t type) : type_(type) {}

    /// Makes the material of a type; never null.
    static std::unique_ptr<TEV2_MATERIAL> Create(std::uint32_t type);

    virtual std::uint32_t GetType() const { return type_; }

private:
    std::uint32_t type_;
};

class TEV2_STANDARD_MATERIAL final : public TEV2_MATERIAL
{
public:
    static constexpr std::uint32_t kType = 0;
    TEV2_STANDARD_MATERIAL() : TEV2_MATERIAL(kType) {}
};

class TEV2_SHADER_MATERIAL final : public TEV2_MATERIAL
{
public:
    static constexpr std::uint32_t kType = 1;
    TEV2_SHADER_MATERIAL() : TEV2_MATERIAL(kType) {}
};

} // namespace TEV2_LOADER
