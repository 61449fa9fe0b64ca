#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <process.h>
#else
#include <unistd.h>
#endif

namespace tv2_tests
{

/// All bytes of a file; a failed test and nothing when it cannot be read.
inline std::string ReadText(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path)
{
    const std::string text = ReadText(path);
    return {text.begin(), text.end()};
}

inline void WriteText(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    EXPECT_TRUE((file << text).flush()) << path;
}

inline void WriteBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes)
{
    WriteText(path, std::string(bytes.begin(), bytes.end()));
}

/// An empty folder that is removed with the object, whatever it holds by then. Any number may exist at once.
class ScratchFolder
{
public:
    ScratchFolder() : path_(Unused())
    {
        Remove();
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() { Remove(); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// The folder itself.
    const std::filesystem::path& Folder() const { return path_; }

    /// The path of a name in the folder; "folder/" for an empty one.
    std::string Path(const std::string& name) const { return (path_ / name).string(); }

    /// Writes a file and returns its path.
    std::string Make(const std::string& name, const std::string& content) const
    {
        WriteText(Path(name), content);
        return Path(name);
    }

    bool Has(const std::string& name) const { return std::filesystem::exists(path_ / name); }

    /// The names of everything in the folder, sorted.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

private:
    static std::filesystem::path Unused()
    {
        static int number = 0;
#if defined(_WIN32)
        const int process = _getpid();
#else
        const int process = ::getpid();
#endif
        return std::filesystem::path(testing::TempDir()) /
               ("tv2_test_" + std::to_string(process) + "_" + std::to_string(++number));
    }

    void Remove() const
    {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(path_, ignored);
    }

    std::filesystem::path path_;
};

} // namespace tv2_tests
