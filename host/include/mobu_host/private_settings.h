#pragma once

#include <memory>
#include <string>

#include <fbsdk/fbsdk.h>

// The place where plug-ins of this process keep their settings for the user.

namespace mobu_host
{

// While an object lives, plug-ins of this process find no stored settings, and what they store is lost: the folder that
// XDG_CONFIG_HOME names cannot hold files, and on Windows HKEY_CURRENT_USER is an empty key that goes with the object.
// The user's own settings are neither read nor written. Make it before the plug-in is loaded; at most one at a time.
class FBSDK_DLL PrivateSettings
{
public:
    // Null when the system refuses: error then says why.
    static std::unique_ptr<PrivateSettings> Make(std::string& error);

    // Puts the user's own settings back.
    ~PrivateSettings();
    PrivateSettings(const PrivateSettings&) = delete;
    PrivateSettings& operator=(const PrivateSettings&) = delete;

private:
    struct Place;
    explicit PrivateSettings(std::unique_ptr<Place> place);
    std::unique_ptr<Place> place_;
};

} // namespace mobu_host
