#include "tev2_playback/load_async.h"

#include "tests/support/sample_scenes.h"
#include "tests/support/scratch_folder.h"
#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"
#include "tev2_playback/player.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <utility>

#if defined(__unix__)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace tv2_tests;
using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

using SteadyClock = std::chrono::steady_clock;

class AsyncLoad : public ::testing::Test
{
protected:
    ScratchFolder folder;
    const std::vector<std::uint8_t> image = SoundImage();

    std::string File(const char* name) const
    {
        WriteBytes(folder.Path(name), image);
        return folder.Path(name);
    }
};

/// Milliseconds that something takes.
template <typename Work>
double Milliseconds(const Work& work)
{
    const SteadyClock::time_point begin = SteadyClock::now();
    work();
    return std::chrono::duration<double, std::milli>(SteadyClock::now() - begin).count();
}

TEST_F(AsyncLoad, AFileThatChangesWhileItIsReadIsReadToItsNewEnd)
{
    const std::vector<std::uint8_t> bytes(200000, 7);
    for (const std::size_t end : {std::size_t{300000}, std::size_t{100000}, std::size_t{10}})
    {
        const std::string path = folder.Path("changing");
        WriteBytes(path, bytes);
        std::vector<std::uint8_t> read;
        std::uint64_t size = 0;
        const auto resize_after_a_block = [&](std::uint64_t done, std::uint64_t total)
        {
            if (done == 65536)
                std::filesystem::resize_file(path, end);
            size = total;
            return true;
        };
        ASSERT_TRUE(ReadFileImage(path, read, 0, resize_after_a_block));
        EXPECT_EQ(read.size(), std::max<std::size_t>(end, 65536));
        EXPECT_EQ(size, bytes.size());
    }
}

TEST_F(AsyncLoad, GivesTheClipOfTheFile)
{
    TEV2 scene;
    ASSERT_TRUE(LoadMemory(image.data(), image.size(), scene, {.applyStartTime = false}));
    const Clip expected(scene);
    PendingClip pending = LoadAsync(File("walk.tv2"));
    Clip clip;
    ASSERT_TRUE(pending.Take(clip));
    EXPECT_TRUE(pending.Done());
    EXPECT_EQ(pending.Progress().bytesRead, image.size());
    EXPECT_EQ(pending.Progress().bytesTotal, image.size());
    EXPECT_EQ(clip.NodeCount(), expected.NodeCount());
    Player player(clip);
    Player other(expected);
    player.SetTime(0.25f);
    other.SetTime(0.25f);
    EXPECT_EQ(std::memcmp(player.World().data(), other.World().data(), player.World().size_bytes()), 0);
}

TEST_F(AsyncLoad, TheResultIsTakenOnce)
{
    PendingClip pending = LoadAsync(File("walk.tv2"));
    Clip clip;
    EXPECT_TRUE(pending.Take(clip));
    const std::size_t nodes = clip.NodeCount();
    EXPECT_NE(pending.Take(clip).Reason().find("walk.tv2: taken already"), std::string::npos);
    EXPECT_EQ(clip.NodeCount(), nodes);
    EXPECT_FALSE(PendingClip().Take(clip).Reason().empty());
    EXPECT_TRUE(PendingClip().Done());
}

TEST_F(AsyncLoad, FailuresNameFileAndCause)
{
    WriteBytes(folder.Path("cut.tv2"), {image.begin(), image.end() - 1});
    const std::pair<std::string, std::string> cases[] = {
        {folder.Path("none.tv2"), Status::FromErrno(ENOENT).Reason()},
        {folder.Path(""), Status::FromErrno(EISDIR).Reason()},
        {folder.Path("cut.tv2"),
         [&]
         {
             TEV2 scene;
             return LoadFile(folder.Path("cut.tv2"), scene).Reason();
         }()},
    };
    ClipLoader loader;
    for (const auto& [path, cause] : cases)
    {
        Clip clip;
        EXPECT_EQ(loader.Load(path).Take(clip).Reason(), path + ": " + cause);
        EXPECT_EQ(clip.NodeCount(), 0u);
    }
    Clip clip;
    EXPECT_EQ(loader.Load(File("walk.tv2"), {.mostFileBytes = 100}).Take(clip).Reason(),
              folder.Path("walk.tv2") + ": larger than 100 bytes");
}

TEST_F(AsyncLoad, SeveralWaitForOneThreadInTheirOrder)
{
    const std::string path = File("walk.tv2");
    ClipLoader loader;
    std::vector<PendingClip> pending;
    for (int file = 0; file < 20; ++file)
        pending.push_back(loader.Load(path));
    Clip clip;
    EXPECT_TRUE(pending.back().Take(clip));
    for (PendingClip& before : pending)
        EXPECT_TRUE(before.Done());
}

/// Memory that fails, or that says when a clip is being built.
class WatchedMemory : public std::pmr::memory_resource
{
public:
    bool fails = false;
    std::thread::id thread;
    std::atomic<int> pieces = 0; ///< that are taken

private:
    void* do_allocate(std::size_t size, std::size_t alignment) override
    {
        thread = std::this_thread::get_id();
        if (fails)
            throw std::bad_alloc();
        ++pieces;
        return std::pmr::new_delete_resource()->allocate(size, alignment);
    }
    void do_deallocate(void* memory, std::size_t size, std::size_t alignment) override
    {
        --pieces;
        std::pmr::new_delete_resource()->deallocate(memory, size, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
};

TEST_F(AsyncLoad, BuildsOnTheThreadInTheMemoryGiven)
{
    WatchedMemory memory;
    {
        Clip clip;
        ASSERT_TRUE(LoadAsync(File("walk.tv2"), {.clip = {.memory = &memory}}).Take(clip));
        EXPECT_NE(memory.thread, std::thread::id());
        EXPECT_NE(memory.thread, std::this_thread::get_id());
    }
    memory.fails = true;
    Clip clip;
    EXPECT_EQ(LoadAsync(File("walk.tv2"), {.clip = {.memory = &memory}}).Take(clip).Reason(),
              folder.Path("walk.tv2") + ": out of memory");
}

TEST_F(AsyncLoad, ClipsThatNobodyTakesLeaveTheirMemoryAtOnce)
{
    const std::string path = File("walk.tv2");
    WatchedMemory memory;
    ClipLoader loader;
    for (int load = 0; load < 1000; ++load)
    {
        {
            const PendingClip pending = loader.Load(path, {.clip = {.memory = &memory}});
            if (load % 2 == 0)
                pending.Wait();
        }
        ASSERT_EQ(memory.pieces, 0) << "load " << load;
    }
}

#if defined(__unix__)

/// A pipe in the file system that nothing is written to until a test does.
class AsyncPipe : public AsyncLoad
{
protected:
    const std::string pipe = folder.Path("pipe");

    void SetUp() override { ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0); }

    /// Writes a part of the image once the reader has opened its end.
    static void Write(int writer, const std::vector<std::uint8_t>& bytes, std::size_t begin, std::size_t end)
    {
        ASSERT_EQ(::write(writer, bytes.data() + begin, end - begin), static_cast<ssize_t>(end - begin));
    }
};

TEST_F(AsyncPipe, IsReadToItsEnd)
{
    PendingClip pending = LoadAsync(pipe);
    const int writer = ::open(pipe.c_str(), O_WRONLY);
    Write(writer, image, 0, 100);
    while (pending.Progress().bytesRead < 100)
        std::this_thread::yield();
    EXPECT_EQ(pending.Progress().stage, LoadStage::Reading);
    EXPECT_EQ(pending.Progress().bytesTotal, 0u);
    Write(writer, image, 100, image.size());
    ::close(writer);
    Clip clip;
    EXPECT_TRUE(pending.Take(clip));
    EXPECT_EQ(clip.NodeCount(), 3u);
}

TEST_F(AsyncPipe, CancelEndsAReadThatNothingArrivesFor)
{
    // A pipe without a writer blocks a program that opens it, one with a silent writer a program that reads it.
    for (const bool opened : {false, true})
    {
        ClipLoader loader;
        PendingClip first = loader.Load(pipe);
        PendingClip second = loader.Load(File("walk.tv2"));
        const int writer = opened ? ::open(pipe.c_str(), O_WRONLY) : -1;
        while (first.Progress().stage != LoadStage::Reading)
            std::this_thread::yield();
        EXPECT_EQ(second.Progress().stage, LoadStage::Waiting);

        PendingClip third = loader.Load(File("walk.tv2"));
        third.Cancel();
        EXPECT_TRUE(third.Done()); // although the thread is busy

        Clip clip;
        EXPECT_LT(Milliseconds(
                      [&]
                      {
                          first.Cancel();
                          EXPECT_EQ(first.Take(clip).Reason(), pipe + ": cancelled");
                      }),
                  2000.0);
        EXPECT_TRUE(second.Take(clip));
        if (opened)
            ::close(writer);
    }
}

TEST_F(AsyncPipe, DestructionCancels)
{
    { // of a load that has a thread of its own, of one that is replaced, of a loader before its loads
        PendingClip alone = LoadAsync(pipe);
        alone = LoadAsync(pipe);
    }
    PendingClip reading, waiting;
    {
        ClipLoader loader;
        reading = loader.Load(pipe);
        waiting = loader.Load(pipe);
        while (reading.Progress().stage != LoadStage::Reading)
            std::this_thread::yield();
    }
    Clip clip;
    EXPECT_EQ(reading.Take(clip).Reason(), pipe + ": cancelled");
    EXPECT_EQ(waiting.Take(clip).Reason(), pipe + ": cancelled");
}

#endif

} // namespace
