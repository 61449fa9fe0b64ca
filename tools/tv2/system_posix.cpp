#include "tools/tv2/system.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

constexpr std::size_t kMostInput = 0xFFFFFFFF; // no scene is larger

} // namespace

std::string ModuleFileName(const std::string& name)
{
    return name + ".so";
}

std::string ProgramPath()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

bool ErrorsGoToTerminal()
{
    return ::isatty(STDERR_FILENO) != 0;
}

std::size_t TerminalColumns(Stream stream)
{
    winsize size{};
    const int file = stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO;
    return ::ioctl(file, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::size_t OutputColumns()
{
    return ::isatty(STDOUT_FILENO) != 0 ? TerminalColumns(Stream::kOutput) : 0;
}

void KeepStandardStreams()
{
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        if (::fcntl(file, F_GETFD) < 0)
        {
            // The lowest number that is free is this one; only reading works.
            static_cast<void>(::open("/dev/null", O_RDONLY));
        }
    }
}

void SurviveClosedPipes()
{
    std::signal(SIGPIPE, SIG_IGN);
}

Status ReadStandardInput(std::vector<std::uint8_t>& bytes)
{
    constexpr std::size_t kPiece = 1 << 16;
    while (true)
    {
        const std::size_t before = bytes.size();
        bytes.resize(before + kPiece);
        const ssize_t got = ::read(STDIN_FILENO, bytes.data() + before, kPiece);
        bytes.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got == 0)
            return {};
        if (got < 0 && errno != EINTR)
            return Status::Failure(std::strerror(errno));
        if (bytes.size() > kMostInput)
            return Status::Failure(std::strerror(EFBIG));
    }
}

int MakeWritable(const std::string& path)
{
    struct stat status;
    const bool made =
        ::stat(path.c_str(), &status) == 0 && ::chmod(path.c_str(), (status.st_mode & 07777) | S_IWUSR) == 0;
    return made ? 0 : errno;
}

namespace
{

/// Why a file of `bytes` bytes has no room in a folder: asks for the room in a file without a name.
int WhyNoRoom(const std::string& folder, std::uint64_t bytes)
{
    std::string name = folder + "/.tv2.XXXXXX";
    const int file = ::mkostemp(name.data(), O_CLOEXEC);
    if (file < 0)
        return errno;
    ::unlink(name.c_str());
    const int error = ::fallocate(file, 0, 0, static_cast<off_t>(bytes)) == 0 ? 0 : errno;
    ::close(file);
    return error == EOPNOTSUPP || error == ENOSYS ? 0 : error;
}

} // namespace

std::string WhyNotWritable(const std::string& path, std::uint64_t bytes)
{
    const FileStamp stamp = FileStamp::Of(path);
    int error = 0;
    if (stamp.exists)
    {
        const int file = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        error = file < 0 ? errno : 0;
        if (file >= 0)
            ::close(file);
    }
    if (error == 0 && (!stamp.exists || stamp.regular))
    {
        const std::string folder = std::filesystem::path(path).parent_path().string();
        error = WhyNoRoom(folder.empty() ? "." : folder, std::max<std::uint64_t>(bytes, 1));
    }
    return error == 0 ? std::string() : std::strerror(error);
}

Status MakePrivateFolder(std::string& path)
{
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    if (error)
        return Status::Failure("the temporary folder: " + error.message());
    path = (parent / "tv2.XXXXXX").string();
    return ::mkdtemp(path.data()) != nullptr ? Status() : Status::Failure(path + ": " + std::strerror(errno));
}

namespace
{

/// Starts a program in a session of its own, without input and output. Returns 0 or the error.
int StartDetached(const char* program, const std::string& argument, pid_t& process)
{
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    std::string name = program;
    std::string copy = argument;
    char* arguments[] = {name.data(), copy.data(), nullptr};
    const int error = ::posix_spawnp(&process, program, &files, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return error;
}

} // namespace

Status OpenInBrowser(const std::string& absolute_path)
{
    const auto is_set = [](const char* variable)
    {
        const char* const value = std::getenv(variable);
        return value != nullptr && *value != '\0';
    };
    if (!is_set("DISPLAY") && !is_set("WAYLAND_DISPLAY"))
        return Status::Failure("there is no display");
    constexpr const char* kOpener = "xdg-open";
    pid_t process = 0;
    if (const int error = StartDetached(kOpener, absolute_path, process); error != 0)
        return Status::Failure(std::string(kOpener) + ": " + std::strerror(error));
    // With some desktops it runs as long as the browser; when it fails it does so soon.
    for (int tenths = 0; tenths < 20; ++tenths)
    {
        int ended = 0;
        if (::waitpid(process, &ended, WNOHANG) == process)
        {
            return WIFEXITED(ended) && WEXITSTATUS(ended) == 0
                       ? Status()
                       : Status::Failure(std::string(kOpener) + " found no browser");
        }
        ::usleep(100'000);
    }
    return {};
}

std::size_t ProcessorCount()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    const int count =
        ::sched_getaffinity(0, sizeof processors, &processors) == 0 ? CPU_COUNT(&processors) : 1;
    return static_cast<std::size_t>(std::max(count, 1));
}

namespace
{

volatile std::sig_atomic_t interruption = 0;

void NoteInterruption(int signal)
{
    if (interruption == 0)
    {
        interruption = signal;
        return;
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal); // comes when this function returns
}

} // namespace

void CatchInterruptions()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        struct sigaction action
        {
        };
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
            continue; // as nohup and shells arrange it
        action.sa_handler = NoteInterruption;
        action.sa_flags = 0; // calls that wait return
        ::sigaction(signal, &action, nullptr);
    }
}

int Interruption()
{
    return interruption;
}

void EndInterrupted()
{
    std::signal(interruption, SIG_DFL);
    std::raise(interruption);
    std::_Exit(128 + interruption); // where the signal is blocked
}

void ReportFileSizeLimit()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tv2
