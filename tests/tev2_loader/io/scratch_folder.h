#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace tev2_tests
{

namespace fs = std::filesystem;

/// An empty folder for the current test.
class ScratchFolder
{
public:
    ScratchFolder()
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        path_ = fs::path(testing::TempDir()) / (std::string(test->test_suite_name()) + "." + test->name());
        Remove();
        fs::create_directories(path_);
    }
    ~ScratchFolder() { Remove(); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return (path_ / name).string(); }

    std::string Make(const std::string& name, const std::string& content) const
    {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

    static std::string Content(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// The names of all that is in the folder, sorted.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

private:
    void Remove() const
    {
        std::error_code ignored;
        fs::permissions(path_, fs::perms::owner_all, ignored);
        fs::remove_all(path_, ignored);
    }

    fs::path path_;
};

} // namespace tev2_tests
