#pragma once

#include <cstddef>
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

/// The text of UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string Utf8Text(std::u16string_view units);

/// Writes u16 length and the units, without terminator. A string of more than 65,535 units is cut there, so
/// that the record stays readable. Goes straight to the stream, open chunk or not; a short write is only
/// latched there.
void WriteWideString(TEV2_FILE_STREAM& stream, const TEV2_WIDE_STRING& string);

/// Reads what WriteWideString wrote. Where the image ends before the string does, the whole units that are
/// present are kept, the cursor moves to the end and the report gets a warning.
void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_WIDE_STRING& string);

} // namespace TEV2_LOADER
