#include "exporter/platform/settings_store.h"

#include <mobu_host/private_settings.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace tev2_exporter::platform
{
namespace
{

namespace fs = std::filesystem;

void Store(const char* text)
{
    SettingsWriter().Write("NAME", text);
}

std::string Stored()
{
    return SettingsReader().Read("NAME").value_or("nothing");
}

TEST(PrivateSettings, HideTheStoredOnesAndKeepNothing)
{
    const fs::path home = testing::TempDir() + "private_settings";
    for (const bool variable_set : {true, false})
    {
        fs::remove_all(home);
        fs::create_directories(home);
        setenv("HOME", home.c_str(), 1);
        variable_set ? setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1) : unsetenv("XDG_CONFIG_HOME");
        Store("of the user");
        {
            std::string error;
            const auto aside = mobu_host::PrivateSettings::Make(error);
            ASSERT_TRUE(aside) << error;
            EXPECT_EQ(Stored(), "nothing");
            Store("of the run");
            EXPECT_EQ(Stored(), "nothing");
        }
        EXPECT_EQ(Stored(), "of the user");
        EXPECT_EQ(std::getenv("XDG_CONFIG_HOME") != nullptr, variable_set);
    }
    fs::remove_all(home);
}

} // namespace
} // namespace tev2_exporter::platform
