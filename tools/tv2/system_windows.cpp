#include "tools/tv2/system.h"

#include "tev2_loader/io/windows_path.h"

#include <windows.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <io.h>

using tev2_exporter::ErrnoOfLastError;

std::string ModuleFileName(const std::string& name)
{
    return name + ".dll";
}

std::string ProgramPath()
{
    std::string path(32768, '\0');
    path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

bool ErrorsGoToTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

int MakeWritable(const std::string& path)
{
    const std::wstring wide = TEV2_LOADER::file_system::WidePath(path);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    const bool made = attributes != INVALID_FILE_ATTRIBUTES &&
                      SetFileAttributesW(wide.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    return made ? 0 : ErrnoOfLastError();
}

std::string WhyNotWritable(const std::string& path, std::uint64_t bytes)
{
    const FileStamp stamp = FileStamp::Of(path);
    if (const int obstacle = stamp.exists ? ObstacleToWriting(path) : 0; obstacle != 0)
    {
        return std::strerror(obstacle);
    }
    const std::string::size_type separator = path.find_last_of("/\\");
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    ULARGE_INTEGER left{};
    // What a quota leaves to this user.
    const bool full = GetDiskFreeSpaceExA(folder.c_str(), &left, nullptr, nullptr) && left.QuadPart < bytes;
    return full ? std::strerror(ENOSPC) : std::string();
}

void ReportFileSizeLimit() {} // there is none
