#pragma once

#include "tests/support/scratch_folder.h"
#include "tev2_loader/io/wide_string.h"

#include <windows.h>

namespace tev2_tests
{

inline const wchar_t* Wide(const std::u16string& text)
{
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

/// A folder whose name may need more than ASCII; it is removed with its files.
class ScratchFolder
{
public:
    explicit ScratchFolder(const std::u16string& name = u"scratch") : path_(root_.Folder() / name)
    {
        std::filesystem::create_directory(path_);
    }
    ~ScratchFolder()
    {
        for (const auto& entry :
             std::filesystem::directory_iterator(path_)) // read-only files cannot be removed
            SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
    }

    std::u16string Path(const std::u16string& name) const { return (path_ / name).u16string(); }
    std::string Utf8Path(const std::u16string& name) const { return TEV2_LOADER::Utf8Text(Path(name)); }

    /// The path in the 8-bit code page.
    std::string BytePath(const std::u16string& name) const
    {
        char bytes[1024] = {};
        BOOL replaced = FALSE;
        WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, Wide(Path(name)), -1, bytes, sizeof bytes, nullptr,
                            &replaced);
        EXPECT_FALSE(replaced) << "not a path of the code page";
        return bytes;
    }

    std::u16string Make(const std::u16string& name, const std::string& content = "old",
                        DWORD attributes = FILE_ATTRIBUTE_NORMAL) const
    {
        tv2_tests::WriteText(path_ / name, content);
        EXPECT_TRUE(SetFileAttributesW(Wide(Path(name)), attributes));
        return Path(name);
    }

    bool Has(const std::u16string& name) const { return std::filesystem::exists(path_ / name); }

    /// Also of a file that is being read.
    std::string Content(const std::u16string& name) const { return tv2_tests::ReadText(path_ / name); }

    /// How many files have names that end so.
    std::size_t Count(const std::u16string& ending) const
    {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            count += entry.path().u16string().ends_with(ending) ? 1 : 0;
        return count;
    }

private:
    tv2_tests::ScratchFolder root_;
    std::filesystem::path path_;
};

} // namespace tev2_tests
