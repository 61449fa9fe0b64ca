#pragma once

// Windows only: converts paths and errors. Everything that opens, examines or renames the same file converts its path
// here.

#include <windows.h>

#include <cerrno>
#include <string>

namespace TEV2_LOADER::file_system
{

/// Text of a code page as UTF-16.
inline std::wstring WideText(const std::string& text, unsigned codePage)
{
    std::wstring wide(text.size(), L'\0');
    wide.resize(
        static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()),
                                                     wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

/// UTF-16 as text of a code page.
inline std::string NarrowText(const std::wstring& wide, unsigned codePage)
{
    std::string text(wide.size() * 4, '\0');
    text.resize(static_cast<std::size_t>(
        WideCharToMultiByte(codePage, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

/// A path as the system's 8-bit calls take it, which is text of the active code page.
inline std::wstring WidePath(const std::string& path)
{
    return WideText(path, CP_ACP);
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
