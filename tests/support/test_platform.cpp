#include "tests/support/test_platform.h"

#include "exporter/platform/settings_store.h"

namespace tev2_exporter::platform
{

TestPlatform& TestPlatform::Get()
{
    static TestPlatform platform;
    return platform;
}

UtcTime CurrentUtcTime()
{
    return TestPlatform::Get().now;
}

std::optional<std::string> UserName()
{
    return TestPlatform::Get().user;
}

bool IsReadOnly(const std::string& path)
{
    return TestPlatform::Get().read_only.contains(path);
}

void MakeWritable(const std::string& path)
{
    TestPlatform::Get().read_only.erase(path);
}

bool AskOkCancel(const std::u16string& caption, const std::u16string& text)
{
    TestPlatform::Get().questions.push_back({caption, text});
    return TestPlatform::Get().answer;
}

SettingsReader::SettingsReader() : values_(TestPlatform::Get().settings) {}

SettingsReader::~SettingsReader() = default;

std::optional<std::string> SettingsReader::Read(const char* name) const
{
    const auto value = values_.find(name);
    return value == values_.end() ? std::nullopt : std::optional(value->second);
}

SettingsWriter::SettingsWriter() = default;

SettingsWriter::~SettingsWriter() = default;

void SettingsWriter::Write(const char* name, const std::string& text)
{
    TestPlatform::Get().settings[name] = text;
}

} // namespace tev2_exporter::platform
