#pragma once

#include "tools/tv2/option_row.h"

#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tv2
{

/// How the command ends. Scripts rely on these numbers.
enum ExitCode : int
{
    kExitDone = 0,       ///< success
    kExitFindings = 1,   ///< finished, but with problems
    kExitCouldNotRun = 2 ///< could not start: bad usage, or a file that cannot be read or written
};

/// One occurrence of an option that was given. Positional arguments are none.
struct GivenOption
{
    std::string name; ///< "--fps", "--spaces-to-underscores" for "--no-spaces-to-underscores" as well
    std::vector<std::string>
        arguments; ///< that say the same again: {"--fps=60"}, {"--no-spaces-to-underscores"}
};

/// The environment of a run: output, and the exit code that it ends with.
struct VerbContext
{
    std::string_view verb; ///< its name
    std::ostream& out;
    std::ostream& err;
    bool json = false;                   ///< --json: write one JSON object to `out` and nothing else
    std::vector<GivenOption> given = {}; ///< all options of the run, --json included, in the order given
    int exit_code = kExitDone;

    /// Reports a problem, on a line of its own.
    void Complain(std::string_view what, ExitCode code);

    /// Reports that a file could not be processed; with --json that is the answer, too.
    void Fail(const std::string& file, const std::string& why, ExitCode code);

    /// The worst report of a run decides the exit code.
    void Report(ExitCode code);
};

/// One run of a verb.
class Verb
{
public:
    virtual ~Verb() = default;

    /// The options, in the order of the help. Their values are set before Run.
    virtual std::vector<OptionRow> Options() = 0;

    /// Why the options contradict each other; empty when they do not. `given` has the names from the command line.
    virtual std::string Refusal(const std::set<std::string>& given) const;

    virtual void Run(VerbContext& context) = 0;
};

/// The options that the parser itself answers.
struct CommonOptions
{
    bool json = false;
    std::string config; ///< path of the configuration file; empty: none
    bool print_config = false;
};

/// What the command knows of a verb before it is used.
struct VerbRow
{
    std::string_view name;
    int place = 0; ///< in the help: ascending, with gaps for more
    std::string_view help;
    std::string_view examples;                 ///< one a line
    std::string_view remarks = {};             ///< below the examples
    std::string_view json_help = "Print JSON"; ///< empty: it has no --json
    bool writes_files = false;                 ///< complete even when the output cannot be printed
    bool has_config = false;                   ///< --config and --print-config: its options can be in a file
    bool hidden = false;                       ///< from the help: no verb of users
    std::unique_ptr<Verb> (*make)() = nullptr;
};

/// Registers a verb: a static object in the verb's file.
class VerbRegistration
{
public:
    explicit VerbRegistration(const VerbRow& row);
};

/// All verbs, in the order of the help.
std::vector<VerbRow> Verbs();

/// All options of a verb, in the order of the help; only --help, the parser's own, is missing.
std::vector<OptionRow> AllOptions(const VerbRow& row, Verb& verb, CommonOptions& common);

/// For VerbRow::make.
template <typename Made>
std::unique_ptr<Verb> Make()
{
    return std::make_unique<Made>();
}

} // namespace tv2
