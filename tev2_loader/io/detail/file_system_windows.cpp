#include "tev2_loader/io/detail/file_system.h"

#include "tev2_loader/io/detail/part_file_name.h"
#include "tev2_loader/io/detail/windows_path.h"

#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <vector>

namespace TEV2_LOADER::file_system
{

namespace
{

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A path as the system takes it.
std::wstring Utf16Path(const std::string& path)
{
    return WideText(path, CP_UTF8);
}

/// The other way; empty when the path is not UTF-16.
std::string Narrow(const std::wstring& wide)
{
    std::string path = NarrowText(wide, CP_UTF8);
    return Utf16Path(path) == wide ? path : std::string();
}

class Handle
{
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle()
    {
        if (IsOpen())
            CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE Get() const { return handle_; }
    bool IsOpen() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }

    /// As a stream that owns it; null, and errno set, on failure.
    std::FILE* Stream()
    {
        const int number = _open_osfhandle(reinterpret_cast<intptr_t>(handle_), _O_BINARY | _O_WRONLY);
        if (number < 0)
            return nullptr;
        handle_ = INVALID_HANDLE_VALUE;
        std::FILE* const stream = _fdopen(number, "wb");
        if (!stream)
            _close(number);
        return stream;
    }

private:
    HANDLE handle_;
};

/// The path of an open file without the prefix of long paths; empty when it has none.
std::string FinalPath(HANDLE file)
{
    std::wstring path(32768, L'\0');
    path.resize(GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), 0));
    const std::wstring network = L"\\\\?\\UNC\\";
    const std::wstring local = L"\\\\?\\";
    if (path.starts_with(network))
        return Narrow(L"\\\\" + path.substr(network.size()));
    return path.starts_with(local) ? Narrow(path.substr(local.size())) : std::string();
}

bool IsGone(unsigned long process)
{
    const Handle handle(OpenProcess(SYNCHRONIZE, FALSE, process));
    return handle.IsOpen() ? WaitForSingleObject(handle.Get(), 0) == WAIT_OBJECT_0
                           : GetLastError() == ERROR_INVALID_PARAMETER;
}

} // namespace

Target Examine(const std::string& path)
{
    Target target;
    target.path = path;
    const std::wstring wide = Utf16Path(path);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return target; // what else is against it shows when it is opened
    target.exists = true;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return target;
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) // a superuser could open it
    {
        target.error = EACCES;
        return target;
    }
    const Handle file(CreateFileW(wide.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.IsOpen())
    {
        target.error = ErrnoOfLastError();
        return target;
    }
    target.replaceable = GetFileType(file.Get()) == FILE_TYPE_DISK;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
    {
        const std::string final_path = FinalPath(file.Get());
        target.replaceable = target.replaceable && !final_path.empty();
        if (target.replaceable)
            target.path = final_path;
    }
    return target;
}

std::filesystem::path NativePath(const std::string& path)
{
    return Utf16Path(path);
}

std::FILE* OpenForReading(const std::string& path)
{
    return _wfopen(Utf16Path(path).c_str(), L"rb");
}

std::FILE* OpenWithoutWaiting(const std::string& path)
{
    return OpenForReading(path);
}

bool AwaitBytes(std::FILE*)
{
    return true;
}

std::size_t FolderLength(const std::string& path)
{
    const std::size_t separator = path.find_last_of("/\\:");
    return separator == std::string::npos ? 0 : separator + 1;
}

std::FILE* CreateNew(const std::string& path, const Target&)
{
    Handle file(CreateFileW(Utf16Path(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file.IsOpen())
    {
        errno = ErrnoOfLastError();
        return nullptr;
    }
    return file.Stream();
}

std::FILE* OpenForWriting(const std::string& path)
{
    Handle file(CreateFileW(Utf16Path(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN,
                            nullptr));
    if (!file.IsOpen())
    {
        errno = ErrnoOfLastError();
        return nullptr;
    }
    if (GetFileType(file.Get()) == FILE_TYPE_PIPE)
    {
        errno = ESPIPE;
        return nullptr;
    }
    return file.Stream();
}

bool PutInPlace(const std::string& part, const Target& target)
{
    const std::wstring from = Utf16Path(part);
    const std::wstring to = Utf16Path(target.path);
    // Attributes, times of creation and rights are those of the file that is replaced.
    constexpr DWORD kKeepGoing = REPLACEFILE_IGNORE_MERGE_ERRORS;
    if ((target.exists && ReplaceFileW(to.c_str(), from.c_str(), nullptr, kKeepGoing, nullptr, nullptr)) ||
        MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING))
        return true;
    errno = ErrnoOfLastError();
    return false;
}

void Remove(const std::string& path)
{
    DeleteFileW(Utf16Path(path).c_str());
}

unsigned long ProcessId()
{
    return GetCurrentProcessId();
}

void RemoveAbandoned(const std::string& folder, const std::string& prefix, const std::string& suffix)
{
    std::vector<std::string> found;
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(Utf16Path(folder + prefix + "*" + suffix).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do
    {
        const std::string name = Narrow(entry.cFileName);
        const auto process = ProcessInName(name, prefix, suffix);
        // Numbers of processes are used again; a file that this one is writing cannot be deleted.
        if (process && (*process == ProcessId() || IsGone(*process)))
            found.push_back(folder + name);
    } while (FindNextFileW(search, &entry));
    FindClose(search);
    for (const std::string& path : found)
        Remove(path);
}

} // namespace TEV2_LOADER::file_system
