#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/format.h"
#include "tev2_loader/records/positional_object.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace TEV2_LOADER
{

/// The most bytes that an object of a chunk may take, 432 where an array is three pointers: a chunk of 8 bytes makes
/// one, and a load takes at most 64 times its file. What is larger goes into a TEV2_BOXED.
inline constexpr std::size_t kMostObjectBytes = 18 * sizeof(std::vector<std::uint8_t>);

/// A body that is either typed, which means read field by field, or of another program's layout: then its bytes are
/// kept and saved unchanged. docs/format.md has the rules.
///
///     #include "tev2_loader/tev2.h"
///
///     for (const auto& light : scene.lights)
///     {
///         if (light && !light->IsTyped())
///             light->Forget(); // discards what another program wrote
///     }
///
/// Of a kept body only what its placed object holds (name, node, properties, bounds) was read, is saved and moves with
/// time. The class's own fields are as constructed; a value that a program gives them is saved only after Forget.
class TEV2_KEPT_BODY
{
public:
    bool IsTyped() const { return kept_ == Kept::Nothing; }

    /// The bytes that are kept; empty when typed.
    std::span<const std::uint8_t> Bytes() const { return bytes_; }

    /// Discards the bytes: from now on the fields are saved.
    void Forget() { *this = {}; }

    /// Whether the fields of the placed object in front of the bytes were read.
    bool HasPlaced() const { return kept_ == Kept::AfterPlaced; }

    /// Keeps bytes as the whole body; `version` is that of the file they come from.
    void Keep(std::vector<std::uint8_t> bytes, float version = kVersion)
    {
        bytes_ = std::move(bytes);
        kept_ = version == kVersion ? Kept::Whole : Kept::WholeOfOtherVersion;
    }

    /// Keeps bytes as what follows the placed object.
    void KeepAfterPlaced(std::vector<std::uint8_t> bytes)
    {
        bytes_ = std::move(bytes);
        kept_ = Kept::AfterPlaced;
    }

    /// False for whole bodies of another version, which nobody could read under the version that they would be saved
    /// as. Their Save writes them and returns false.
    bool CanBeSaved() const { return kept_ != Kept::WholeOfOtherVersion; }

private:
    enum class Kept : std::uint8_t
    {
        Nothing,
        Whole,
        WholeOfOtherVersion,
        AfterPlaced,
    };

    std::vector<std::uint8_t> bytes_;
    Kept kept_ = Kept::Nothing;
};

/// Visits what a record writes: its fields, or the bytes that it keeps instead.
template <typename Record, typename Archive>
void VisitFields(Record& record, Archive& archive)
{
    if constexpr (requires { record.IsTyped(); })
    {
        if (!record.IsTyped())
        {
            if constexpr (std::derived_from<Record, TEV2_POSITIONAL_OBJECT>)
                if (record.HasPlaced())
                    TEV2_POSITIONAL_OBJECT::Fields(record, archive);
            archive.Bytes("body", record.Bytes(), Counts::kSave);
            return;
        }
    }
    record.Fields(record, archive);
}

} // namespace TEV2_LOADER
