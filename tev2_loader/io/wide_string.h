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

/// A text of UTF-16 code units, as every name and text of a scene is kept. Units are taken as they come:
/// unpaired surrogates and zero units pass through unchanged.
class TEV2_WIDE_STRING
{
public:
    TEV2_WIDE_STRING() = default;
    explicit TEV2_WIDE_STRING(std::u16string text) : text_(std::move(text)) {}
    explicit TEV2_WIDE_STRING(std::u16string_view text) : text_(text) {}
    explicit TEV2_WIDE_STRING(const char16_t* text) : text_(text) {}

    /// One unit for each byte, bytes from 0x80 up without a sign (0xE9 becomes U+00E9).
    static TEV2_WIDE_STRING FromBytes(std::string_view bytes);

    /// The units without the terminator.
    const std::u16string& Text() const { return text_; }

    /// Number of units with the terminator: 1 for an empty string.
    std::size_t Count() const { return text_.size() + 1; }

    bool operator==(const TEV2_WIDE_STRING&) const = default;

private:
    std::u16string text_;
};

/// The text of UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD. Names of a scene that came from 8-bit text
/// are not UTF-16: ReadableText reads both.
std::string Utf8Text(std::u16string_view units);

/// Whether units are the bytes of UTF-8 text, one unit each, as FromBytes makes them of it. ASCII is.
bool IsWidenedUtf8(std::u16string_view units);

/// The text of such units: their bytes.
std::string NarrowUtf8(std::u16string_view units);

/// A name or text of a file as UTF-8, for people: bytes of UTF-8 where IsWidenedUtf8, else UTF-16.
std::string ReadableText(std::u16string_view units);

/// The most units that a string has in a file.
inline constexpr std::size_t kMostStringUnits = 65535;

/// Bytes that a string takes in a file.
inline std::size_t DiskSize(const TEV2_WIDE_STRING& string)
{
    return sizeof(std::uint16_t) + string.Text().size() * sizeof(char16_t);
}

/// Writes u16 length and the units, without terminator. A string of more than kMostStringUnits is cut there, so
/// that the record stays readable. Goes straight to the stream, open chunk or not; a short write is only
/// latched there.
void WriteWideString(TEV2_FILE_STREAM& stream, const TEV2_WIDE_STRING& string);

/// Reads what WriteWideString wrote. Where the image ends before the string does, the whole units that are
/// present are kept, the cursor moves to the end and the report gets a warning.
void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_WIDE_STRING& string);

} // namespace TEV2_LOADER
