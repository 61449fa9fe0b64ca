#include "exporter/platform/settings_store.h"

#include "tev2_loader/io/whole_file.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tev2_exporter::platform
{
namespace
{

namespace fs = std::filesystem;

constexpr std::size_t kLongestText = 63;

/// $XDG_CONFIG_HOME, or ~/.config where it is not set. Empty when there is neither.
fs::path SettingsFile()
{
    const char* configuration = std::getenv("XDG_CONFIG_HOME");
    if (configuration && *configuration)
        return fs::path(configuration) / "Tev2_Exporter_MB" / "settings";
    const char* home = std::getenv("HOME");
    if (home && *home)
        return fs::path(home) / ".config" / "Tev2_Exporter_MB" / "settings";
    return {};
}

} // namespace

/// Lines of another form, and texts that no value can be that long, are skipped.
SettingsReader::SettingsReader()
{
    const fs::path path = SettingsFile();
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) // opening a pipe would wait for its other end
        return;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos && line.size() - equals - 1 <= kLongestText)
            values_[line.substr(0, equals)] = line.substr(equals + 1);
    }
}

SettingsReader::~SettingsReader() = default;

std::optional<std::string> SettingsReader::Read(const char* name) const
{
    const auto value = values_.find(name);
    return value == values_.end() ? std::nullopt : std::optional(value->second);
}

SettingsWriter::SettingsWriter() = default;

/// Settings are never half written. The old ones stay where that fails.
SettingsWriter::~SettingsWriter()
{
    const fs::path path = SettingsFile();
    if (path.empty())
        return;
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    static_cast<void>(
        TEV2_LOADER::WriteWholeFile(path.string(), lines_)); // settings are kept where they can be
}

void SettingsWriter::Write(const char* name, const std::string& text)
{
    lines_ += name + ("=" + text + "\n");
}

} // namespace tev2_exporter::platform
