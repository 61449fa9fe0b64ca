#pragma once

namespace tv2
{

/// Parses the arguments, runs the verb they name and returns the exit code of the command.
int RunCommandLine(int argc, char** argv);

} // namespace tv2
