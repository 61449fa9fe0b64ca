#include "exporter/platform/platform.h"

#include "tev2_loader/io/detail/windows_path.h"

#include <windows.h>

namespace tev2_exporter::platform
{
namespace
{

/// UTF-16 on both sides; only the names of the type differ.
const wchar_t* Wide(const std::u16string& text)
{
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

} // namespace

UtcTime CurrentUtcTime()
{
    SYSTEMTIME now{};
    GetSystemTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

std::optional<std::string> UserName()
{
    char name[64];
    DWORD size = sizeof name; // a longer name fails
    if (!GetUserNameA(name, &size))
        return std::nullopt;
    return name;
}

bool IsReadOnly(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(TEV2_LOADER::file_system::WidePath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

void MakeWritable(const std::string& path)
{
    SetFileAttributesW(TEV2_LOADER::file_system::WidePath(path).c_str(), FILE_ATTRIBUTE_NORMAL);
}

bool AskOkCancel(const std::u16string& caption, const std::u16string& text)
{
    return MessageBoxW(nullptr, Wide(text), Wide(caption), MB_OKCANCEL) == IDOK;
}

} // namespace tev2_exporter::platform
