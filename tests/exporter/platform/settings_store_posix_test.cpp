#include "exporter/platform/settings_store.h"

#include "tests/support/scratch_folder.h"

#include <mobu_host/private_settings.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>

namespace tev2_exporter::platform
{
namespace
{

namespace fs = std::filesystem;

/// A home of its own for each test.
class SettingsStore : public testing::Test
{
protected:
    void SetUp() override
    {
        Set("XDG_CONFIG_HOME", nullptr);
        Set("HOME", home_.c_str());
    }

    static void Set(const char* variable, const char* value)
    {
        if (value)
            setenv(variable, value, 1);
        else
            unsetenv(variable);
    }

    static std::string Stored(const char* name) { return SettingsReader().Read(name).value_or("nothing"); }

    const tv2_tests::ScratchFolder scratch_;
    const fs::path home_ = scratch_.Folder();
    const fs::path folder_ = home_ / ".config/Tev2_Exporter_MB";
    const fs::path file_ = folder_ / "settings";
};

TEST_F(SettingsStore, LiesWhereTheSystemKeepsSettings)
{
    const std::string other = home_ / "other";
    const struct
    {
        const char* configuration;
        const char* home;
        fs::path file; ///< empty: nowhere
    } cases[] = {
        {nullptr, home_.c_str(), file_},
        {"", home_.c_str(), file_},
        {other.c_str(), home_.c_str(), other + "/Tev2_Exporter_MB/settings"},
        {other.c_str(), nullptr, other + "/Tev2_Exporter_MB/settings"},
        {nullptr, nullptr, {}},
        {"", "", {}},
    };
    for (const auto& item : cases)
    {
        fs::remove_all(home_);
        Set("XDG_CONFIG_HOME", item.configuration);
        Set("HOME", item.home);
        SettingsWriter().Write("name", "text");
        EXPECT_EQ(fs::exists(home_), !item.file.empty());
        EXPECT_EQ(SettingsReader().Read("name").value_or("none"), item.file.empty() ? "none" : "text");
        EXPECT_TRUE(item.file.empty() || fs::is_regular_file(item.file)) << item.file;
    }
}

TEST_F(SettingsStore, TakesLinesOfItsOwnFormAlone)
{
    fs::create_directories(folder_);
    std::ofstream(file_) << "no value\na=1=2\n\nlong=" << std::string(63, 'x')
                         << "\nlonger=" << std::string(64, 'x') << "\nb=";
    const SettingsReader reader;
    EXPECT_EQ(reader.Read("a"), "1=2");
    EXPECT_EQ(reader.Read("b"), "");
    EXPECT_EQ(reader.Read("long"), std::string(63, 'x'));
    for (const char* const none : {"longer", "no value", ""})
        EXPECT_EQ(reader.Read(none), std::nullopt) << none;
}

TEST_F(SettingsStore, WritesWholeFilesInPlaceOfTheOld)
{
    SettingsWriter().Write("old", "1");
    {
        SettingsWriter writer;
        writer.Write("a", "1");
        writer.Write("b", "2");
        EXPECT_EQ(SettingsReader().Read("old"), "1") << "until the writer is done";
    }
    EXPECT_EQ(SettingsReader().Read("old"), std::nullopt);
    EXPECT_EQ(SettingsReader().Read("a"), "1");
    EXPECT_EQ(SettingsReader().Read("b"), "2");
}

TEST_F(SettingsStore, KeepsTheOldSettingsWhenTheDiskIsFull)
{
    SettingsWriter().Write("old", "1");
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{3, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &limit);
    SettingsWriter().Write("new", "1");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(SettingsReader().Read("old"), "1");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
}

// Processes share the folder, and users keep their settings elsewhere by way of a link.
TEST_F(SettingsStore, WritesThroughLinksAndLeavesOtherFilesAlone)
{
    fs::create_directories(folder_);
    std::ofstream(home_ / "kept") << "old=1\n";
    std::ofstream(home_ / "other") << "other";
    fs::create_symlink(home_ / "kept", file_);
    fs::create_symlink(home_ / "other", folder_ / "settings.new");
    SettingsWriter().Write("a", "1");
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_EQ(fs::file_size(home_ / "kept"), 4u);
    EXPECT_EQ(fs::file_size(home_ / "other"), 5u);
    EXPECT_EQ(SettingsReader().Read("a"), "1");
}

TEST_F(SettingsStore, IsHiddenByPrivateSettingsWhichKeepNothing)
{
    for (const bool variable_set : {true, false})
    {
        Set("XDG_CONFIG_HOME", variable_set ? (home_ / "config").c_str() : nullptr);
        SettingsWriter().Write("name", "of the user");
        {
            std::string error;
            const auto aside = mobu_host::PrivateSettings::Make(error);
            ASSERT_TRUE(aside) << error;
            EXPECT_EQ(Stored("name"), "nothing");
            SettingsWriter().Write("name", "of the run");
            EXPECT_EQ(Stored("name"), "nothing");
        }
        EXPECT_EQ(Stored("name"), "of the user");
        EXPECT_EQ(std::getenv("XDG_CONFIG_HOME") != nullptr, variable_set);
    }
}

TEST_F(SettingsStore, LeavesPipesAndFoldersAlone)
{
    for (const fs::file_type type : {fs::file_type::fifo, fs::file_type::directory})
    {
        fs::remove(file_);
        fs::create_directories(type == fs::file_type::directory ? file_ : folder_);
        EXPECT_TRUE(fs::exists(file_) || mkfifo(file_.c_str(), 0600) == 0);
        EXPECT_EQ(SettingsReader().Read("a"), std::nullopt);
        SettingsWriter().Write("a", "1");
        EXPECT_EQ(fs::status(file_).type(), type);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
    }
}

} // namespace
} // namespace tev2_exporter::platform
