#include "check/check_codes.h"

#include "check/lint.h"
#include "tev2_loader/io/load_report.h"

#include <algorithm>
#include <vector>

namespace tev2_check
{

using namespace TEV2_LOADER;

const char* SeverityName(Severity severity)
{
    return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

std::span<const CheckCode> CheckCodes()
{
    static const std::vector<CheckCode> codes = []
    {
        std::vector<CheckCode> all;
        for (const TEV2_LOAD_CODE_ROW& row : LoadCodes())
        {
            const bool error = row.severity == TEV2_LOAD_SEVERITY::Error;
            all.push_back({row.name, error ? Severity::Error : Severity::Warning, row.sentence});
        }
        const std::vector<CheckCode> lint = LintCodes();
        all.insert(all.end(), lint.begin(), lint.end());
        return all;
    }();
    return codes;
}

const CheckCode& FindCheckCode(std::string_view code)
{
    static const CheckCode none{{}, Severity::Error, {}};
    const auto codes = CheckCodes();
    const auto found = std::find_if(codes.begin(), codes.end(),
                                    [code](const CheckCode& entry) { return entry.code == code; });
    return found == codes.end() ? none : *found;
}

} // namespace tev2_check
