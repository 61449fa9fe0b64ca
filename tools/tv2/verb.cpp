#include "tools/tv2/verb.h"

#include "tools/tv2/json_answer.h"
#include "tools/tv2/text.h"

#include <algorithm>

namespace tv2
{

namespace
{

/// A function, so that the list exists before the first registration.
std::vector<VerbRow>& Registered()
{
    static std::vector<VerbRow> rows;
    return rows;
}

} // namespace

void VerbContext::Complain(std::string_view what, ExitCode code)
{
    err << "tv2 " << verb << ": " << Printable(what) << '\n';
    Report(code);
}

void VerbContext::Fail(const std::string& file, const std::string& why, ExitCode code)
{
    Complain(why, code);
    if (json)
        out << JsonAnswer(JsonFailure(file, why));
}

void VerbContext::Report(ExitCode code)
{
    exit_code = std::max<int>(exit_code, code);
}

std::string Verb::Refusal(const std::set<std::string>&) const
{
    return {};
}

VerbRegistration::VerbRegistration(const VerbRow& row)
{
    Registered().push_back(row);
}

std::vector<VerbRow> Verbs()
{
    std::vector<VerbRow> rows = Registered();
    std::sort(rows.begin(), rows.end(), [](const VerbRow& a, const VerbRow& b) { return a.place < b.place; });
    return rows;
}

} // namespace tv2
