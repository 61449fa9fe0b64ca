#include "mobu_host/private_settings.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace mobu_host
{
namespace
{

constexpr const char* kVariable = "XDG_CONFIG_HOME";
constexpr const char* kNoFolder = "/dev/null"; // a device: nothing can be read or created below it

} // namespace

struct PrivateSettings::Place
{
    std::optional<std::string> before; // of the variable
};

std::unique_ptr<PrivateSettings> PrivateSettings::Make(std::string& error)
{
    auto place = std::make_unique<Place>();
    if (const char* const before = std::getenv(kVariable))
        place->before = before;
    if (setenv(kVariable, kNoFolder, 1) != 0)
    {
        error = std::string("the stored settings cannot be replaced: ") + std::strerror(errno);
        return nullptr;
    }
    return std::unique_ptr<PrivateSettings>(new PrivateSettings(std::move(place)));
}

PrivateSettings::PrivateSettings(std::unique_ptr<Place> place) : place_(std::move(place)) {}

PrivateSettings::~PrivateSettings()
{
    if (place_->before)
        setenv(kVariable, place_->before->c_str(), 1);
    else
        unsetenv(kVariable);
}

} // namespace mobu_host
