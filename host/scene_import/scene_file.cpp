#include "host/scene_import/scene_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

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
    // A device could deliver for ever; a pipe ends.
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

// Text files begin with a comment that says so, mostly.
bool IsFbx(std::string_view bytes)
{
    return bytes.starts_with("Kaydara FBX Binary") || bytes.starts_with("; FBX") ||
           bytes.substr(0, 4096).find("FBXHeaderExtension") != std::string_view::npos;
}

std::optional<SceneFormat> FormatOf(std::string_view bytes)
{
    if (bytes.starts_with("glTF"))
        return SceneFormat::GltfBinary;
    if (IsFbx(bytes))
        return SceneFormat::Fbx;
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
    if (bytes.starts_with("HIERARCHY"))
        return SceneFormat::Bvh;
    if (bytes.starts_with("{"))
        return SceneFormat::GltfText;
    if (bytes.starts_with("<") && bytes.substr(0, 1 << 16).find("<COLLADA") != std::string_view::npos)
        return SceneFormat::Collada;
    return std::nullopt;
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
    if (const std::optional<SceneFormat> format = FormatOf(file.bytes))
    {
        file.format = *format;
        return true;
    }

    error = path + " is not a scene that can be read (FBX, BVH, glTF, GLB and Collada are)";
    return false;
}

} // namespace mobu_host
