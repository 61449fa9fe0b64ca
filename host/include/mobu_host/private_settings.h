#pragma once

#include <memory>
#include <string>

#include <fbsdk/fbsdk.h>

// Keeps plug-ins away from the user's stored settings.

namespace mobu_host
{

// During its lifetime plug-ins of this process find no stored settings, and what they store is lost: XDG_CONFIG_HOME
// names a folder that cannot hold files, and on Windows HKEY_CURRENT_USER is an empty temporary key. The user's own
// settings are neither read nor written. Make it before the plug-in is loaded; at most one at a time.
class FBSDK_DLL PrivateSettings
{
public:
    // Null when the system refuses: error then says why.
    static std::unique_ptr<PrivateSettings> Make(std::string& error);

    // Makes the user's own settings visible again.
    ~PrivateSettings();
    PrivateSettings(const PrivateSettings&) = delete;
    PrivateSettings& operator=(const PrivateSettings&) = delete;

private:
    struct Place;
    explicit PrivateSettings(std::unique_ptr<Place> place);
    std::unique_ptr<Place> place_;
};

} // namespace mobu_host
