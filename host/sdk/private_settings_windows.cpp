#include "mobu_host/private_settings.h"

#include <windows.h>

namespace mobu_host
{
namespace
{

std::string KeyPathOfThisProcess()
{
    return "Software\\tv2_private_settings_" + std::to_string(GetCurrentProcessId());
}

} // namespace

struct PrivateSettings::Place
{
    HKEY key = nullptr;
};

std::unique_ptr<PrivateSettings> PrivateSettings::Make(std::string& error)
{
    auto place = std::make_unique<Place>();
    // Volatile: nothing of a killed process is left after the user has logged off.
    LSTATUS status = RegCreateKeyExA(HKEY_CURRENT_USER, KeyPathOfThisProcess().c_str(), 0, nullptr,
                                     REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &place->key, nullptr);
    if (status == ERROR_SUCCESS)
        status = RegOverridePredefKey(HKEY_CURRENT_USER, place->key);
    if (status != ERROR_SUCCESS)
    {
        if (place->key)
        {
            RegCloseKey(place->key);
            RegDeleteKeyA(HKEY_CURRENT_USER, KeyPathOfThisProcess().c_str());
        }
        error = "the stored settings cannot be replaced: system error " + std::to_string(status);
        return nullptr;
    }
    return std::unique_ptr<PrivateSettings>(new PrivateSettings(std::move(place)));
}

PrivateSettings::PrivateSettings(std::unique_ptr<Place> place) : place_(std::move(place)) {}

PrivateSettings::~PrivateSettings()
{
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeA(place_->key, nullptr);
    RegCloseKey(place_->key);
    RegDeleteKeyA(HKEY_CURRENT_USER, KeyPathOfThisProcess().c_str());
}

} // namespace mobu_host
