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

// The user's own registry is left alone: a key below it stands for it in this process.
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

    static void StoreText(const char* name, const std::string& text)
    {
        Store(name, REG_SZ, std::string(text.c_str(), text.size() + 1));
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

    static bool StoreIsThere()
    {
        HKEY key = nullptr;
        const bool there = RegOpenKeyExA(HKEY_CURRENT_USER, kStore, 0, KEY_READ, &key) == ERROR_SUCCESS;
        RegCloseKey(key);
        return there;
    }

private:
    HKEY scratch_ = nullptr;
};

TEST_F(Registry, HasNothingWithoutKeyOrValue)
{
    EXPECT_FALSE(SettingsReader().Read("FPS_KEY_NAME"));
    EXPECT_FALSE(StoreIsThere()) << "reading made the key";
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
    struct Case
    {
        const char* what;
        DWORD type;
        std::string bytes;
        std::optional<std::string> text;
    };
    const std::string longest(63, '7');
    const Case cases[] = {
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
    for (const Case& value : cases)
    {
        SCOPED_TRACE(value.what);
        Store("A", value.type, value.bytes);
        EXPECT_EQ(SettingsReader().Read("A"), value.text);
    }
}

TEST_F(Registry, KeepsAllSettings)
{
    ExporterSettings settings;
    settings.sampling_choice = kSamplingNtsc;
    settings.key_frame_choice = kCustomKeys;
    settings.takes_choice = kAllTakes;
    settings.start_key = -2147483647;
    settings.end_key = 250;
    settings.frame_rate = 59.94f;
    settings.spaces_to_underscores = false;
    settings.remove_namespace = false;
    settings.disable_constraints = true;
    settings.dialog_x = -5;
    settings.dialog_y = 640;
    SaveSettings(settings);

    const std::pair<const char*, const char*> expected[] = {
        {"SAMPLING_RADIO_CHOICE_KEY_NAME", "1"},
        {"KEYFRAME_RADIO_CHOICE_KEY_NAME", "1"},
        {"TAKES_RADIO_CHOICE_KEY_NAME", "1"},
        {"START_KEY_KEY_NAME", "-2147483647"},
        {"END_KEY_KEY_NAME", "250"},
        {"FPS_KEY_NAME", "59.939999"},
        {"FILENAME_SPACES_KEY_NAME", "0"},
        {"KEEP_POSITIVE_Z_KEY_NAME", "1"},
        {"REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME", "0"},
        {"ASTERIX_TV2_EXTENSION_KEY_NAME", "1"},
        {"DISABLE_CONSTRAINTS_KEY_NAME", "1"},
        {"DIALOG_POS_X_KEY_NAME", "-5"},
        {"DIALOG_POS_Y_KEY_NAME", "640"},
    };
    for (const auto& [name, text] : expected)
    {
        EXPECT_EQ(Stored(name).type, DWORD{REG_SZ}) << name;
        EXPECT_EQ(Stored(name).bytes, std::string(text) + '\0') << name;
    }

    ExporterSettings loaded;
    LoadSettings(loaded);
    EXPECT_EQ(loaded.sampling_choice, kSamplingNtsc);
    EXPECT_EQ(loaded.key_frame_choice, kCustomKeys);
    EXPECT_EQ(loaded.takes_choice, kAllTakes);
    EXPECT_EQ(loaded.start_key, -2147483647);
    EXPECT_EQ(loaded.end_key, 250);
    EXPECT_EQ(loaded.frame_rate, 59.939999f);
    EXPECT_FALSE(loaded.spaces_to_underscores);
    EXPECT_TRUE(loaded.keep_positive_z);
    EXPECT_FALSE(loaded.remove_namespace);
    EXPECT_TRUE(loaded.asterisk_extension);
    EXPECT_TRUE(loaded.disable_constraints);
    EXPECT_EQ(loaded.dialog_x, -5);
    EXPECT_EQ(loaded.dialog_y, 640);
}

TEST_F(Registry, LeavesFieldsWithoutAValueAndTakesOddTextsAsZero)
{
    ExporterSettings settings;
    settings.take_start_frame = 3;
    settings.take_end_frame = 9;
    settings.transport_rate = 25.0;
    LoadSettings(settings);
    EXPECT_EQ(settings.start_key, 3);
    EXPECT_EQ(settings.end_key, 9);
    EXPECT_EQ(settings.frame_rate, 25.0f);
    EXPECT_TRUE(settings.keep_positive_z);
    EXPECT_TRUE(WantsAsteriskExtension());

    StoreText("START_KEY_KEY_NAME", "hello");
    StoreText("FPS_KEY_NAME", "none");
    StoreText("KEEP_POSITIVE_Z_KEY_NAME", "2");
    Store("REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME", REG_DWORD,
          std::string("\1\0\0\0", 4));                         // the number 1, not its text
    StoreText("END_KEY_KEY_NAME", std::string(63, '0') + "8"); // does not fit: not there
    StoreText("ASTERIX_TV2_EXTENSION_KEY_NAME", "0");
    LoadSettings(settings);
    EXPECT_EQ(settings.start_key, 0);
    EXPECT_EQ(settings.frame_rate, 0.0f);
    EXPECT_FALSE(settings.keep_positive_z);
    EXPECT_FALSE(settings.remove_namespace);
    EXPECT_EQ(settings.end_key, 9);
    EXPECT_FALSE(WantsAsteriskExtension());
}

} // namespace
} // namespace tev2_exporter
