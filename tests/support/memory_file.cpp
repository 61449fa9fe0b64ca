#include "tests/support/memory_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace tv2_tests
{

MemoryFile::MemoryFile(std::size_t buffer)
    : stream(fopencookie(this, "wb", {nullptr, WriteSome, Seek, Close}))
{
    std::setvbuf(stream, nullptr, buffer != 0 ? _IOFBF : _IONBF, buffer);
}

void MemoryFile::Clear()
{
    std::rewind(stream);
    bytes.clear();
}

ssize_t MemoryFile::WriteSome(void* file, const char* data, std::size_t size)
{
    MemoryFile& self = *static_cast<MemoryFile*>(file);
    std::size_t taken = std::min(size, self.disk_size - std::min(self.disk_size, self.place_));
    if (taken < size)
        errno = ENOSPC;
    if (self.next_write_fails)
    {
        self.next_write_fails = false;
        taken /= 2;
        errno = EIO;
    }
    if (self.bytes.size() < self.place_ + taken)
        self.bytes.resize(self.place_ + taken);
    if (taken != 0)
        std::memcpy(self.bytes.data() + self.place_, data, taken);
    if (self.keep_journal)
        self.journal.push_back({self.place_, std::vector<std::uint8_t>(data, data + taken)});
    self.place_ += taken;
    return static_cast<ssize_t>(taken);
}

int MemoryFile::Seek(void* file, off64_t* offset, int whence)
{
    MemoryFile& self = *static_cast<MemoryFile*>(file);
    const std::size_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self.place_ : self.bytes.size();
    const off64_t place = static_cast<off64_t>(from) + *offset;
    if (place < 0)
    {
        errno = EINVAL;
        return -1;
    }
    self.place_ = static_cast<std::size_t>(place);
    *offset = place;
    return 0;
}

int MemoryFile::Close(void* file)
{
    if (!static_cast<MemoryFile*>(file)->close_fails)
        return 0;
    errno = EIO;
    return -1;
}

TEV2_LOADER::TEV2_FILE_WRITER WriterInto(MemoryFile& file)
{
    TEV2_LOADER::TEV2_FILE_WRITER writer({}, false, true); // of no name: it opens nothing
    writer.stream->handle = file.stream;
    writer.stream->lastError = 0;
    return writer;
}

} // namespace tv2_tests
