#include "exporter/export_settings.h"
#include "exporter/platform/settings_store.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <vector>

namespace tev2_exporter
{
namespace
{

using platform::SettingsReader;
using platform::SettingsWriter;

constexpr const char* kScratch = "Software\\Tev2_Exporter_MB_Tests";
constexpr const char* kStore = "Software\\Tev2_Exporter_MB";

struct Value
{
    DWORD type = REG_NONE;
    std::string bytes;
};

/// Redirects the user's registry to a key below it for this process.
class Registry : public testing::Test
{
protected:
    void SetUp() override
    {
        RegDeleteTreeA(HKEY_CURRENT_USER, kScratch);
        ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kScratch, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &scratch_, nullptr),
                  ERROR_SUCCESS);
        ASSERT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, scratch_), ERROR_SUCCESS);
    }

    void TearDown() override
    {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(scratch_);
        RegDeleteTreeA(HKEY_CURRENT_USER, kScratch);
    }

    static void Store(const char* name, DWORD type, const std::string& bytes)
    {
        HKEY key = nullptr;
        RegCreateKeyExA(HKEY_CURRENT_USER, kStore, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        EXPECT_EQ(RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                                 static_cast<DWORD>(bytes.size())),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }

    static Value Stored(const char* name)
    {
        Value value;
        HKEY key = nullptr;
        if (RegOpenKeyExA(HKEY_CURRENT_USER, kStore, 0, KEY_READ, &key) != ERROR_SUCCESS)
            return value;
        char bytes[256];
        DWORD size = sizeof bytes;
        if (RegQueryValueExA(key, name, nullptr, &value.type, reinterpret_cast<BYTE*>(bytes), &size) ==
            ERROR_SUCCESS)
            value.bytes.assign(bytes, size);
        RegCloseKey(key);
        return value;
    }

private:
    HKEY scratch_ = nullptr;
};

TEST_F(Registry, HasNothingWithoutKeyOrValue)
{
    EXPECT_FALSE(SettingsReader().Read("FPS_KEY_NAME"));
    HKEY key = nullptr;
    EXPECT_NE(RegOpenKeyExA(HKEY_CURRENT_USER, kStore, 0, KEY_READ, &key), ERROR_SUCCESS)
        << "reading made the key";
    SettingsWriter().Write("OTHER", "1");
    EXPECT_FALSE(SettingsReader().Read("FPS_KEY_NAME"));
    EXPECT_EQ(SettingsReader().Read("OTHER"), "1");
}

TEST_F(Registry, KeepsTextsWithTheirZeroInAKeyOfItsClass)
{
    SettingsWriter().Write("A", "59.940000");
    const Value value = Stored("A");
    EXPECT_EQ(value.type, DWORD{REG_SZ});
    EXPECT_EQ(value.bytes, std::string("59.940000\0", 10));

    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, kStore, 0, KEY_READ, &key), ERROR_SUCCESS);
    char name[64] = {};
    DWORD size = sizeof name;
    EXPECT_EQ(RegQueryInfoKeyA(key, name, &size, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_STREQ(name, "Tev2 Exporter MB Setting");
}

TEST_F(Registry, TakesEveryTypeAsTextOfUpTo64Bytes)
{
    const std::string longest(63, '7');
    const struct
    {
        const char* what;
        DWORD type;
        std::string bytes;
        std::optional<std::string> text;
    } cases[] = {
        {"text", REG_SZ, std::string("12\0", 3), "12"},
        {"empty text", REG_SZ, std::string("\0", 1), ""},
        {"no zero", REG_SZ, "50", "50"},
        {"expandable", REG_EXPAND_SZ, std::string("%A%\0", 4), "%A%"},
        {"number", REG_DWORD, std::string("\x32\0\0\0", 4), "2"},
        {"bytes", REG_BINARY, "31", "31"},
        {"nothing", REG_BINARY, "", ""},
        {"63 characters and zero", REG_SZ, std::string(longest.c_str(), 64), longest},
        {"64 characters and zero", REG_SZ, std::string((longest + "7").c_str(), 65), std::nullopt},
        {"64 bytes", REG_BINARY, std::string(64, '7'), std::string(64, '7')},
        {"65 bytes", REG_BINARY, std::string(65, '7'), std::nullopt},
        {"much", REG_BINARY, std::string(5000, '7'), std::nullopt},
    };
    for (const auto& value : cases)
    {
        Store("A", value.type, value.bytes);
        EXPECT_EQ(SettingsReader().Read("A"), value.text) << value.what;
    }
}

TEST_F(Registry, HoldsTheSettingsOfTheDialog)
{
    ExporterSettings settings;
    settings.sampling_choice = kSamplingNtsc;
    settings.start_key = -2147483647;
    settings.frame_rate = 59.94f;
    settings.dialog_x = -5;
    SaveSettings(settings);
    EXPECT_EQ(Stored("START_KEY_KEY_NAME").bytes, std::string("-2147483647\0", 12));
    EXPECT_EQ(Stored("FPS_KEY_NAME").bytes, std::string("59.939999\0", 10));
    EXPECT_EQ(Stored("REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME").bytes, std::string("1\0", 2));
    // The number 1, not its text.
    Store("KEEP_POSITIVE_Z_KEY_NAME", REG_DWORD, std::string("\1\0\0\0", 4));
    // Does not fit: counts as missing.
    Store("DIALOG_POS_Y_KEY_NAME", REG_SZ, std::string(63, '0') + std::string("8\0", 2));

    ExporterSettings loaded;
    loaded.dialog_y = 9;
    LoadSettings(loaded);
    EXPECT_EQ(loaded.sampling_choice, kSamplingNtsc);
    EXPECT_EQ(loaded.start_key, -2147483647);
    EXPECT_EQ(loaded.frame_rate, 59.939999f);
    EXPECT_FALSE(loaded.flags.keep_positive_z);
    EXPECT_TRUE(loaded.flags.remove_namespace);
    EXPECT_EQ(loaded.dialog_x, -5);
    EXPECT_EQ(loaded.dialog_y, 9);
}

} // namespace
} // namespace tev2_exporter
