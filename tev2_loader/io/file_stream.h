#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace TEV2_LOADER
{

/// A standard I/O stream that remembers errors. No operation throws.
class TEV2_FILE_STREAM
{
public:
    TEV2_FILE_STREAM() = default;
    TEV2_FILE_STREAM(const TEV2_FILE_STREAM&) = delete;
    TEV2_FILE_STREAM& operator=(const TEV2_FILE_STREAM&) = delete;

    /// Closes the stream when it is open.
    ~TEV2_FILE_STREAM();

    /// The open stream, null when closed.
    std::FILE* handle = nullptr;

    /// Latched by the last failed operation: an errno value, or after a short write 38 (end of file) or the stream's
    /// error indicator. Only a successful Open or Close resets it to 0.
    std::int32_t lastError = 0;

    /// Closes the stream if it is open and opens a file with a large buffer. `path` is passed to the system's 8-bit
    /// call. On failure: false, errno latched, handle null.
    bool Open(const std::string& path, const char* mode);

    /// Closes the stream if it is open and takes ownership of an open file, with the same buffer.
    void Take(std::FILE* file);

    /// The errno value of the first failed operation since the file was opened, 0 if none. Unlike lastError it survives
    /// Close and gives the cause of short writes.
    int FirstError() const { return firstError_; }

    /// Writes `size` bytes and returns how many were accepted; fewer latch the error (EBADF on a closed stream).
    /// Because of the buffer, a full disk may only be reported by a later Write, Seek, Flush or Close.
    std::size_t Write(const void* data, std::size_t size);

    /// The position from the start; -1 and errno latched on failure, EFBIG beyond 2 GiB.
    std::int32_t Tell();

    /// Seeks from the start, or from the end if the position is negative. False and errno latched on failure.
    bool Seek(std::int32_t position);

    /// Writes the buffer to the system. False and errno latched on failure.
    bool Flush();

    /// Closes the file. True if all its bytes reached the system, or if it was closed already.
    bool Close();

    /// Whether the file was opened for appending: then every write goes to its end, whatever Seek did.
    bool Appends() const { return appends_; }

private:
    bool Latch(std::int32_t error);

    std::unique_ptr<char[]> buffer_; ///< the stream's while handle is open
    int firstError_ = 0;
    bool appends_ = false;
};

} // namespace TEV2_LOADER
