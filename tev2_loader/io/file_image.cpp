#include "tev2_loader/io/file_image.h"

#include "tev2_loader/io/detail/file_system.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace TEV2_LOADER
{

namespace
{

constexpr std::uint64_t kTooLarge = std::uint64_t{1} << 32;

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

struct OpenFile
{
    File file{nullptr, std::fclose};
    std::uint64_t size = 0; ///< 0: not known
};

/// Opens a regular file or a pipe, and makes room for what is in it.
Status Open(const std::string& path, std::uint64_t most, bool watched, OpenFile& open,
            std::vector<std::uint8_t>& image)
{
    namespace fs = std::filesystem;
    const fs::path native = file_system::NativePath(path);
    std::error_code ignored;
    const fs::file_status status = fs::status(native, ignored);
    if (fs::is_directory(status))
        return Status::FromErrno(EISDIR);
    if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_fifo(status))
        return Status::Failure("Not a file");
    open.file.reset(watched ? file_system::OpenWithoutWaiting(path) : file_system::OpenForReading(path));
    if (!open.file)
        return Status::FromErrno(errno);
    if (fs::is_regular_file(status))
    {
        const std::uintmax_t size = fs::file_size(native, ignored);
        if (!ignored)
            open.size = size;
        if (open.size <= most)
            image.reserve(static_cast<std::size_t>(open.size));
    }
    return {};
}

Status Read(const std::string& path, std::uint64_t most, const ReadWatch& watch,
            std::vector<std::uint8_t>& image)
{
    OpenFile open;
    if (Status opened = Open(path, most, watch != nullptr, open, image); !opened)
        return opened;
    std::FILE* const file = open.file.get();
    std::setvbuf(file, nullptr, _IONBF, 0); // the blocks are buffer enough
    std::array<std::uint8_t, 65536> block;
    for (;;)
    {
        if (watch && !watch(image.size(), open.size))
            return Status::Failure("cancelled");
        if (watch && !file_system::AwaitBytes(file))
            continue;
        const std::size_t taken = std::fread(block.data(), 1, block.size(), file);
        const int error = std::ferror(file) != 0 ? errno : 0;
        if (image.size() + taken > most)
            return Status::Failure(most == kTooLarge - 1 ? "4 GiB or more, larger than any scene file"
                                                         : "larger than " + std::to_string(most) + " bytes");
        image.insert(image.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(taken));
        if (watch && error == EAGAIN) // a pipe whose next bytes are still to come
            std::clearerr(file);
        else if (error != 0 || taken == 0)
            return error != 0 ? Status::FromErrno(error) : Status();
    }
}

} // namespace

Status ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::size_t mostBytes,
                     const ReadWatch& watch)
{
    image.clear();
    Status read = Read(path, mostBytes != 0 ? mostBytes : kTooLarge - 1, watch, image);
    if (!read)
        image.clear();
    return read;
}

} // namespace TEV2_LOADER
