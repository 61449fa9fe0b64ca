#include "tev2_loader/io/whole_file.h"

#include "tev2_loader/io/detail/file_system.h"
#include "tev2_loader/io/detail/part_file_name.h"
#include "tev2_loader/io/file_writer.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>

namespace TEV2_LOADER
{

namespace
{

using file_system::Target;

constexpr std::string_view kPartSuffix = ".part";
constexpr int kMostAttempts = 1000; ///< names taken by other processes whose number is the same

/// Removes a part file unless it was put into place.
class PartFile
{
public:
    PartFile() = default;
    ~PartFile()
    {
        if (!path.empty())
            file_system::Remove(path);
    }
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    std::string path; ///< empty: there is none
};

/// ".NAME." of a target.
std::string PartPrefix(const std::string& target)
{
    return "." + target.substr(file_system::FolderLength(target)) + ".";
}

/// Creates the part file of a target; null, and errno set, when that is not possible.
std::FILE* CreatePart(const Target& target, PartFile& part)
{
    static std::atomic<unsigned long> number{0};
    const std::string folder = target.path.substr(0, file_system::FolderLength(target.path));
    const std::string begin =
        folder + PartPrefix(target.path) + std::to_string(file_system::ProcessId()) + "-";
    for (int attempt = 0; attempt < kMostAttempts; ++attempt)
    {
        std::string path = begin + std::to_string(++number) + std::string(kPartSuffix);
        if (path.size() > kMostPathBytes)
        {
            errno = ENAMETOOLONG;
            return nullptr;
        }
        if (std::FILE* const file = file_system::CreateNew(path, target))
        {
            part.path = std::move(path);
            return file;
        }
        if (errno != EEXIST)
            return nullptr;
    }
    return nullptr;
}

/// True for errors that would meet a write to the target just as well: going there would only destroy what it holds.
bool ConcernsTheDisk(int error)
{
#if defined(EDQUOT)
    if (error == EDQUOT)
        return true;
#endif
    return error == ENOSPC || error == EIO || error == EMFILE || error == ENFILE || error == ENOMEM;
}

bool BeginsWith(const std::string& path, std::string_view begin)
{
    const auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(file_system::OpenForReading(path));
    std::string found(begin.size(), '\0');
    return file && std::fread(found.data(), 1, found.size(), file.get()) == found.size() && found == begin;
}

/// Fills an open file and closes it. 0, or why the file is not complete.
int Fill(std::FILE* file, const std::string& path, const FileContent& content, std::string_view begin)
{
    auto stream = std::make_unique<TEV2_FILE_STREAM>();
    stream->Take(file);
    bool complete = content(stream) && stream->lastError == 0;
    complete = stream->Close() && complete; // a successful close clears the latch
    if (complete && (begin.empty() || BeginsWith(path, begin)))
        return 0;
    return stream->FirstError() != 0 ? stream->FirstError() : EIO;
}

int WriteStraight(const std::string& path, const FileContent& content, std::string_view begin)
{
    std::FILE* const file = file_system::OpenForWriting(path);
    return file ? Fill(file, path, content, begin) : errno;
}

/// 0, or the errno value that says why the file was not written.
int Replace(const std::string& path, const FileContent& content, std::string_view begin)
{
    const Target target = file_system::Examine(path);
    if (target.error != 0)
        return target.error;
    const std::size_t folder = file_system::FolderLength(target.path);
    if ((target.exists && !target.replaceable) || folder == target.path.size())
        return WriteStraight(path, content, begin);

    file_system::RemoveAbandoned(target.path.substr(0, folder), PartPrefix(target.path),
                                 std::string(kPartSuffix));
    PartFile part;
    std::FILE* const file = CreatePart(target, part);
    if (!file)
    {
        const int error = errno;
        return target.exists && ConcernsTheDisk(error) ? error : WriteStraight(path, content, begin);
    }
    if (const int error = Fill(file, part.path, content, begin); error != 0)
        return error;
    if (!file_system::PutInPlace(part.path, target))
        return WriteStraight(path, content, begin);
    part.path.clear();
    return 0;
}

} // namespace

Status WriteWholeFile(const std::string& path, const FileContent& content, std::string_view begin)
{
    return Status::FromErrno(Replace(path, content, begin));
}

Status WriteWholeFile(const std::string& path, std::string_view bytes)
{
    return WriteWholeFile(path, [bytes](std::unique_ptr<TEV2_FILE_STREAM>& stream)
                          { return stream->Write(bytes.data(), bytes.size()) == bytes.size(); });
}

void RemovePartFiles(const std::string& folder, unsigned long process)
{
    std::error_code error;
    std::filesystem::directory_iterator entries(file_system::NativePath(folder.empty() ? "." : folder),
                                                error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error))
    {
        const std::string name = entries->path().filename().string();
        // ".NAME.<process>-<number>.part"
        const std::size_t dot = name.rfind('.', name.size() - std::min(name.size(), kPartSuffix.size() + 1));
        if (dot != std::string::npos && name.front() == '.' &&
            file_system::ProcessInName(name, name.substr(0, dot + 1), kPartSuffix) == process)
            std::filesystem::remove(entries->path(), error);
    }
}

} // namespace TEV2_LOADER
