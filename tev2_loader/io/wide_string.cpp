#include "tev2_loader/io/wide_string.h"

#include "tev2_loader/io/file_stream.h"
#include "tev2_loader/io/memory_cursor.h"
#include "tev2_loader/io/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace TEV2_LOADER
{

namespace
{

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendUtf8(std::string& text, char32_t point)
{
    const auto append = [&text](char32_t byte)
    { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (point < 0x80)
    {
        append(point);
    }
    else if (point < 0x800)
    {
        append(0xC0 | (point >> 6));
        append(0x80 | (point & 0x3F));
    }
    else if (point < 0x10000)
    {
        append(0xE0 | (point >> 12));
        append(0x80 | ((point >> 6) & 0x3F));
        append(0x80 | (point & 0x3F));
    }
    else
    {
        append(0xF0 | (point >> 18));
        append(0x80 | ((point >> 12) & 0x3F));
        append(0x80 | ((point >> 6) & 0x3F));
        append(0x80 | (point & 0x3F));
    }
}

} // namespace

TEV2_WIDE_STRING TEV2_WIDE_STRING::FromBytes(std::string_view bytes)
{
    std::u16string units;
    units.reserve(bytes.size());
    for (const char byte : bytes)
        units += static_cast<char16_t>(static_cast<unsigned char>(byte));
    return TEV2_WIDE_STRING(std::move(units));
}

std::string Utf8Text(std::u16string_view units)
{
    std::string text;
    text.reserve(units.size());
    for (std::size_t index = 0; index < units.size(); ++index)
    {
        char32_t point = units[index];
        if (IsHighSurrogate(point) && index + 1 < units.size() && IsLowSurrogate(units[index + 1]))
        {
            point = 0x10000 + ((point - 0xD800) << 10) + (char32_t{units[index + 1]} - 0xDC00);
            ++index;
        }
        else if (IsHighSurrogate(point) || IsLowSurrogate(point))
        {
            point = kReplacement;
        }
        AppendUtf8(text, point);
    }
    return text;
}

bool IsWidenedUtf8(std::u16string_view units)
{
    return IsUtf8(units);
}

std::string NarrowUtf8(std::u16string_view units)
{
    std::string text;
    text.reserve(units.size());
    for (const char16_t unit : units)
        text += static_cast<char>(static_cast<unsigned char>(unit));
    return text;
}

std::string ReadableText(std::u16string_view units)
{
    return IsWidenedUtf8(units) ? NarrowUtf8(units) : Utf8Text(units);
}

void WriteWideString(TEV2_FILE_STREAM& stream, const TEV2_WIDE_STRING& string)
{
    const std::size_t length = std::min(string.Text().size(), kMostStringUnits);
    const std::uint16_t count = static_cast<std::uint16_t>(length);
    stream.Write(&count, sizeof count);
    stream.Write(string.Text().data(), length * sizeof(char16_t));
}

namespace
{

/// The length of a string, and the units of it that the image has.
struct StringHead
{
    std::uint32_t declared;
    std::uint32_t present;
};

/// False, and the cursor failed, where a body ends inside the string.
bool ReadHead(TEV2_MEMORY_CURSOR& cursor, StringHead& head)
{
    head.declared = cursor.ReadU16();
    head.present = static_cast<std::uint32_t>(
        std::min<std::size_t>(head.declared, cursor.Remaining() / sizeof(char16_t)));
    if (head.present == head.declared || !cursor.Strict())
        return true;
    return cursor.FailForBytes(head.declared * sizeof(char16_t));
}

void WarnOfEnd(TEV2_MEMORY_CURSOR& cursor, const StringHead& head)
{
    cursor.current = cursor.end;
    cursor.Warn(TEV2_LOAD_CODE::StringClamped, std::to_string(head.declared) + " units",
                std::to_string(head.present) + " units");
}

/// Continues after the units.
void EndString(TEV2_MEMORY_CURSOR& cursor, const StringHead& head)
{
    cursor.current += head.present * sizeof(char16_t);
    if (head.present != head.declared) [[unlikely]]
        WarnOfEnd(cursor, head);
}

} // namespace

void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_WIDE_STRING& string)
{
    StringHead head{};
    if (!ReadHead(cursor, head) || !cursor.TakeMemory(head.present * sizeof(char16_t)))
        return;
    string.text_.resize(head.present);
    if (head.present != 0)
        std::memcpy(string.text_.data(), cursor.current, head.present * sizeof(char16_t));
    EndString(cursor, head);
}

void ReadWideString(TEV2_MEMORY_CURSOR& cursor, TEV2_VIEW<char16_t>& string)
{
    StringHead head{};
    if (!ReadHead(cursor, head))
        return;
    string = {cursor.current, head.present};
    EndString(cursor, head);
}

} // namespace TEV2_LOADER
