#include "exporter/platform/settings_store.h"

#include <windows.h>

namespace tev2_exporter::platform
{
namespace
{

constexpr const char* kKeyPath = "Software\\Tev2_Exporter_MB";
char kKeyClass[] = "Tev2 Exporter MB Setting"; // the registry takes it as text that may change

HKEY Key(void* key)
{
    return static_cast<HKEY>(key);
}

} // namespace

SettingsReader::SettingsReader()
{
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kKeyPath, 0, KEY_READ, &key) == ERROR_SUCCESS)
        key_ = key;
}

SettingsReader::~SettingsReader()
{
    if (key_)
        RegCloseKey(Key(key_));
}

/// Any type of value is taken as text. Asked twice, the second answer decides.
std::optional<std::string> SettingsReader::Read(const char* name) const
{
    if (!key_)
        return std::nullopt;
    char text[65] = {};
    LSTATUS status = ERROR_SUCCESS;
    for (int query = 0; query < 2; ++query)
    {
        DWORD size = sizeof text - 1;
        status = RegQueryValueExA(Key(key_), name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
    }
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    return text;
}

SettingsWriter::SettingsWriter()
{
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, kKeyPath, 0, kKeyClass, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) == ERROR_SUCCESS)
        key_ = key;
}

SettingsWriter::~SettingsWriter()
{
    if (key_)
        RegCloseKey(Key(key_));
}

void SettingsWriter::Write(const char* name, const std::string& text)
{
    if (key_)
        RegSetValueExA(Key(key_), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>(text.size() + 1));
}

} // namespace tev2_exporter::platform
