// Processes that are killed while they save, and processes that save to one file at once.

#include "tests/support/scratch_folder.h"

#include "tev2_loader/file.h"

#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// A scene whose file is filled with one letter.
struct Scene : TEV2
{
    Scene(char16_t letter, std::size_t size)
    {
        information.infoText = TEV2_WIDE_STRING(std::u16string(size, letter));
    }
};

std::string FileOf(const TEV2& scene, const ScratchFolder& folder)
{
    EXPECT_TRUE(SaveFile(scene, folder.Path("expected")));
    std::string content = ReadText(folder.Path("expected"));
    std::filesystem::remove(folder.Path("expected"));
    return content;
}

enum class End
{
    kKilled,
    kFinished,
    kNotTraced
};

/// Saves in a process that is killed when it enters or leaves its system call number `stop`.
End SaveAndKill(const TEV2& scene, const std::string& path, int stop)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(2);
        ::raise(SIGSTOP);
        ::_exit(SaveFile(scene, path).Ok() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    for (int i = 0; i < stop && WIFSTOPPED(status); ++i)
    {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &status, 0);
    }
    if (WIFEXITED(status))
        return WEXITSTATUS(status) == 0 ? End::kFinished : End::kNotTraced;
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    return End::kKilled;
}

TEST(InterruptedExport, LeavesTheOldFileOrTheNewAndAtMostItsPartFile)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("a.tv2");
    const Scene old_scene(u'o', 10);
    const Scene new_scene(u'n', 20);
    const std::string old_file = FileOf(old_scene, folder);
    const std::string new_file = FileOf(new_scene, folder);
    std::size_t abandoned = 0;
    End end = End::kKilled;
    for (int stop = 1; end == End::kKilled; ++stop)
    {
        ASSERT_TRUE(SaveFile(old_scene, path));
        end = SaveAndKill(new_scene, path, stop);
        if (end == End::kNotTraced)
            GTEST_SKIP() << "processes cannot be traced here";
        const std::string found = ReadText(path);
        ASSERT_TRUE(found == new_file || (found == old_file && end == End::kKilled)) << stop;
        const std::size_t files = folder.Names().size();
        ASSERT_LE(files, 2u) << stop;
        abandoned += files - 1;

        ASSERT_TRUE(SaveFile(new_scene, path)) << stop;
        ASSERT_EQ(folder.Names(), std::vector<std::string>{"a.tv2"}) << stop;
        ASSERT_EQ(ReadText(path), new_file) << stop;
    }
    EXPECT_GT(abandoned, 20u) << "most moments are between creating and renaming";
}

TEST(InterruptedExport, OfTwoAtOnceGivesOneOfTheTwo)
{
    constexpr int kRounds = 150;
    const ScratchFolder folder;
    const std::string path = folder.Path("a.tv2");
    const Scene scenes[] = {{u'1', 30'000}, {u'2', 50'000}};
    const std::string files[] = {FileOf(scenes[0], folder), FileOf(scenes[1], folder)};
    ASSERT_TRUE(SaveFile(scenes[0], path));
    pid_t writers[2] = {};
    for (int i = 0; i < 2; ++i)
    {
        writers[i] = ::fork();
        if (writers[i] == 0)
        {
            int failures = 0;
            for (int round = 0; round < kRounds; ++round)
                failures += SaveFile(scenes[i], path).Ok() ? 0 : 1;
            ::_exit(failures == 0 ? 0 : 1);
        }
    }
    int seen[2] = {};
    for (int running = 2; running > 0;)
    {
        const std::string found = ReadText(path);
        const int which = found == files[0] ? 0 : 1;
        ASSERT_EQ(found == files[which], true) << found.size() << " bytes";
        ++seen[which];
        int status = 0;
        for (pid_t& writer : writers)
            if (writer != 0 && ::waitpid(writer, &status, WNOHANG) == writer)
            {
                EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
                writer = 0;
                --running;
            }
    }
    EXPECT_GT(seen[0] + seen[1], 2);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.tv2"});
}

} // namespace
