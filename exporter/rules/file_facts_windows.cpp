#include "exporter/rules/file_facts.h"

#include "tev2_loader/io/detail/windows_path.h"

#include <cerrno>

namespace tev2_exporter
{
namespace
{

class Handle
{
public:
    /// Of a file or a folder, shared with everybody.
    Handle(const std::string& path, DWORD access)
        : handle_(CreateFileW(TEV2_LOADER::file_system::WidePath(path).c_str(), access,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr))
    {
    }
    ~Handle()
    {
        if (*this)
            CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
};

std::uint64_t Joined(DWORD high, DWORD low)
{
    return (std::uint64_t{high} << 32) | low;
}

} // namespace

int ErrnoOfLastError()
{
    return TEV2_LOADER::file_system::ErrnoOfLastError();
}

FileStamp FileStamp::Of(const std::string& path)
{
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    FileStamp stamp;
    const Handle file(path, FILE_READ_ATTRIBUTES);
    if (!file)
    {
        stamp.error = ErrnoOfLastError();
        return stamp;
    }
    stamp.exists = true;
    BY_HANDLE_FILE_INFORMATION status{};
    if (GetFileType(file.Get()) != FILE_TYPE_DISK || !GetFileInformationByHandle(file.Get(), &status))
        return stamp; // a device
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
    return Handle(path, FILE_WRITE_DATA) ? 0 : ErrnoOfLastError();
}

std::string FoldCase(const std::string& path)
{
    std::wstring wide = TEV2_LOADER::file_system::WidePath(path);
    CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    // The active code page may lack the larger letter: UTF-8 has every one.
    std::string folded(wide.size() * 3, '\0');
    folded.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), folded.data(),
                            static_cast<int>(folded.size()), nullptr, nullptr)));
    return folded;
}

} // namespace tev2_exporter
