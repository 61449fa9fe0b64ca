#include "tev2_loader/io/file_writer.h"

#include <algorithm>
#include <utility>

#if defined(_WIN32)
#include "tev2_loader/io/detail/windows_path.h"
#endif

namespace TEV2_LOADER
{

namespace
{

/// Text as the system's 8-bit calls take it.
std::string SystemText(const std::u16string& units)
{
#if defined(_WIN32)
    return file_system::NarrowText(std::wstring(units.begin(), units.end()), CP_ACP);
#else
    return Utf8Text(units);
#endif
}

} // namespace

std::string NarrowFileName(const TEV2_WIDE_STRING& fileName)
{
    const std::u16string& units = fileName.Text();
    std::string path = IsWidenedUtf8(units) ? NarrowUtf8(units) : SystemText(units);
    path.resize(std::min(path.size(), kMostPathBytes));
    return path;
}

std::string Utf8Path(const std::string& systemPath)
{
#if defined(_WIN32)
    return file_system::NarrowText(file_system::WidePath(systemPath), CP_UTF8);
#else
    return systemPath;
#endif
}

TEV2_FILE_WRITER::TEV2_FILE_WRITER(const TEV2_WIDE_STRING& name, bool append, bool requireChunkForWrites)
    : requireChunk(requireChunkForWrites), stream(std::make_unique<TEV2_FILE_STREAM>()), fileName(name)
{
    // S: a hint for sequential access where the runtime knows it, ignored elsewhere.
    stream->Open(NarrowFileName(name), append ? "abS" : "wbS");
}

TEV2_FILE_WRITER::TEV2_FILE_WRITER(std::unique_ptr<TEV2_FILE_STREAM> openStream, const TEV2_WIDE_STRING& name,
                                   bool requireChunkForWrites)
    : requireChunk(requireChunkForWrites), stream(std::move(openStream)), fileName(name)
{
}

bool TEV2_FILE_WRITER::Refuse(std::string field, std::string reason)
{
    if (refusal.reason.empty())
        refusal = {std::move(field), std::move(reason)};
    return false;
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

bool TEV2_FILE_WRITER::WriteU64(std::uint64_t value)
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
