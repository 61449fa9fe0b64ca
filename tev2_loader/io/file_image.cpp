#include "tev2_loader/io/file_image.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kTooLarge = std::size_t{1} << 32;

bool Refuse(std::vector<std::uint8_t>& image, std::string& error, const char* reason)
{
    image.clear();
    error = reason;
    return false;
}

} // namespace

bool ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::string& error)
{
    image.clear();
    error.clear();

    std::error_code no_status;
    const auto status = std::filesystem::status(path, no_status);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
        !std::filesystem::is_fifo(status))
        return Refuse(image, error,
                      std::filesystem::is_directory(status) ? std::strerror(EISDIR) : "Not a file");

    const auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return Refuse(image, error, std::strerror(errno));

    if (std::filesystem::is_regular_file(status))
    {
        const std::uintmax_t size = std::filesystem::file_size(path, no_status);
        if (!no_status && size < kTooLarge)
            image.reserve(static_cast<std::size_t>(size));
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0); // the blocks are buffer enough
    std::array<std::uint8_t, 65536> block;
    while (const std::size_t taken = std::fread(block.data(), 1, block.size(), file.get()))
    {
        image.insert(image.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(taken));
        if (image.size() >= kTooLarge)
            return Refuse(image, error, "4 GiB or more, larger than any scene file");
    }
    if (std::ferror(file.get()) != 0)
        return Refuse(image, error, std::strerror(errno));
    return true;
}

} // namespace TEV2_LOADER
