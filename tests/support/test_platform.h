#pragma once

// The exporter's platform as tests need it: a clock that stands still, a user who is always the same,
// read-only marks that exist in memory alone, and answers given beforehand.

#include "exporter/platform/platform.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tev2_exporter::platform
{

struct TestPlatform
{
    UtcTime now{2024, 3, 5, 9, 7, 2};
    std::optional<std::string> user = "tester";
    std::set<std::string> read_only;
    bool answer = false;

    struct Question
    {
        std::u16string caption;
        std::u16string text;
    };
    std::vector<Question> questions; // asked so far
    std::map<std::string, std::string> settings;

    void ClearSettings() { settings.clear(); }

    static TestPlatform& Get();
};

} // namespace tev2_exporter::platform
