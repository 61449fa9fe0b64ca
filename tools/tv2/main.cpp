// The command `tv2`: everything that can be done with .tv2 files from a shell. One file a verb.

#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>

namespace
{

using AddVerb = void (*)(CLI::App&, VerbContext&);

/// In the order in which the help lists them.
constexpr AddVerb kVerbs[] = {
    AddExportVerb, AddSceneVerb, AddMenuVerb, AddInfoVerb, AddDumpVerb, AddCheckVerb, AddPictureVerb,
};

/// The first argument where it should be a verb and is none; null otherwise.
const char* UnknownVerb(const CLI::App& app, int argc, char** argv)
{
    if (argc < 2 || argv[1][0] == '-')
    {
        return nullptr;
    }
    const auto verbs = app.get_subcommands([](const CLI::App*) { return true; });
    const bool known = std::any_of(verbs.begin(), verbs.end(),
                                   [argv](const CLI::App* verb) { return verb->check_name(argv[1]); });
    return known ? nullptr : argv[1];
}

int Run(int argc, char** argv)
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

    if (const char* const verb = UnknownVerb(app, argc, argv))
    {
        std::cerr << "tv2: there is no verb \"" << OneLine(verb)
                  << "\"\nRun with --help for more information.\n";
        return kExitCouldNotRun;
    }
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error, std::cout, std::cerr) == 0 ? kExitDone : kExitCouldNotRun;
    }
    if (!std::cout.flush())
    {
        std::cerr << "tv2: the output could not be written\n";
        return kExitCouldNotRun;
    }
    return context.exit_code;
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        return Run(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "tv2: %s\n", error.what());
    }
    catch (...)
    {
        std::fputs("tv2: unknown failure\n", stderr);
    }
    return kExitCouldNotRun;
}
