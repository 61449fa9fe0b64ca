#include "tools/tv2/system.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/statvfs.h>
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

std::string WhyNotWritable(const std::string& path)
{
    const FileStamp stamp = FileStamp::Of(path);
    const int file = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
    {
        return std::strerror(errno);
    }
    std::string reason;
    const char probe = 0;
    // A device that is no terminal tells by a byte; a file keeps what it has, its disk tells by the room it has left.
    struct stat status;
    struct statvfs disk;
    const bool device = ::fstat(file, &status) == 0 && S_ISCHR(status.st_mode) && ::isatty(file) == 0;
    if (stamp.regular && ::fstatvfs(file, &disk) == 0 && disk.f_bavail == 0)
    {
        reason = std::strerror(ENOSPC);
    }
    else if (device && ::write(file, &probe, 1) < 0)
    {
        reason = std::strerror(errno);
    }
    ::close(file);
    return reason;
}
