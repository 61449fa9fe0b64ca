#include "tests/support/test_platform.h"

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

bool IsReadOnly(const std::u16string& file_name)
{
    return TestPlatform::Get().read_only.contains(file_name);
}

void MakeWritable(const std::u16string& file_name)
{
    TestPlatform::Get().read_only.erase(file_name);
}

bool AskOkCancel(const std::u16string& caption, const std::u16string& text)
{
    TestPlatform::Get().questions.push_back({caption, text});
    return TestPlatform::Get().answer;
}

} // namespace tev2_exporter::platform
