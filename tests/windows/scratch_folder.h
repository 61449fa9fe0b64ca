#pragma once

#include "tev2_loader/io/wide_string.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tev2_tests
{

inline const wchar_t* Wide(const std::u16string& text)
{
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

// A folder of this test's own, under a name that needs more than ASCII where `name` does. The files in it are removed
// with it.
class ScratchFolder
{
public:
    explicit ScratchFolder(const std::u16string& name = u"scratch")
    {
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string own = std::string(test->test_suite_name()) + "." + test->name() + ".";
        path_ = std::u16string(reinterpret_cast<const char16_t*>(temporary)) +
                std::u16string(own.begin(), own.end()) + name + u"\\";
        RemoveFiles();
        CreateDirectoryW(Wide(path_), nullptr);
    }
    ~ScratchFolder()
    {
        RemoveFiles();
        RemoveDirectoryW(Wide(path_));
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::u16string Path(const std::u16string& name) const { return path_ + name; }

    // The path in the 8-bit code page.
    std::string BytePath(const std::u16string& name) const
    {
        const std::u16string path = Path(name);
        char bytes[1024] = {};
        BOOL replaced = FALSE;
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, Wide(path), -1, bytes, sizeof bytes, nullptr,
                            &replaced);
        EXPECT_FALSE(replaced) << "not a path of the code page";
        return bytes;
    }

    std::string Utf8Path(const std::u16string& name) const { return TEV2_LOADER::Utf8Text(Path(name)); }

    std::u16string Make(const std::u16string& name, const std::string& content = "old",
                        DWORD attributes = FILE_ATTRIBUTE_NORMAL) const
    {
        const std::u16string path = Path(name);
        const HANDLE file =
            CreateFileW(Wide(path), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        EXPECT_NE(file, INVALID_HANDLE_VALUE);
        DWORD written = 0;
        WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
        CloseHandle(file);
        EXPECT_TRUE(SetFileAttributesW(Wide(path), attributes));
        return path;
    }

    bool Has(const std::u16string& name) const
    {
        return GetFileAttributesW(Wide(Path(name))) != INVALID_FILE_ATTRIBUTES;
    }

    // Empty also where there is no such file.
    std::string Content(const std::u16string& name) const
    {
        const HANDLE file = CreateFileW(Wide(Path(name)), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            return {};
        std::string content(GetFileSize(file, nullptr), '\0');
        DWORD read = 0;
        ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr);
        CloseHandle(file);
        content.resize(read);
        return content;
    }

private:
    void RemoveFiles() const
    {
        WIN32_FIND_DATAW found;
        const HANDLE search = FindFirstFileW(Wide(path_ + u"*"), &found);
        if (search == INVALID_HANDLE_VALUE)
            return;
        do
        {
            const std::u16string path = path_ + reinterpret_cast<const char16_t*>(found.cFileName);
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            {
                SetFileAttributesW(Wide(path), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(Wide(path));
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }

    std::u16string path_;
};

} // namespace tev2_tests
