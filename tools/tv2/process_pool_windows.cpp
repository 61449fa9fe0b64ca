#include "tools/tv2/process_pool.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <string_view>
#include <system_error>

namespace tv2
{

using TEV2_LOADER::Status;

/// A handle of the system, closed at the end.
class SystemHandle
{
public:
    SystemHandle() = default;
    explicit SystemHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~SystemHandle()
    {
        if (handle_ != nullptr)
            CloseHandle(handle_);
    }
    SystemHandle(SystemHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    SystemHandle& operator=(SystemHandle&& other) noexcept
    {
        std::swap(handle_, other.handle_);
        return *this;
    }

    HANDLE Get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

private:
    HANDLE handle_ = nullptr;
};

struct PooledProcess
{
    std::size_t tag = 0;
    DWORD id = 0;
    SystemHandle handle, out, err;
};

namespace
{

constexpr std::size_t kMostErrors = 1 << 20;
constexpr DWORD kMilliseconds = 100; ///< that Wait takes at most
constexpr DWORD kFirstCrash = 0xC0000000;

Status LastFailure()
{
    return Status::Failure(std::system_category().message(static_cast<int>(GetLastError())));
}

/// A temporary file without limits to what a process prints, which goes away when it is closed.
SystemHandle MakeTemporary()
{
    std::array<char, MAX_PATH + 1> folder{};
    std::array<char, MAX_PATH + 1> name{};
    if (GetTempPathA(static_cast<DWORD>(folder.size()), folder.data()) == 0 ||
        GetTempFileNameA(folder.data(), "tv2", 0, name.data()) == 0)
        return {};
    return SystemHandle(CreateFileA(name.data(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
}

std::string ContentOf(const SystemHandle& file, std::size_t most)
{
    std::string text;
    std::array<char, 1 << 16> piece;
    SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN);
    for (DWORD got = 0;
         ::ReadFile(file.Get(), piece.data(), static_cast<DWORD>(piece.size()), &got, nullptr) && got > 0 &&
         text.size() < most;)
        text.append(piece.data(), got);
    return text;
}

/// An argument as programs take it out of a command line: backslashes count double in front of a quotation mark.
std::string QuotedArgument(std::string_view argument)
{
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char character : argument)
    {
        if (character == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    return quoted.append(backslashes, '\\') + '"';
}

std::string CommandLine(const std::vector<std::string>& command)
{
    std::string line;
    for (const std::string& argument : command)
        line += (line.empty() ? "" : " ") + QuotedArgument(argument);
    return line;
}

EndedProcess Reap(const PooledProcess& process)
{
    EndedProcess ended;
    ended.tag = process.tag;
    ended.id = process.id;
    DWORD code = 0;
    GetExitCodeProcess(process.handle.Get(), &code);
    ended.exit_code = static_cast<int>(code);
    if (code >= kFirstCrash)
    {
        char text[32];
        std::snprintf(text, sizeof text, "exception 0x%08lX", code);
        ended.crash = text;
    }
    ended.out = ContentOf(process.out, static_cast<std::size_t>(-1));
    ended.err = ContentOf(process.err, kMostErrors);
    return ended;
}

} // namespace

class ProcessPool::System
{
public:
    System() : job(CreateJobObjectA(nullptr, nullptr))
    {
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    }

    std::vector<EndedProcess> ReapEnded(DWORD milliseconds)
    {
        std::vector<EndedProcess> ended;
        for (std::size_t i = 0; i < processes.size();)
        {
            if (WaitForSingleObject(processes[i].handle.Get(), milliseconds) != WAIT_OBJECT_0)
            {
                ++i;
                continue;
            }
            ended.push_back(Reap(processes[i]));
            processes.erase(processes.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return ended;
    }

    SystemHandle job; ///< its end is that of all processes in it
    std::vector<PooledProcess> processes;
};

ProcessPool::ProcessPool() : system_(std::make_unique<System>()) {}

ProcessPool::~ProcessPool()
{
    Stop();
}

std::size_t ProcessPool::Limit()
{
    return MAXIMUM_WAIT_OBJECTS;
}

Status ProcessPool::Start(std::size_t tag, const std::vector<std::string>& command)
{
    PooledProcess process;
    process.tag = tag;
    process.out = MakeTemporary();
    process.err = MakeTemporary();
    const SystemHandle input(CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                         OPEN_EXISTING, 0, nullptr));
    if (!process.out || !process.err || !input)
        return LastFailure();
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.Get();
    start.hStdOutput = process.out.Get();
    start.hStdError = process.err.Get();
    const HANDLE inherited[] = {start.hStdInput, start.hStdOutput, start.hStdError};
    for (const HANDLE handle : inherited)
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    std::string line = CommandLine(command);
    PROCESS_INFORMATION made{};
    // A group of its own: ctrl-C is for this program to decide on.
    const BOOL started =
        CreateProcessA(command[0].c_str(), line.data(), nullptr, nullptr, TRUE,
                       CREATE_NEW_PROCESS_GROUP | CREATE_SUSPENDED, nullptr, nullptr, &start, &made);
    const Status status = started ? Status() : LastFailure();
    for (const HANDLE handle : inherited)
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    if (!started)
        return status;
    const SystemHandle thread(made.hThread);
    process.handle = SystemHandle(made.hProcess);
    process.id = made.dwProcessId;
    AssignProcessToJobObject(system_->job.Get(), made.hProcess);
    ResumeThread(made.hThread);
    system_->processes.push_back(std::move(process));
    return {};
}

std::size_t ProcessPool::Running() const
{
    return system_->processes.size();
}

std::vector<EndedProcess> ProcessPool::Wait()
{
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> handles{};
    DWORD count = 0;
    for (const PooledProcess& process : system_->processes)
        handles[count++] = process.handle.Get();
    WaitForMultipleObjects(count, handles.data(), FALSE, kMilliseconds);
    return system_->ReapEnded(0);
}

std::vector<EndedProcess> ProcessPool::Stop()
{
    TerminateJobObject(system_->job.Get(), 1);
    return system_->ReapEnded(INFINITE);
}

} // namespace tv2
