#include "tools/tv2/process_pool.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tv2
{

using TEV2_LOADER::Status;

/// The reading end of a pipe from a process.
struct PrintedText
{
    int file = -1;
    std::string text;

    /// Appends what there is; closes the pipe at its end.
    void Read(std::size_t most)
    {
        std::array<char, 1 << 16> piece;
        const ssize_t got = ::read(file, piece.data(), piece.size());
        if (got < 0 && (errno == EINTR || errno == EAGAIN))
            return;
        if (got > 0)
        {
            const std::size_t room = most - std::min(most, text.size());
            text.append(piece.data(), std::min(static_cast<std::size_t>(got), room));
            return;
        }
        ::close(file);
        file = -1;
    }
};

struct PooledProcess
{
    std::size_t tag = 0;
    pid_t id = 0;
    PrintedText out, err;

    bool HasClosed() const { return out.file < 0 && err.file < 0; }
};

namespace
{

constexpr std::size_t kMostErrors = 1 << 20;
constexpr int kMilliseconds = 100; ///< that Wait takes at most

/// A pipe whose ends no other program inherits.
struct Pipe
{
    int ends[2] = {-1, -1};

    bool Open() { return ::pipe2(ends, O_CLOEXEC) == 0; }
    ~Pipe()
    {
        for (const int end : ends)
            if (end >= 0)
                ::close(end);
    }
    int Take(int end)
    {
        const int taken = ends[end];
        ends[end] = -1;
        return taken;
    }
};

/// What a new process does before it is the program; only calls that are allowed there.
[[noreturn]] void BecomeProgram(pid_t parent, const int (&files)[3], int failure, char* const* arguments)
{
    // The end of this program, however it comes, is the end of its processes.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(127);
    // What a terminal sends to all of its processes is for this program to decide on.
    sigset_t of_terminal;
    sigemptyset(&of_terminal);
    sigaddset(&of_terminal, SIGINT);
    sigaddset(&of_terminal, SIGHUP);
    ::sigprocmask(SIG_BLOCK, &of_terminal, nullptr);
    bool ready = true;
    for (int number = 0; number < 3; ++number)
        ready = ::dup2(files[number], number) == number && ready;
    if (ready)
        ::execv(arguments[0], arguments);
    const int error = errno;
    static_cast<void>(!::write(failure, &error, sizeof error));
    ::_exit(127);
}

/// Waits for a process and returns how it ended, as waitpid has it.
int AwaitEnd(pid_t id)
{
    int status = 0;
    while (::waitpid(id, &status, 0) < 0 && errno == EINTR)
        continue;
    return status;
}

EndedProcess Reap(PooledProcess& process)
{
    const int status = AwaitEnd(process.id);
    EndedProcess ended;
    ended.tag = process.tag;
    ended.id = static_cast<unsigned long>(process.id);
    ended.out = std::move(process.out.text);
    ended.err = std::move(process.err.text);
    if (WIFEXITED(status))
        ended.exit_code = WEXITSTATUS(status);
    else
        ended.crash = ::strsignal(WTERMSIG(status));
    return ended;
}

} // namespace

class ProcessPool::System
{
public:
    std::vector<PooledProcess> processes;

    std::vector<EndedProcess> ReapClosed()
    {
        std::vector<EndedProcess> ended;
        for (PooledProcess& process : processes)
            if (process.HasClosed())
                ended.push_back(Reap(process));
        std::erase_if(processes, [](const PooledProcess& process) { return process.HasClosed(); });
        return ended;
    }

    void Read(int milliseconds)
    {
        std::vector<pollfd> files;
        std::vector<std::pair<PrintedText*, std::size_t>> readers;
        for (PooledProcess& process : processes)
        {
            const std::pair<PrintedText*, std::size_t> both[] = {{&process.out, static_cast<std::size_t>(-1)},
                                                                 {&process.err, kMostErrors}};
            for (const auto& reader : both)
            {
                if (reader.first->file < 0)
                    continue;
                files.push_back({reader.first->file, POLLIN, 0});
                readers.push_back(reader);
            }
        }
        if (::poll(files.data(), files.size(), milliseconds) <= 0)
            return; // a signal, or nothing yet
        for (std::size_t i = 0; i < files.size(); ++i)
            if (files[i].revents != 0)
                readers[i].first->Read(readers[i].second);
    }
};

ProcessPool::ProcessPool() : system_(std::make_unique<System>()) {}

ProcessPool::~ProcessPool()
{
    Stop();
}

std::size_t ProcessPool::Limit()
{
    return 256; // three open files each
}

Status ProcessPool::Start(std::size_t tag, const std::vector<std::string>& command)
{
    std::vector<std::string> texts = command;
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    Pipe out, err, failure;
    Pipe input;
    if (!out.Open() || !err.Open() || !failure.Open())
        return Status::Failure(std::strerror(errno));
    input.ends[0] = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (input.ends[0] < 0)
        return Status::Failure(std::strerror(errno));
    const pid_t parent = ::getpid();
    const pid_t id = ::fork();
    if (id < 0)
        return Status::Failure(std::strerror(errno));
    if (id == 0)
        BecomeProgram(parent, {input.ends[0], out.ends[1], err.ends[1]}, failure.ends[1], arguments.data());
    ::close(failure.Take(1));
    int error = 0;
    ssize_t got = 0;
    while ((got = ::read(failure.ends[0], &error, sizeof error)) < 0 && errno == EINTR)
        continue;
    if (got > 0) // nothing, when the program starts: that closes the pipe
    {
        AwaitEnd(id);
        return Status::Failure(std::strerror(error));
    }
    system_->processes.push_back({tag, id, {out.Take(0), {}}, {err.Take(0), {}}});
    return {};
}

std::size_t ProcessPool::Running() const
{
    return system_->processes.size();
}

std::vector<EndedProcess> ProcessPool::Wait()
{
    system_->Read(kMilliseconds);
    return system_->ReapClosed();
}

std::vector<EndedProcess> ProcessPool::Stop()
{
    for (const PooledProcess& process : system_->processes)
        ::kill(process.id, SIGKILL);
    std::vector<EndedProcess> all;
    while (!system_->processes.empty())
    {
        system_->Read(kMilliseconds);
        for (EndedProcess& ended : system_->ReapClosed())
            all.push_back(std::move(ended));
    }
    return all;
}

} // namespace tv2
