#include "tests/support/memory_file.h"
#include "tests/support/sample_scenes.h"

#include <cerrno>

// A save into a file that fails, in each way and at each moment: the error is latched, and what is left behind never
// passes for a complete file.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

enum class Call
{
    Write,
    Seek,
    Tell,
    Flush,
    Close,
};
constexpr Call kCalls[] = {Call::Write, Call::Seek, Call::Tell, Call::Flush, Call::Close};
constexpr const char* kCallNames[] = {"write", "seek", "tell", "flush", "close"};

/// The file whose calls are counted, and the one of them that fails.
struct Faults
{
    MemoryFile* file = nullptr;
    Call failing = Call::Write;
    long before = -1; ///< calls of that kind that pass; negative: all
    long counts[std::size(kCalls)] = {};

    bool Strikes(const std::FILE* stream, Call call)
    {
        if (file == nullptr || stream != file->stream)
            return false;
        return counts[static_cast<std::size_t>(call)]++ == before && call == failing;
    }
};
Faults faults;

constexpr int kErrno = EDQUOT; // no other call here leaves it behind

/// Whether this call is to fail; then with kErrno.
bool Fails(const std::FILE* stream, Call call)
{
    const bool fails = faults.Strikes(stream, call);
    if (fails)
        errno = kErrno;
    return fails;
}

} // namespace

// In the place of the functions of the C library.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C"
{
    std::size_t __real_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream);
    int __real_fseek(std::FILE* stream, long offset, int whence);
    long __real_ftell(std::FILE* stream);
    int __real_fflush(std::FILE* stream);
    int __real_fclose(std::FILE* stream);

    std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream)
    {
        if (faults.Strikes(stream, Call::Write))
            faults.file->next_write_fails = true;
        return __real_fwrite(data, size, count, stream);
    }

    int __wrap_fseek(std::FILE* stream, long offset, int whence)
    {
        return Fails(stream, Call::Seek) ? -1 : __real_fseek(stream, offset, whence);
    }

    long __wrap_ftell(std::FILE* stream)
    {
        return Fails(stream, Call::Tell) ? -1 : __real_ftell(stream);
    }

    int __wrap_fflush(std::FILE* stream)
    {
        return Fails(stream, Call::Flush) ? EOF : __real_fflush(stream);
    }

    int __wrap_fclose(std::FILE* stream)
    {
        const int closed = __real_fclose(stream); // in any case: it would leak
        return Fails(stream, Call::Close) ? EOF : closed;
    }
}
// NOLINTEND(bugprone-reserved-identifier)

namespace
{

constexpr std::size_t kBuffers[] = {0, 256, std::size_t{1} << 18};

class SaveFaults : public testing::Test
{
protected:
    void SetUp() override
    {
        FillWithEverything(scene_);
        complete_ = SceneImage(scene_);
    }

    void TearDown() override { faults = {}; }

    static bool Loads(const std::vector<std::uint8_t>& bytes) { return LoadImageOf(bytes)->loaded; }

    struct Outcome
    {
        bool saved;
        std::int32_t save_error; ///< latched when Save returned
        bool closed;
        std::int32_t close_error;
    };

    Outcome SaveInto(MemoryFile& file)
    {
        TEV2_FILE_WRITER writer = WriterInto(file);
        Outcome outcome{};
        outcome.saved = scene_.Save(writer);
        outcome.save_error = writer.stream->lastError;
        outcome.closed = writer.stream->Close();
        outcome.close_error = writer.stream->lastError;
        EXPECT_EQ(writer.stream->handle, nullptr);
        return outcome;
    }

    /// Saves with one call failing; false when there are not enough calls.
    bool SaveWithFault(Call call, long before)
    {
        MemoryFile file(0);
        faults = {&file, call, before};
        const Outcome outcome = SaveInto(file);
        if (faults.counts[static_cast<std::size_t>(call)] <= before)
            return false;
        if (call == Call::Close)
        {
            // All bytes had left before: the file is whole.
            EXPECT_EQ(outcome.save_error, 0);
            EXPECT_FALSE(outcome.closed);
            EXPECT_EQ(outcome.close_error, kErrno);
            EXPECT_EQ(file.bytes, complete_);
            return true;
        }
        EXPECT_EQ(outcome.save_error, call == Call::Write ? 1 : kErrno);
        EXPECT_TRUE(outcome.saved || call == Call::Write);
        EXPECT_TRUE(outcome.closed);
        EXPECT_EQ(outcome.close_error, 0); // as every successful close leaves it
        EXPECT_FALSE(Loads(file.bytes));
        failed_saves_ += outcome.saved ? 0 : 1;
        return true;
    }

    TEV2 scene_;
    std::vector<std::uint8_t> complete_;
    long failed_saves_ = 0;
};

TEST_F(SaveFaults, OfEachCallAreLatchedAndLeaveAFileThatIsRefused)
{
    for (const Call call : kCalls)
    {
        long calls = 0;
        while (!HasFailure() && SaveWithFault(call, calls))
            ++calls;
        ASSERT_FALSE(HasFailure()) << kCallNames[static_cast<std::size_t>(call)] << " " << calls;
        EXPECT_EQ(calls, faults.counts[static_cast<std::size_t>(call)]);
        EXPECT_GE(calls, call == Call::Flush || call == Call::Close ? 1 : 50);
    }
    // Some short writes show in the result, others in the latch alone.
    EXPECT_GT(failed_saves_, 100);
}

TEST_F(SaveFaults, OfADiskThatIsFullLeaveAFileThatIsRefused)
{
    for (const std::size_t buffer : kBuffers)
    {
        // A save for each byte would take a time that grows with the square of the file.
        for (std::size_t room = 0; room < complete_.size(); room += 7)
        {
            MemoryFile file(buffer);
            file.disk_size = room;
            const Outcome outcome = SaveInto(file);
            ASSERT_NE(outcome.save_error, 0) << room << " bytes, buffer of " << buffer;
            ASSERT_FALSE(Loads(file.bytes)) << room << " bytes, buffer of " << buffer;
        }
        MemoryFile file(buffer);
        file.disk_size = complete_.size();
        EXPECT_EQ(SaveInto(file).save_error, 0);
        EXPECT_EQ(file.bytes, complete_);
    }
}

/// Whatever was written when the program was killed. Bytes of one write may reach the disk in any order, but the magic
/// is the last write, after a flush.
TEST_F(SaveFaults, OfAProgramThatIsKilledLeaveAFileThatIsRefused)
{
    for (const std::size_t buffer : kBuffers)
    {
        SCOPED_TRACE(buffer);
        MemoryFile file(buffer);
        file.keep_journal = true;
        ASSERT_TRUE(SaveInto(file).saved);
        ASSERT_EQ(file.bytes, complete_);
        ASSERT_GE(file.journal.size(), 2u);
        EXPECT_EQ(file.journal.back().place, 0u);
        EXPECT_EQ(file.journal.back().bytes, Bytes().U32(kMagic).data);

        std::vector<std::uint8_t> disk;
        std::size_t refused = 0;
        for (const auto& write : file.journal)
            for (std::size_t index = 0; index < write.bytes.size(); ++index)
            {
                ++refused;
                ASSERT_FALSE(Loads(disk)) << write.place << " + " << index;
                disk.resize(std::max(disk.size(), write.place + index + 1));
                disk[write.place + index] = write.bytes[index];
            }
        EXPECT_EQ(disk, complete_);
        EXPECT_GE(refused, complete_.size());
    }
}

} // namespace
