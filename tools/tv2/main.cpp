// The command `tv2`: everything that can be done with .tv2 files from a shell. One file a verb.

#include "tools/tv2/verb.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace
{

using AddVerb = void (*)(CLI::App&, VerbContext&);

/// In the order in which the help lists them.
constexpr AddVerb kVerbs[] = {
    AddExportVerb, AddSceneVerb, AddInfoVerb, AddDumpVerb, AddCheckVerb, AddPictureVerb,
};

} // namespace

int main(int argc, char** argv)
{
    std::ios::sync_with_stdio(false);
    VerbContext context{std::cout, std::cerr};

    CLI::App app("Looks at, checks and makes .tv2 scene files.", "tv2");
    app.set_version_flag("--version", "tv2 " TV2_VERSION);
    app.require_subcommand(1);
    app.footer("Each verb has its own help: tv2 info --help\n"
               "Exit code: 0 done or clean, 1 findings or not all done, 2 could not run.");
    for (const AddVerb add_verb : kVerbs)
    {
        add_verb(app, context);
    }

    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error, std::cout, std::cerr) == 0 ? kExitDone : kExitCouldNotRun;
    }
    catch (const std::exception& error)
    {
        std::cerr << "tv2: " << error.what() << '\n';
        return kExitCouldNotRun;
    }
    if (!std::cout.flush())
    {
        std::cerr << "tv2: the output could not be written\n";
        return kExitCouldNotRun;
    }
    return context.exit_code;
}
