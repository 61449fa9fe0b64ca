#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace TEV2_LOADER
{

/// A standard I/O stream with a memory for errors. No operation throws.
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

    /// What the last failing operation left behind: an errno value, or after a short write 38 (end of file)
    /// or the stream's error indicator. Only a successful Open or Close sets it back to 0.
    std::int32_t lastError = 0;

    /// Opens a file with a large buffer; a stream that is open is closed first. False, errno latched and
    /// handle null when that fails.
    bool Open(const std::string& path, const char* mode);

    /// Takes over a file that is open already, with the same buffer; one that was open is closed first.
    void Take(std::FILE* file);

    /// The errno value of the first operation that failed since the file was opened, 0 when none did. Unlike
    /// lastError it outlives Close and names the cause of short writes.
    int FirstError() const { return firstError_; }

    /// Writes size bytes and returns how many were taken. Less than size: the error is latched (EBADF on a
    /// closed stream). Because of the buffer a full disk may show only in a later Write, Seek, Flush or
    /// Close.
    std::size_t Write(const void* data, std::size_t size);

    /// The position from the start; -1 and errno latched on failure, EFBIG beyond 2 GiB.
    std::int32_t Tell();

    /// Goes to a position from the start, or from the end when it is negative. False and errno latched on
    /// failure.
    bool Seek(std::int32_t position);

    /// Hands the buffer to the system. False and errno latched on failure.
    bool Flush();

    /// Closes the file. True when all its bytes reached the system (or when it was closed already).
    bool Close();

    /// Whether the file was opened for appending: every write goes to its end then, wherever Seek went.
    bool Appends() const { return appends_; }

private:
    bool Latch(std::int32_t error);

    std::unique_ptr<char[]> buffer_; ///< the stream's while handle is open
    int firstError_ = 0;
    bool appends_ = false;
};

} // namespace TEV2_LOADER
