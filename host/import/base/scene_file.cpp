#include "host/import/base/scene_file.h"

#include "text/sha256.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace mobu_host
{
namespace
{

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

bool ReadBytes(const std::string& path, std::string& bytes, std::string& cause)
{
    std::error_code status_error;
    const std::filesystem::file_status status = std::filesystem::status(path, status_error);
    if (status.type() == std::filesystem::file_type::not_found)
    {
        cause = "there is no such file";
        return false;
    }
    // A device might never end; a pipe does.
    if (!std::filesystem::is_regular_file(status) && !std::filesystem::is_fifo(status))
    {
        cause = status_error                            ? status_error.message()
                : std::filesystem::is_directory(status) ? "it is a folder"
                                                        : "it is not a file";
        return false;
    }

    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file)
    {
        cause = std::strerror(errno);
        return false;
    }
    char block[1 << 16];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file.get()))
        bytes.append(block, count);
    if (std::ferror(file.get()))
    {
        cause = std::strerror(errno);
        return false;
    }
    return true;
}

} // namespace

bool ReadSceneFile(const std::string& path, SceneFile& file, std::string& error)
{
    std::string cause;
    file.path = path;
    if (!ReadBytes(path, file.bytes, cause))
    {
        error = "cannot read " + path + ": " + cause;
        return false;
    }
    if (file.bytes.empty())
    {
        error = path + " is empty";
        return false;
    }
    return true;
}

SourceBytes SourceOf(const std::string& path, std::string_view bytes)
{
    const std::span data(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return {path, bytes.size(), HexOf(Sha256Of(data))};
}

} // namespace mobu_host
