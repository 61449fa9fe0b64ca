#include "tools/tv2/system.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

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
    {
        return errno;
    }
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
        {
            ::close(file);
        }
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
