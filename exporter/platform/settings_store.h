#pragma once

// The user's settings: texts of fewer than 64 bytes under names, kept from one run to the next. On Windows
// the values of the registry key "Software\Tev2_Exporter_MB" of the current user; elsewhere the lines
// "NAME=text" of one file in the user's configuration folder.

#include <map>
#include <optional>
#include <string>

namespace tev2_exporter::platform
{

/// The store as it was when the reader was made. A store that is not there has no values.
class SettingsReader
{
public:
    SettingsReader();
    ~SettingsReader();
    SettingsReader(const SettingsReader&) = delete;
    SettingsReader& operator=(const SettingsReader&) = delete;

    std::optional<std::string> Read(const char* name) const;

private:
    [[maybe_unused]] void* key_ = nullptr;      ///< an open registry key
    std::map<std::string, std::string> values_; ///< or the lines of the file
};

/// Makes the store where there is none and writes values into it; they are stored for good when the writer is
/// destroyed. What cannot be written is skipped.
class SettingsWriter
{
public:
    SettingsWriter();
    ~SettingsWriter();
    SettingsWriter(const SettingsWriter&) = delete;
    SettingsWriter& operator=(const SettingsWriter&) = delete;

    void Write(const char* name, const std::string& text);

private:
    [[maybe_unused]] void* key_ = nullptr;
    std::string lines_;
};

} // namespace tev2_exporter::platform
