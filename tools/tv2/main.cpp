// The command `tv2`. One file per verb.

#include "tools/tv2/command_line.h"
#include "tools/tv2/system.h"
#include "tools/tv2/verb.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv)
{
    tv2::ReportFileSizeLimit();
    try
    {
        return tv2::RunCommandLine(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "tv2: %s\n", error.what());
    }
    catch (...)
    {
        std::fputs("tv2: unknown failure\n", stderr);
    }
    return tv2::kExitCouldNotRun;
}
