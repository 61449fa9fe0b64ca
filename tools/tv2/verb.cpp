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

std::vector<OptionRow> AllOptions(const VerbRow& row, Verb& verb, CommonOptions& common)
{
    std::vector<OptionRow> rows;
    if (!row.json_help.empty())
        rows.push_back({.name = "--json", .value = &common.json, .help = std::string(row.json_help)});
    for (OptionRow& option : verb.Options())
        rows.push_back(std::move(option));
    if (row.has_config)
    {
        rows.push_back({.name = "--config",
                        .value = &common.config,
                        .help = "Read options from this file; those of the command line override them",
                        .check = NotEmpty,
                        .files = "*"});
        rows.push_back(
            {.name = "--print-config",
             .value = &common.print_config,
             .help = "Print a file for --config with all options: those that were given, and as comments "
                     "all others",
             .excludes = "--json"});
    }
    return rows;
}

} // namespace tv2
