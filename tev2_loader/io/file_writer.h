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

/// The 8-bit path of a wide file name. Units up to FF that form valid UTF-8 are the bytes of the path (8-bit names
/// are widened byte by byte); every other name is UTF-16, so u"caf\u00E9.tv2" and its widened UTF-8 form are the same
/// file. UTF-16 becomes the active code page on Windows, UTF-8 elsewhere (unpaired surrogates become U+FFFD).
/// Truncated to 260 bytes.
std::string NarrowFileName(const TEV2_WIDE_STRING& fileName);

/// A path in the encoding of the system's 8-bit calls as UTF-8, for LoadFile, SaveFile and WriteWholeFile: converted
/// from the active code page on Windows, unchanged elsewhere.
std::string Utf8Path(const std::string& systemPath);

/// What every record's Save writes to: one file of chunks, which never nest. Writing neither throws nor stops: a
/// failure is latched in stream->lastError and writing continues.
class TEV2_FILE_WRITER
{
public:
    /// Opens the file for writing, or for appending. On failure stream->lastError gives the error and every write is
    /// short. With requireChunk, guarded writes outside a chunk write nothing. Throws std::bad_alloc.
    TEV2_FILE_WRITER(const TEV2_WIDE_STRING& name, bool append, bool requireChunkForWrites);

    /// Writes to an open stream; `name` is only stored.
    TEV2_FILE_WRITER(std::unique_ptr<TEV2_FILE_STREAM> openStream, const TEV2_WIDE_STRING& name,
                     bool requireChunkForWrites);

    bool chunkOpen = false;
    std::int32_t chunkStart = 0;
    bool requireChunk;
    std::unique_ptr<TEV2_FILE_STREAM> stream;
    TEV2_WIDE_STRING fileName;

    /// Why the Save of a record is false although all of it was written: a field that does not hold what the format
    /// needs there.
    struct Refusal
    {
        std::string field;
        std::string reason; ///< in words; empty: nothing was refused
    };
    Refusal refusal;

    /// Notes a refusal if it is the first. Returns false.
    bool Refuse(std::string field, std::string reason);

    /// Guarded write: returns the number of bytes written, 0 outside a chunk if requireChunk is set.
    std::uint32_t Write(const void* data, std::uint32_t size);

    /// Guarded write of a block of any size.
    std::size_t WriteBlock(const void* data, std::size_t size);

    /// Guarded writes of one number; true when all of its 4 or 8 bytes were written.
    bool WriteU32(std::uint32_t value);
    bool WriteI32(std::int32_t value);
    bool WriteU64(std::uint64_t value);
    bool WriteF32(float value);

    /// Begins a chunk by writing its size field, which EndChunk fills in. False, without effect, when a chunk is open.
    bool BeginChunk();

    /// Ends the chunk: writes its size, size field included, into the size field. False, without effect, when no
    /// chunk is open.
    bool EndChunk();
};

} // namespace TEV2_LOADER
