#include "tests/host/popup/virtual_display.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

VirtualDisplay::VirtualDisplay()
{
    int number[2] = {};
    if (pipe(number) != 0)
    {
        problem_ = "no pipe";
        return;
    }
    const std::string fd = std::to_string(number[1]);
    const char* const arguments[] = {"Xvfb",       "-displayfd", fd.c_str(), "-screen",    "0",
                                     "800x800x24", "-nolisten",  "tcp",      "-terminate", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, number[0]);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (posix_spawnp(&process_, arguments[0], &actions, nullptr, const_cast<char* const*>(arguments),
                     environ) != 0)
        process_ = 0;
    posix_spawn_file_actions_destroy(&actions);
    close(number[1]);

    std::string text; // the number comes when the server is ready, nothing when it gives up
    for (char c = 0; read(number[0], &c, 1) == 1 && c != '\n';)
        text += c;
    close(number[0]);
    if (text.empty())
        problem_ = "Xvfb cannot be started";
    else
        setenv("DISPLAY", (":" + text).c_str(), 1);
}

VirtualDisplay::~VirtualDisplay()
{
    if (process_ <= 0)
        return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

/// What the toolkit's font library keeps until the program ends is not ours to free.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}
