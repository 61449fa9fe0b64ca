#pragma once

// On Windows alone: paths and errors of its calls. Everything that opens, examines or renames the same file converts its
// path here.

#include <windows.h>

#include <cerrno>
#include <string>

namespace TEV2_LOADER::file_system
{

/// A path in the bytes of the active code page, as UTF-16.
inline std::wstring WidePath(const std::string& path)
{
    std::wstring wide(path.size(), L'\0');
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(
        CP_ACP, 0, path.data(), static_cast<int>(path.size()), wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

/// The errno value of the last error of the Windows API.
inline int ErrnoOfLastError()
{
    constexpr DWORD kDiskQuotaExceeded = 1295; // not in every version of the headers
    switch (GetLastError())
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
        return ENOENT;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return EACCES;
    case ERROR_WRITE_PROTECT:
        return EROFS;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case kDiskQuotaExceeded:
        return ENOSPC;
    case ERROR_TOO_MANY_OPEN_FILES:
        return EMFILE;
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
        return ENAMETOOLONG;
    case ERROR_INVALID_NAME:
        return EINVAL;
    default:
        return EIO;
    }
}

} // namespace TEV2_LOADER::file_system
