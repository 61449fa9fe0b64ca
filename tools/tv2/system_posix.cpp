#include "tools/tv2/system.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/ioctl.h>
#include <sys/stat.h>
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

void ReportFileSizeLimit()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tv2
