#include "tests/support/records.h"

#include "tev2_loader/io/file_writer.h"

#include <cerrno>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(FileWriter, FramesChunksAndGuardsWhatLiesOutside)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("chunks");
    {
        TEV2_FILE_WRITER writer = WriterTo(path);
        EXPECT_FALSE(writer.EndChunk());
        EXPECT_EQ(writer.Write("lost", 4), 0u);
        EXPECT_FALSE(writer.WriteU32(1));
        EXPECT_FALSE(writer.WriteU64(1));

        EXPECT_TRUE(writer.BeginChunk());
        EXPECT_FALSE(writer.BeginChunk());
        EXPECT_TRUE(writer.WriteU32(99));
        EXPECT_TRUE(writer.EndChunk());
        EXPECT_FALSE(writer.EndChunk());

        EXPECT_TRUE(writer.BeginChunk());
        EXPECT_TRUE(writer.WriteU32(7));
        EXPECT_EQ(writer.Write("abc", 3), 3u);
        EXPECT_TRUE(writer.WriteF32(1.0f));
        EXPECT_TRUE(writer.WriteI32(-2));
        EXPECT_TRUE(writer.EndChunk());
        EXPECT_EQ(writer.Write("lost", 4), 0u);

        EXPECT_TRUE(writer.BeginChunk()); // stays open: its size is not filled in
        EXPECT_TRUE(writer.WriteU64(0x0102030405060708u));
        EXPECT_EQ(writer.stream->lastError, 0);
    }
    const Bytes numbers = Bytes().U8({'a', 'b', 'c', 0, 0, 0x80, 0x3F, 0xFE, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(ReadBytes(path), Bytes::Of(8u, 99u, 19u, 7u, numbers, 0u, 0x05060708u, 0x01020304u).data);
}

TEST(FileWriter, ReplacesOrAppends)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("append");
    for (const bool append : {false, false, true})
    {
        TEV2_FILE_WRITER writer = WriterTo(path, append, false);
        writer.Write("ab", 2);
    }
    EXPECT_EQ(ReadBytes(path), Bytes().U8({'a', 'b', 'a', 'b'}).data);
}

TEST(FileWriter, FallsShortWhenTheFileCannotBeOpened)
{
    const ScratchFolder folder;
    TEV2_FILE_WRITER writer = WriterTo(folder.Path("no") + "/such/folder.tv2");
    EXPECT_EQ(writer.stream->lastError, ENOENT);
    EXPECT_EQ(writer.stream->handle, nullptr);
    EXPECT_TRUE(writer.BeginChunk());
    EXPECT_EQ(writer.stream->lastError, EBADF);
    EXPECT_EQ(writer.Write("abcd", 4), 0u);
    EXPECT_TRUE(writer.EndChunk());
}

TEST(FileStream, LatchesUntilItIsOpenedOrClosed)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("latch");
    TEV2_FILE_STREAM stream;
    EXPECT_EQ(stream.Write("a", 1), 0u);
    EXPECT_EQ(stream.lastError, EBADF);
    EXPECT_FALSE(stream.Seek(0));
    EXPECT_EQ(stream.Tell(), -1);
    EXPECT_FALSE(stream.Flush());

    ASSERT_TRUE(stream.Open(path, "wb"));
    EXPECT_EQ(stream.lastError, 0);
    stream.lastError = 5;
    EXPECT_EQ(stream.Write("abc", 3), 3u);
    EXPECT_EQ(stream.lastError, 5);
    EXPECT_TRUE(stream.Close());
    EXPECT_EQ(stream.lastError, 0);
}

TEST(FileStream, SeeksFromTheEndForNegativePositions)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("seek");
    TEV2_FILE_STREAM stream;
    ASSERT_TRUE(stream.Open(path, "wb"));
    stream.Write("abcdef", 6);
    EXPECT_TRUE(stream.Seek(-2));
    EXPECT_EQ(stream.Tell(), 4);
    stream.Write("X", 1);
    EXPECT_TRUE(stream.Seek(1));
    stream.Write("Y", 1);
    EXPECT_FALSE(stream.Seek(-100));
    EXPECT_EQ(stream.lastError, EINVAL);
    stream.Close();
    EXPECT_EQ(ReadBytes(path), Bytes().U8({'a', 'Y', 'c', 'd', 'X', 'f'}).data);
}

TEST(FileStream, ReportsPositionsBeyondTwoGigabytes)
{
    const ScratchFolder folder;
    TEV2_FILE_STREAM stream;
    ASSERT_TRUE(stream.Open(folder.Path("large"), "wb"));
    ASSERT_EQ(std::fseek(stream.handle, 0x7FFFFFFF, SEEK_SET), 0);
    EXPECT_EQ(stream.Tell(), 0x7FFFFFFF);
    ASSERT_EQ(std::fseek(stream.handle, 1, SEEK_CUR), 0);
    EXPECT_EQ(stream.Tell(), -1);
    EXPECT_EQ(stream.lastError, EFBIG);
}

TEST(NarrowFileName, TakesBytesOfUtf8AsTheyAreAndEverythingElseAsTheSystemDoes)
{
    const std::pair<std::u16string, std::string> cases[] = {
        {u"plain.tv2", "plain.tv2"},
        {u"caf\u00C3\u00A9.tv2", "caf\xC3\xA9.tv2"},
#if !defined(_WIN32) // there the code page decides
        {u"caf\u00E9.tv2", "caf\xC3\xA9.tv2"},
        {u"caf\u00E9 \u20AC", "caf\xC3\xA9 \xE2\x82\xAC"},
        {u"\u00C3\u00A9\u00FF", "\xC3\x83\xC2\xA9\xC3\xBF"},
        {u"\u00E9\u4E2D", "\xC3\xA9\xE4\xB8\xAD"},
        {u"\U0001F600", "\xF0\x9F\x98\x80"},
        {std::u16string{u'a', 0xD83D, u'b'}, "a\xEF\xBF\xBD"
                                             "b"},
        {std::u16string{0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
#endif
        {std::u16string(300, u'x'), std::string(260, 'x')},
    };
    for (const auto& [wide, narrow] : cases)
        EXPECT_EQ(NarrowFileName(TEV2_WIDE_STRING(wide)), narrow);
}

} // namespace
