#include "tests/support/run_command.h"

#include "tests/support/scratch_folder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace tv2_tests
{

CommandResult RunCommand(const std::vector<std::string>& command)
{
    const ScratchFolder folder;
    const std::string out = folder.Path("out");
    const std::string err = folder.Path("err");
    std::vector<std::string> texts = command;
    std::vector<char*> arguments;
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t process = 0;
    const int failed = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);

    CommandResult result;
    int status = 0;
    rusage usage{};
    if (failed == 0 && wait4(process, &status, 0, &usage) == process && WIFEXITED(status))
    {
        result.peak_kilobytes = usage.ru_maxrss;
        result.exit_code = WEXITSTATUS(status);
        result.out = ReadText(out);
        result.err = ReadText(err);
    }
    return result;
}

} // namespace tv2_tests
