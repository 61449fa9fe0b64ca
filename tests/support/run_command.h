#pragma once

#include <string>
#include <vector>

namespace tv2_tests
{

/// What a program left behind.
struct CommandResult
{
    int exit_code = -1; ///< -1 when it was not started or did not exit by itself
    std::string out;
    std::string err;
    long peak_kilobytes = 0; ///< largest resident size
};

/// Runs a program with arguments, without a shell, and waits for it. POSIX systems only.
CommandResult RunCommand(const std::vector<std::string>& command);

} // namespace tv2_tests
