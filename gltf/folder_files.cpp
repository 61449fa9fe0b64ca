#include "gltf/folder_files.h"

#include "gltf/error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace gltf
{
namespace
{

namespace fs = std::filesystem;

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

// Of text in UTF-8, which is how JSON has it.
fs::path FromUtf8(const std::string& text)
{
    return fs::path(std::u8string(text.begin(), text.end()));
}

// Opening a pipe would wait for somebody at its other end.
OpenFile OpenRegularFile(const fs::path& path)
{
#ifdef _WIN32
    if (!fs::is_regular_file(path))
        throw Error("is not a regular file");
    OpenFile file(_wfopen(path.c_str(), L"rb"));
#else
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    struct stat status = {};
    if (descriptor >= 0 && (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)))
    {
        close(descriptor);
        throw Error("is not a regular file");
    }
    OpenFile file(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"));
#endif
    if (!file)
        throw Error(std::string("cannot be opened: ") + std::strerror(errno));
    return file;
}

} // namespace

std::string FolderFiles::Read(const std::string& path, std::size_t most_bytes)
{
    std::error_code error;
    const fs::path folder = fs::canonical(folder_.empty() ? fs::path(".") : folder_, error);
    const fs::path file = error ? fs::path() : fs::canonical(folder / FromUtf8(path), error);
    if (error)
        throw Error("cannot be opened: " + error.message());
    if (std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first != folder.end())
        throw Error("leads out of the scene's folder; only files at or below it are read");

    const OpenFile open_file = OpenRegularFile(file);
    std::string bytes;
    char block[1 << 16];
    while (bytes.size() < most_bytes)
    {
        const std::size_t count =
            std::fread(block, 1, std::min(sizeof block, most_bytes - bytes.size()), open_file.get());
        if (count == 0)
            break;
        bytes.append(block, count);
    }
    if (std::ferror(open_file.get()))
        throw Error(std::string("cannot be read: ") + std::strerror(errno));
    return bytes;
}

} // namespace gltf
