#include "tev2_loader/io/detail/file_system.h"

#include "tev2_loader/io/detail/part_file_name.h"

#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace TEV2_LOADER::file_system
{

namespace
{

constexpr mode_t kPermissions = 07777;
constexpr mode_t kNewFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH; // less the umask

/// An open file, closed at the end.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return number_; }
    bool IsOpen() const { return number_ >= 0; }

    /// As a stream that owns it; null, and errno set, on failure.
    std::FILE* Stream(const char* mode = "wb")
    {
        std::FILE* const stream = ::fdopen(number_, mode);
        if (stream)
            number_ = -1;
        return stream;
    }

private:
    int number_;
};

/// What the link at a path points to; empty when there is no link.
std::string LinkedTo(const std::string& path)
{
    struct stat status;
    if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
        return {};
    std::vector<char> text(4096);
    const ssize_t size = ::readlink(path.c_str(), text.data(), text.size());
    if (size <= 0 || static_cast<std::size_t>(size) == text.size())
        return {};
    std::string target(text.data(), static_cast<std::size_t>(size));
    return target[0] == '/' ? target : path.substr(0, FolderLength(path)) + target;
}

/// Follows the links at the end of a path, also to a file that is not there yet.
std::string ResolveLinks(std::string path)
{
    constexpr int kMostLinks = 40;
    for (int link = 0; link < kMostLinks; ++link)
    {
        std::string next = LinkedTo(path);
        if (next.empty())
            break;
        path = std::move(next);
    }
    return path;
}

/// False for a link to an open file, as in /proc, which resolves to something that is not its path. Another program may
/// replace the file between two looks, so one difference proves nothing.
bool LeadToOneFile(const std::string& link, const std::string& resolved)
{
    constexpr int kMostLooks = 100;
    for (int look = 0; look < kMostLooks; ++look)
    {
        struct stat by_link, by_name;
        if (::stat(link.c_str(), &by_link) != 0 || ::stat(resolved.c_str(), &by_name) != 0)
            return false;
        if (by_link.st_dev == by_name.st_dev && by_link.st_ino == by_name.st_ino)
            return true;
    }
    return false;
}

bool IsGone(unsigned long process)
{
    const auto id = static_cast<pid_t>(process);
    return id <= 0 || static_cast<unsigned long>(id) != process || (::kill(id, 0) != 0 && errno == ESRCH);
}

/// True when nobody holds the lock that every writer takes on its part file. A shared lock is enough to find that out,
/// and network file systems give no other on a file that is open for reading.
bool IsUnlocked(const std::string& path)
{
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    return file.IsOpen() && ::flock(file.Get(), LOCK_SH | LOCK_NB) == 0;
}

} // namespace

Target Examine(const std::string& path)
{
    Target target;
    target.path = path;
    struct stat status;
    if (::stat(path.c_str(), &status) != 0)
    {
        target.error = errno == ENOENT ? 0 : errno;
        target.path = ResolveLinks(path);
        return target;
    }
    target.exists = true;
    target.mode = status.st_mode & kPermissions;
    target.owner = status.st_uid;
    target.group = status.st_gid;
    if (!S_ISREG(status.st_mode))
        return target;
    const std::string resolved = ResolveLinks(path);
    target.replaceable = resolved == path || LeadToOneFile(path, resolved);
    if (target.replaceable)
        target.path = resolved;
    // Renaming needs rights on the folder only; a file that may not be written to must not be replaced either.
    if (!Descriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)).IsOpen())
        target.error = errno;
    return target;
}

std::filesystem::path NativePath(const std::string& path)
{
    return path;
}

std::FILE* OpenForReading(const std::string& path)
{
    return std::fopen(path.c_str(), "rb");
}

std::FILE* OpenWithoutWaiting(const std::string& path)
{
    Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return file.IsOpen() ? file.Stream("rb") : nullptr;
}

bool AwaitBytes(std::FILE* file)
{
    constexpr int kMilliseconds = 5;
    pollfd waiting = {::fileno(file), POLLIN, 0};
    return ::poll(&waiting, 1, kMilliseconds) != 0;
}

std::size_t FolderLength(const std::string& path)
{
    const std::size_t separator = path.find_last_of('/');
    return separator == std::string::npos ? 0 : separator + 1;
}

std::FILE* CreateNew(const std::string& path, const Target& replaced)
{
    const mode_t mode = replaced.exists ? (replaced.mode & kNewFile) | S_IRUSR | S_IWUSR : kNewFile;
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file.IsOpen())
        return nullptr;
    // Without locks, part files are never removed as abandoned.
    static_cast<void>(::flock(file.Get(), LOCK_EX | LOCK_NB));
    std::FILE* const stream = file.Stream();
    if (!stream)
    {
        const int error = errno;
        ::unlink(path.c_str());
        errno = error;
    }
    return stream;
}

std::FILE* OpenForWriting(const std::string& path)
{
    constexpr int kNeverWait = O_NONBLOCK | O_NOCTTY;
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | kNeverWait | O_CLOEXEC, kNewFile));
    struct stat status;
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0)
        return nullptr;
    if (!S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode) && !S_ISBLK(status.st_mode))
    {
        errno = ESPIPE;
        return nullptr;
    }
    return file.Stream();
}

bool PutInPlace(const std::string& part, const Target& target)
{
    struct stat status;
    if (target.exists && ::stat(part.c_str(), &status) == 0)
    {
        // Who may not give a file away keeps it; the group matters more often.
        if ((status.st_uid != target.owner && ::chown(part.c_str(), target.owner, target.group) != 0) ||
            status.st_gid != target.group)
            static_cast<void>(!::chown(part.c_str(), static_cast<uid_t>(-1), target.group));
        if (::chmod(part.c_str(), static_cast<mode_t>(target.mode)) != 0)
            return false;
    }
    return ::rename(part.c_str(), target.path.c_str()) == 0;
}

void Remove(const std::string& path)
{
    ::unlink(path.c_str());
}

unsigned long ProcessId()
{
    return static_cast<unsigned long>(::getpid());
}

void RemoveAbandoned(const std::string& folder, const std::string& prefix, const std::string& suffix)
{
    const auto close = [](DIR* listing) { ::closedir(listing); };
    const std::unique_ptr<DIR, decltype(close)> listing(::opendir(folder.empty() ? "." : folder.c_str()));
    if (!listing)
        return;
    std::vector<std::string> found;
    while (const dirent* const entry = ::readdir(listing.get()))
        if (const auto process = ProcessInName(entry->d_name, prefix, suffix))
        {
            // Numbers of processes are used again, and another computer that shares the folder has its own: the lock
            // decides. A process that runs here may be about to take it.
            const std::string path = folder + entry->d_name;
            if ((*process == ProcessId() || IsGone(*process)) && IsUnlocked(path))
                found.push_back(path);
        }
    for (const std::string& path : found)
        Remove(path);
}

} // namespace TEV2_LOADER::file_system
