#pragma once

#include <ostream>

namespace CLI
{
class App;
}

/// How the command ends. Scripts rely on these numbers.
enum ExitCode : int
{
    kExitDone = 0,       ///< done, nothing to complain about
    kExitFindings = 1,   ///< ran, but found something wrong or did not get everything done
    kExitCouldNotRun = 2 ///< bad usage, or a file that cannot be read or written
};

/// What a verb works with. A verb adds one sub-command with its options and a callback; the callback writes
/// to `out` and `err` and reports how it went.
struct VerbContext
{
    std::ostream& out;
    std::ostream& err;
    int exit_code = kExitDone;

    /// The worst report of a run decides the exit code.
    void Report(ExitCode code)
    {
        if (code > exit_code)
        {
            exit_code = code;
        }
    }
};

void AddExportVerb(CLI::App& app, VerbContext& context);
void AddSceneVerb(CLI::App& app, VerbContext& context);
void AddMenuVerb(CLI::App& app, VerbContext& context);
void AddInfoVerb(CLI::App& app, VerbContext& context);
void AddDumpVerb(CLI::App& app, VerbContext& context);
void AddCheckVerb(CLI::App& app, VerbContext& context);
void AddPictureVerb(CLI::App& app, VerbContext& context);
