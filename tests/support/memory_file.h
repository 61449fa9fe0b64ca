#pragma once

#include "tev2_loader/io/file_writer.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace tv2_tests
{

/// A file that exists in memory alone, and a disk that can fail. It must outlive its stream.
class MemoryFile
{
public:
    /// One write as it reached the disk.
    struct Write
    {
        std::size_t place;
        std::vector<std::uint8_t> bytes;
    };

    /// With `buffer` bytes of buffer in the stream; without a buffer every write goes straight to the disk.
    explicit MemoryFile(std::size_t buffer);
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// The open stream. Not closed by this class.
    std::FILE* stream;

    /// What is on the disk.
    std::vector<std::uint8_t> bytes;

    bool keep_journal = false;
    std::vector<Write> journal; ///< the writes in their order, when asked for

    std::size_t disk_size = SIZE_MAX; ///< a write beyond it falls short with ENOSPC
    bool next_write_fails = false;    ///< half of the next write is taken, then EIO
    bool close_fails = false;         ///< with EIO

    /// Empty again, for one more save by the same stream.
    void Clear();

private:
    static ssize_t WriteSome(void* file, const char* data, std::size_t size);
    static int Seek(void* file, off64_t* offset, int whence);
    static int Close(void* file);

    std::size_t place_ = 0;
};

/// A writer into the file, which closes its stream at the end.
TEV2_LOADER::TEV2_FILE_WRITER WriterInto(MemoryFile& file);

} // namespace tv2_tests
