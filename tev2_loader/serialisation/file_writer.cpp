#include "tev2_loader/serialisation/file_writer.h"

#include <algorithm>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kMostPathBytes = 260;
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

std::string Utf8(const std::u16string& units)
{
    std::string text;
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

} // namespace

std::string NarrowFileName(const TEV2_WIDE_STRING& fileName)
{
    const std::u16string& units = fileName.Text();
    std::string path;
    if (std::all_of(units.begin(), units.end(), [](char16_t unit) { return unit <= 0xFF; }))
    {
        for (const char16_t unit : units)
            path += static_cast<char>(static_cast<unsigned char>(unit));
    }
    else
    {
        path = Utf8(units);
    }
    path.resize(std::min(path.size(), kMostPathBytes));
    return path;
}

TEV2_FILE_WRITER::TEV2_FILE_WRITER(const TEV2_WIDE_STRING& name, bool append, bool requireChunkForWrites)
    : requireChunk(requireChunkForWrites), stream(std::make_unique<TEV2_FILE_STREAM>()), fileName(name)
{
    // S: a hint for sequential access where the runtime knows it, ignored elsewhere.
    stream->Open(NarrowFileName(name), append ? "abS" : "wbS");
}

std::uint32_t TEV2_FILE_WRITER::Write(const void* data, std::uint32_t size)
{
    return static_cast<std::uint32_t>(WriteBlock(data, size));
}

std::size_t TEV2_FILE_WRITER::WriteBlock(const void* data, std::size_t size)
{
    if (requireChunk && !chunkOpen)
        return 0;
    return stream->Write(data, size);
}

bool TEV2_FILE_WRITER::WriteU32(std::uint32_t value)
{
    return Write(&value, sizeof value) == sizeof value;
}

bool TEV2_FILE_WRITER::WriteI32(std::int32_t value)
{
    return Write(&value, sizeof value) == sizeof value;
}

bool TEV2_FILE_WRITER::WriteF32(float value)
{
    return Write(&value, sizeof value) == sizeof value;
}

bool TEV2_FILE_WRITER::BeginChunk()
{
    if (chunkOpen)
        return false;
    chunkStart = stream->Tell();
    const std::uint32_t placeholder = 0;
    stream->Write(&placeholder, sizeof placeholder);
    chunkOpen = true;
    return true;
}

bool TEV2_FILE_WRITER::EndChunk()
{
    if (!chunkOpen)
        return false;
    const std::int32_t position = stream->Tell();
    const std::uint32_t size = static_cast<std::uint32_t>(position) - static_cast<std::uint32_t>(chunkStart);
    stream->Seek(chunkStart);
    stream->Write(&size, sizeof size);
    stream->Seek(position);
    chunkOpen = false;
    return true;
}

} // namespace TEV2_LOADER
