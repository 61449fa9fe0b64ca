#include "tev2_loader/serialisation/file_image.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace TEV2_LOADER
{

bool ReadFileImage(const std::string& path, std::vector<std::uint8_t>& image, std::string& error)
{
    image.clear();
    error.clear();

    const auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"));
    if (!file)
    {
        error = std::strerror(errno);
        return false;
    }

    std::array<std::uint8_t, 65536> block;
    while (const std::size_t taken = std::fread(block.data(), 1, block.size(), file.get()))
        image.insert(image.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(taken));
    if (std::ferror(file.get()) != 0)
    {
        error = std::strerror(errno);
        image.clear();
        return false;
    }
    return true;
}

} // namespace TEV2_LOADER
