// What WriteWholeFile leaves under the name, and beside it.

#include "tests/support/scratch_folder.h"

#include "tev2_loader/file.h"
#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/whole_file.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// The reason that a failure with this errno value has.
std::string Words(int error)
{
    return Status::FromErrno(error).Reason();
}

using Names = std::vector<std::string>;

struct stat StatusOf(const std::string& path)
{
    struct stat status
    {
    };
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t ModeOf(const std::string& path)
{
    return StatusOf(path).st_mode & 07777;
}

/// A process that has ended.
pid_t EndedProcess()
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return child;
}

/// A folder of one file.
class WholeFile : public testing::Test
{
protected:
    void SetModes(mode_t of_file, mode_t of_folder = 0755) const
    {
        ASSERT_EQ(::chmod(path.c_str(), of_file), 0);
        ASSERT_EQ(::chmod(folder.Path("").c_str(), of_folder), 0);
    }

    void ExpectAlone(const std::string& content) const
    {
        EXPECT_EQ(ReadText(path), content);
        EXPECT_EQ(folder.Names(), Names{"a"});
    }

    const ScratchFolder folder;
    const std::string path = folder.Make("a", "old");
};

TEST_F(WholeFile, ReplacesAFileAndKeepsItsPermissions)
{
    for (const mode_t mode : {0600u, 0664u, 0755u, 0200u})
    {
        SetModes(mode);
        const ino_t before = StatusOf(path).st_ino;
        EXPECT_TRUE(WriteWholeFile(path, "new"));
        EXPECT_EQ(ModeOf(path), mode);
        EXPECT_NE(StatusOf(path).st_ino, before) << "written into the old file";
    }
    SetModes(0600);
    ExpectAlone("new");

    const mode_t before = ::umask(027);
    EXPECT_TRUE(WriteWholeFile(folder.Path("b"), ""));
    ::umask(before);
    EXPECT_EQ(ModeOf(folder.Path("b")), 0640u) << "a new file has the usual ones";
}

TEST_F(WholeFile, IsWrittenUnderAnotherNameThatIsAsPrivate)
{
    SetModes(0600);
    const std::string part = ".a." + std::to_string(::getpid()) + "-";
    const auto content = [&](std::unique_ptr<TEV2_FILE_STREAM>& stream)
    {
        const Names names = folder.Names();
        EXPECT_EQ(names.size(), 2u);
        EXPECT_TRUE(names.front().starts_with(part) && names.front().ends_with(".part")) << names.front();
        EXPECT_EQ(ModeOf(folder.Path(names.front())), 0600u);
        EXPECT_EQ(ReadText(path), "old");
        return stream->Write("new", 3) == 3;
    };
    EXPECT_TRUE(WriteWholeFile(path, content));
    ExpectAlone("new");
}

TEST_F(WholeFile, FollowsLinks)
{
    std::filesystem::create_directories(folder.Path("far/there"));
    const std::string old_file = folder.Make("far/there/old", "old");
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"relative", "far/there/old", "far/there/old"},
        {"far/second", "../relative", "far/there/old"},
        {"dangling", "far/there/new", "far/there/new"},
        {"absolute", old_file, "far/there/old"}};
    for (const auto& [link, to, file] : cases)
    {
        std::filesystem::create_symlink(to, folder.Path(link));
        EXPECT_TRUE(WriteWholeFile(folder.Path(link), link));
        EXPECT_TRUE(std::filesystem::is_symlink(folder.Path(link))) << link;
        EXPECT_EQ(ReadText(folder.Path(file)), link);
    }
    std::filesystem::create_symlink("circle", folder.Path("circle"));
    EXPECT_EQ(WriteWholeFile(folder.Path("circle"), "new").Reason(), Words(ELOOP));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("circle")));
}

/// Every way for the content to be incomplete: the old file stays, and nothing else.
TEST_F(WholeFile, KeepsTheOldFileWhenTheContentIsIncomplete)
{
    using Stream = std::unique_ptr<TEV2_FILE_STREAM>;
    const auto write = [](Stream& stream) { return stream->Write("half", 4) == 4; };
    const struct
    {
        const char* what;
        FileContent content;
        int error;
    } cases[] = {{"it says so", [&](Stream& s) { return write(s) && false; }, EIO},
                 {"an error was latched", [&](Stream& s) { return write(s) && !s->Seek(-100); }, EINVAL},
                 {"it cannot be closed",
                  [&](Stream& s) { return write(s) && ::close(::fileno(s->handle)) == 0; }, EBADF},
                 {"it begins otherwise", [&](Stream& s) { return s->Write("Half", 4) == 4; }, EIO},
                 {"it is too short", [&](Stream& s) { return s->Write("h", 1) == 1; }, EIO}};
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.what);
        EXPECT_EQ(WriteWholeFile(path, item.content, "half").Reason(), Words(item.error));
        EXPECT_EQ(WriteWholeFile(folder.Path("new"), item.content, "half").Reason(), Words(item.error));
        ExpectAlone("old");
    }
    const FileContent thrower = [&](Stream&) -> bool { throw std::runtime_error("content"); };
    EXPECT_THROW((void)WriteWholeFile(path, thrower), std::runtime_error);
    ExpectAlone("old");
}

/// While it lives no file of this process may grow larger, and the signal for that is ignored.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST_F(WholeFile, KeepsTheOldSceneWhereverTheDiskEnds)
{
    TEV2 scene;
    ASSERT_TRUE(SaveFile(scene, path));
    const std::string old = ReadText(path);
    scene.information.infoText = TEV2_WIDE_STRING(std::u16string(300, u'x'));
    for (rlim_t bytes = 0; bytes < old.size() + 600; ++bytes)
    {
        const FileSizeLimit limit(bytes);
        ASSERT_EQ(SaveFile(scene, path).Reason(), Words(EFBIG)) << bytes;
        ASSERT_EQ(folder.Names(), Names{"a"}) << bytes;
        ASSERT_EQ(ReadText(path), old) << bytes;
    }
    const FileSizeLimit limit(old.size() + 600);
    EXPECT_TRUE(SaveFile(scene, path));
    EXPECT_EQ(ReadText(path).size(), old.size() + 600);
}

TEST_F(WholeFile, GoesStraightToTheNameWhereThereIsNoOtherWay)
{
    const auto written_into = [&](const std::string& file)
    {
        const ino_t before = StatusOf(file).st_ino;
        EXPECT_TRUE(WriteWholeFile(file, "new"));
        EXPECT_EQ(ReadText(file), "new");
        return StatusOf(file).st_ino == before;
    };
    EXPECT_TRUE(written_into(folder.Make(std::string(255, 'n'), "old")))
        << "the longest that file systems take";

    // Paths that only the part file would make too long: ".", ".", process, "-", number and ".part" are at least 12.
    for (const std::size_t length : {kMostPathBytes, kMostPathBytes - 9})
    {
        const std::string base = folder.Path("");
        ASSERT_LT(base.size() + 20, length - 120);
        const std::string sub(120, 'd');
        std::filesystem::create_directories(folder.Path(sub));
        const std::string name(length - base.size() - sub.size() - 1, 'n');
        EXPECT_TRUE(written_into(folder.Make(sub + "/" + name, "old")));
    }
    EXPECT_TRUE(WriteWholeFile("/dev/null", "new"));
    EXPECT_EQ(StatusOf("/dev/null").st_mode & S_IFMT, mode_t{S_IFCHR});
}

/// Permissions mean nothing to a superuser: the test takes the rights of another user, in a process of its own.
template <typename Test>
void AsOrdinaryUser(Test&& test)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        constexpr uid_t kNobody = 65534;
        if (::geteuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0))
            ::_exit(2);
        ::_exit(test() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 2)
        GTEST_SKIP() << "another user cannot be taken on here";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(WholeFile, GoesStraightToTheNameInAFolderThatMayNotBeChanged)
{
    SetModes(0666, 0555);
    AsOrdinaryUser(
        [&]
        {
            return WriteWholeFile(path, "new").Ok() &&
                   WriteWholeFile(folder.Path("b"), "new").Reason() == Words(EACCES);
        });
    ExpectAlone("new");
}

/// In a folder that all may write to, renaming would replace what its owner alone may write to.
TEST_F(WholeFile, DoesNotReplaceWhatMayNotBeWrittenTo)
{
    SetModes(0444, 0777);
    AsOrdinaryUser([&] { return WriteWholeFile(path, "new").Reason() == Words(EACCES); });
    ExpectAlone("old");
}

/// A file of another owner in a sticky folder may be written to but not replaced.
TEST_F(WholeFile, GoesStraightToTheNameWhenReplacingIsRefused)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "takes a superuser to prepare";
    SetModes(0666, 01777);
    const ino_t before = StatusOf(path).st_ino;
    AsOrdinaryUser([&] { return WriteWholeFile(path, "new").Ok(); });
    ExpectAlone("new");
    EXPECT_EQ(StatusOf(path).st_ino, before);
}

TEST_F(WholeFile, NeverWaitsForAPipe)
{
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(WriteWholeFile(pipe, "new"));
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(WriteWholeFile(pipe, "new").Reason(), Words(ESPIPE));
    ::close(reader);
    EXPECT_EQ(StatusOf(pipe).st_mode & S_IFMT, mode_t{S_IFIFO});
    EXPECT_EQ(WriteWholeFile(folder.Path(""), "new").Reason(), Words(EISDIR));
    EXPECT_EQ(WriteWholeFile(folder.Path("no/folder"), "new").Reason(), Words(ENOENT));
    EXPECT_EQ(WriteWholeFile("", "new").Reason(), Words(ENOENT));
    EXPECT_EQ(folder.Names(), (Names{"a", "pipe"}));
}

TEST_F(WholeFile, RemovesThePartFilesThatNobodyIsWriting)
{
    const std::string gone = std::to_string(EndedProcess());
    const std::string alive = std::to_string(::getppid());
    const std::string own = std::to_string(::getpid());
    for (const std::string& name : {gone + "-1", gone + "-77", own + "-9999"})
        folder.Make(".a." + name + ".part", "abandoned");
    Names kept = {".a." + alive + "-1.part",
                  ".b." + gone + "-1.part",
                  ".a." + gone + "-1.part.a",
                  ".a." + gone + ".part",
                  ".a." + gone + "-.part",
                  ".a.x" + gone + "-1.part",
                  ".a.-1.part",
                  "a." + gone + "-1.part",
                  "a"};
    for (const std::string& name : kept)
        folder.Make(name, "kept");
    EXPECT_TRUE(WriteWholeFile(path, "new"));
    std::ranges::sort(kept);
    EXPECT_EQ(folder.Names(), kept);
}

/// Another computer that shares the folder numbers its processes on its own.
TEST_F(WholeFile, LeavesAPartFileThatIsLockedWhateverItsProcess)
{
    const std::string part = ".a." + std::to_string(EndedProcess()) + "-1.part";
    const int locked = ::open(folder.Make(part, "half").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(locked, LOCK_EX | LOCK_NB), 0);
    EXPECT_TRUE(WriteWholeFile(path, "new"));
    EXPECT_EQ(folder.Names(), (Names{part, "a"}));
    ::close(locked);
    EXPECT_TRUE(WriteWholeFile(path, "newer"));
    ExpectAlone("newer");
}

TEST_F(WholeFile, LeavesThePartFileOfAWriteInProgress)
{
    const auto outer = [&](std::unique_ptr<TEV2_FILE_STREAM>& stream)
    {
        EXPECT_TRUE(WriteWholeFile(path, "inner"));
        EXPECT_EQ(folder.Names().size(), 2u);
        return stream->Write("outer", 5) == 5;
    };
    EXPECT_TRUE(WriteWholeFile(path, outer));
    ExpectAlone("outer");
}

} // namespace
