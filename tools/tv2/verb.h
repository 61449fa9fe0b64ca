#pragma once

#include "tools/tv2/export_request.h"
#include "tools/tv2/text.h"

#include <cstddef>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// How the command ends. Scripts rely on these numbers.
enum ExitCode : int
{
    kExitDone = 0,       ///< done, nothing to complain about
    kExitFindings = 1,   ///< ran, but found something wrong or did not get everything done
    kExitCouldNotRun = 2 ///< bad usage, or a file that cannot be read or written
};

/// What a verb works with: it writes to `out` and `err` and reports how it went.
struct VerbContext
{
    std::ostream& out;
    std::ostream& err;
    int exit_code = kExitDone;

    /// Tells what went wrong, in a line on its own.
    void Complain(std::string_view command, std::string_view what, ExitCode code)
    {
        err << "tv2 " << command << ": " << Printable(what) << '\n';
        Report(code);
    }

    /// The worst report of a run decides the exit code.
    void Report(ExitCode code)
    {
        if (code > exit_code)
        {
            exit_code = code;
        }
    }
};

// The verbs, one file each. Their options come checked: what the command line allows, no more.

struct ExportVerbOptions
{
    ExportRequest request;
    std::string plugin;
    bool dialog = false;
    std::string dialog_script; ///< empty: the window
    std::string settings; ///< of the dialog: "stored", "none" or empty, which is stored for the window alone
    std::string refusal;  ///< why the options do not go together; empty when they do
    bool quiet = false;
    bool json = false;
};
void RunExport(const ExportVerbOptions& options, VerbContext& context);

struct SceneVerbOptions
{
    std::string scene;
    double scene_rate = 0.0; ///< frames a second; 0: the scene's own
    bool json = false;
};
void RunScene(const SceneVerbOptions& options, VerbContext& context);

struct MenuVerbOptions
{
    std::string plugin;
    bool json = false;
};
void RunMenu(const MenuVerbOptions& options, VerbContext& context);

struct InfoOptions
{
    std::vector<std::string> files;
    bool json = false;
};
void RunInfo(const InfoOptions& options, VerbContext& context);

struct DumpOptions
{
    std::string file;
    std::size_t keys = std::numeric_limits<std::size_t>::max();
    bool json = false;
};
void RunDump(const DumpOptions& options, VerbContext& context);

struct CheckOptions
{
    std::vector<std::string> files;
    bool codes = false;
    bool all = false;
    bool json = false;
};
void RunCheck(const CheckOptions& options, VerbContext& context);

struct PictureOptions
{
    std::string file;
    std::string output;
    std::size_t figures = 7;
    std::string view = "front";
    bool json = false;
};
void RunPicture(const PictureOptions& options, VerbContext& context);
