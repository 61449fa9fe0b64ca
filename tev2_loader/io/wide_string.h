#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace TEV2_LOADER
{

class TEV2_FILE_STREAM;
class TEV2_MEMORY_CURSOR;

template <typename Element>
struct TEV2_VIEW;

/// UTF-16 code units, the form of every name and text of a scene. Units are not checked: unpaired surrogates and zeros
/// pass through unchanged. names.h converts from and to UTF-8.
class TEV2_WIDE_STRING
{
public:
    TEV2_WIDE_STRING() = default;
    explicit TEV2_WIDE_STRING(std::u16string text) : text_(std::move(text)) {}
    explicit TEV2_WIDE_STRING(std::u16string_view text) : text_(text) {}
    explicit TEV2_WIDE_STRING(const char16_t* text) : text_(text) {}

    /// One unit per byte (0xE9 becomes U+00E9).
    static TEV2_WIDE_STRING FromBytes(std::string_view bytes);

    /// The units without the terminator.
    const std::u16string& Text() const { return text_; }

    /// Number of units with the terminator: 1 for an empty string.
    std::size_t Count() const { return text_.size() + 1; }

    bool operator==(const TEV2_WIDE_STRING&) const = default;

private:
    friend void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_WIDE_STRING& string);

    std::u16string text_;
};

/// UTF-16 as UTF-8; unpaired surrogates become U+FFFD. Names that came from 8-bit text are not UTF-16: ReadableText
/// handles both.
std::string Utf8Text(std::u16string_view units);

/// Whether the units are bytes of UTF-8, one per unit, as FromBytes makes them. True for ASCII.
bool IsWidenedUtf8(std::u16string_view units);

/// The bytes of such units.
std::string NarrowUtf8(std::u16string_view units);

/// A name or text of a scene as UTF-8: its bytes if IsWidenedUtf8, otherwise converted from UTF-16.
std::string ReadableText(std::u16string_view units);

/// Most units of a string in a file.
inline constexpr std::size_t kMostStringUnits = 65535;

/// Bytes that a string takes in a file.
inline std::size_t DiskSize(const TEV2_WIDE_STRING& string)
{
    return sizeof(std::uint16_t) + string.Text().size() * sizeof(char16_t);
}

/// Writes u16 length and the units, without terminator, truncated to kMostStringUnits. Not guarded: writes to the
/// stream whether or not a chunk is open; a short write is only latched there.
void WriteWideString(TEV2_FILE_STREAM& stream, const TEV2_WIDE_STRING& string);

/// Reads what WriteWideString wrote. If the image ends inside the string, the complete units are kept, the cursor
/// moves to the end and a warning is reported.
void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_WIDE_STRING& string);

/// The same without a copy: where the units are.
void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_VIEW<char16_t>& string);

} // namespace TEV2_LOADER
