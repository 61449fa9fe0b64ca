#include "tev2_loader/io/file_stream.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kBufferSize = std::size_t{1} << 18;
constexpr std::int32_t kEndOfFileError = 38;

std::int64_t Position(std::FILE* handle)
{
#if defined(_WIN32)
    return _ftelli64(handle); // long has 32 bits there
#else
    return std::ftell(handle);
#endif
}

} // namespace

TEV2_FILE_STREAM::~TEV2_FILE_STREAM()
{
    Close();
}

bool TEV2_FILE_STREAM::Latch(std::int32_t error)
{
    if (firstError_ == 0)
        firstError_ = errno;
    lastError = error;
    return false;
}

bool TEV2_FILE_STREAM::Open(const std::string& path, const char* mode)
{
    Close();
    firstError_ = 0;
    std::FILE* const file = std::fopen(path.c_str(), mode);
    if (file == nullptr)
        return Latch(errno);
    Take(file);
    appends_ = std::strchr(mode, 'a') != nullptr;
    return true;
}

void TEV2_FILE_STREAM::Take(std::FILE* file)
{
    Close();
    handle = file;
    appends_ = false;
    firstError_ = 0;
    if (!buffer_)
        buffer_.reset(new (std::nothrow) char[kBufferSize]); // without it the stream makes do with its own
    if (buffer_)
        std::setvbuf(handle, buffer_.get(), _IOFBF, kBufferSize);
    lastError = 0;
}

std::size_t TEV2_FILE_STREAM::Write(const void* data, std::size_t size)
{
    if (size == 0)
        return 0;
    if (handle == nullptr)
    {
        errno = EBADF;
        Latch(EBADF);
        return 0;
    }
    const std::size_t written = std::fwrite(data, 1, size, handle);
    if (written < size)
        Latch(std::feof(handle) != 0 ? kEndOfFileError : std::ferror(handle));
    return written;
}

std::int32_t TEV2_FILE_STREAM::Tell()
{
    if (handle == nullptr)
    {
        Latch(EBADF);
        return -1;
    }
    const std::int64_t position = Position(handle);
    if (position < 0)
    {
        Latch(errno);
        return -1;
    }
    if (position > INT32_MAX)
    {
        errno = EFBIG;
        Latch(EFBIG);
        return -1;
    }
    return static_cast<std::int32_t>(position);
}

bool TEV2_FILE_STREAM::Seek(std::int32_t position)
{
    if (handle == nullptr)
        return Latch(EBADF);
    if (std::fseek(handle, position, position < 0 ? SEEK_END : SEEK_SET) != 0)
        return Latch(errno);
    return true;
}

bool TEV2_FILE_STREAM::Flush()
{
    if (handle == nullptr)
        return Latch(EBADF);
    if (std::fflush(handle) != 0)
        return Latch(errno);
    return true;
}

bool TEV2_FILE_STREAM::Close()
{
    if (handle == nullptr)
        return true;
    const bool closed = std::fclose(handle) == 0;
    handle = nullptr;
    if (!closed)
        return Latch(errno);
    lastError = 0;
    return true;
}

} // namespace TEV2_LOADER
