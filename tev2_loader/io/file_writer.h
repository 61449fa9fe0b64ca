#pragma once

#include "tev2_loader/io/file_stream.h"
#include "tev2_loader/io/wide_string.h"
#include "tev2_loader/requirements.h"

#include <cstdint>
#include <memory>
#include <string>

namespace TEV2_LOADER
{

/// Longest path; longer ones are truncated before opening.
inline constexpr std::size_t kMostPathBytes = 260;

/// The 8-bit path of a wide file name. Units up to FF that form valid UTF-8 are the bytes of the path (8-bit names are
/// widened byte by byte); every other name is UTF-16, so that u"caf\u00E9.tv2" and its widened UTF-8 form are one file.
/// UTF-16 becomes text of the active code page on Windows, UTF-8 elsewhere (an unpaired surrogate becomes U+FFFD). At
/// most 260 bytes are kept.
std::string NarrowFileName(const TEV2_WIDE_STRING& fileName);

/// The UTF-8 form, as LoadFile, SaveFile and WriteWholeFile take it, of a path in the bytes of the system's 8-bit calls:
/// converted from the active code page on Windows, the same bytes elsewhere.
std::string Utf8Path(const std::string& systemPath);

/// What every record's Save writes to: one file, framed into chunks that never nest. Writing never throws or
/// stops: a failure is latched in stream->lastError and the rest goes on.
class TEV2_FILE_WRITER
{
public:
    /// Opens the file for writing, at its end when append is set. When that fails, stream->lastError says why
    /// and every write falls short. With requireChunk, guarded writes outside a chunk write nothing.
    /// Throws std::bad_alloc where memory runs out.
    TEV2_FILE_WRITER(const TEV2_WIDE_STRING& name, bool append, bool requireChunkForWrites);

    /// Writes to a stream that is open already; `name` is kept and not opened.
    TEV2_FILE_WRITER(std::unique_ptr<TEV2_FILE_STREAM> openStream, const TEV2_WIDE_STRING& name,
                     bool requireChunkForWrites);

    bool chunkOpen = false;
    std::int32_t chunkStart = 0;
    bool requireChunk;
    std::unique_ptr<TEV2_FILE_STREAM> stream;
    TEV2_WIDE_STRING fileName;

    /// The guarded write: returns the number of bytes written, 0 outside a chunk when requireChunk is set.
    std::uint32_t Write(const void* data, std::uint32_t size);

    /// The guarded write for blocks of any size.
    std::size_t WriteBlock(const void* data, std::size_t size);

    /// Guarded writes of one number; true when all of its 4 or 8 bytes were written.
    bool WriteU32(std::uint32_t value);
    bool WriteI32(std::int32_t value);
    bool WriteU64(std::uint64_t value);
    bool WriteF32(float value);

    /// Opens a chunk: its size field follows here, filled in by EndChunk. False, and nothing done, when one
    /// is open.
    bool BeginChunk();

    /// Closes the chunk: puts its size (size field included) in front and goes back to the end. False, and
    /// nothing done, when none is open.
    bool EndChunk();
};

} // namespace TEV2_LOADER
