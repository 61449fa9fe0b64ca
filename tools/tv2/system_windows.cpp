#include "tools/tv2/system.h"

#include <windows.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <io.h>
#include <utility>

namespace
{

class Handle
{
public:
    /// Of a file or a folder, shared with everybody.
    Handle(const std::string& path, DWORD access)
        : handle_(CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr))
    {
    }
    ~Handle()
    {
        if (*this)
        {
            CloseHandle(handle_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

int LastErrno()
{
    switch (GetLastError())
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return EACCES;
    case ERROR_WRITE_PROTECT:
        return EROFS;
    case ERROR_FILENAME_EXCED_RANGE:
        return ENAMETOOLONG;
    case ERROR_INVALID_NAME:
        return EINVAL;
    default:
        return EIO;
    }
}

std::uint64_t Joined(DWORD high, DWORD low)
{
    return (std::uint64_t{high} << 32) | low;
}

} // namespace

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

FileStamp FileStamp::Of(const std::string& path)
{
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    FileStamp stamp;
    const Handle file(path, FILE_READ_ATTRIBUTES);
    if (!file)
    {
        stamp.error = LastErrno();
        return stamp;
    }
    stamp.exists = true;
    BY_HANDLE_FILE_INFORMATION status{};
    if (GetFileType(file.Get()) != FILE_TYPE_DISK || !GetFileInformationByHandle(file.Get(), &status))
    {
        return stamp; // a device
    }
    stamp.folder = (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    stamp.regular = !stamp.folder;
    stamp.read_only = stamp.regular && (status.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    stamp.device = status.dwVolumeSerialNumber;
    stamp.inode = Joined(status.nFileIndexHigh, status.nFileIndexLow);
    stamp.size = static_cast<std::int64_t>(Joined(status.nFileSizeHigh, status.nFileSizeLow));
    const std::uint64_t ticks =
        Joined(status.ftLastWriteTime.dwHighDateTime, status.ftLastWriteTime.dwLowDateTime);
    stamp.seconds = static_cast<std::int64_t>(ticks / kTicksPerSecond);
    stamp.nanoseconds = static_cast<std::int64_t>(ticks % kTicksPerSecond * 100);
    return stamp;
}

int ObstacleToWriting(const std::string& path)
{
    static_assert(FILE_WRITE_DATA == FILE_ADD_FILE, "one right for files and folders");
    return Handle(path, FILE_WRITE_DATA) ? 0 : LastErrno();
}

int MakeWritable(const std::string& path)
{
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const bool made = attributes != INVALID_FILE_ATTRIBUTES &&
                      SetFileAttributesA(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    return made ? 0 : LastErrno();
}

std::string WhyNotWritable(const std::string& path)
{
    if (const int obstacle = ObstacleToWriting(path); obstacle != 0)
    {
        return std::strerror(obstacle);
    }
    const std::string::size_type separator = path.find_last_of("/\\");
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    ULARGE_INTEGER left{};
    const bool full = FileStamp::Of(path).regular &&
                      GetDiskFreeSpaceExA(folder.c_str(), &left, nullptr, nullptr) && left.QuadPart == 0;
    return full ? std::strerror(ENOSPC) : std::string();
}
