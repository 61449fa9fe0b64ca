// What the runtime of this system does to the writer's files: their names and their bytes.

#include "tests/windows/scratch_folder.h"

#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/file_writer.h"

namespace TEV2_LOADER
{
namespace
{

using tev2_tests::ScratchFolder;

bool Write(const std::u16string& path, const std::string& bytes, bool append = false)
{
    TEV2_FILE_WRITER writer(TEV2_WIDE_STRING(path), append, false);
    const bool whole = writer.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size())) == bytes.size();
    return whole && writer.stream->Close();
}

TEST(Writer, WritesBytesAsTheyAre)
{
    const ScratchFolder folder;
    std::string bytes;
    for (int i = 0; bytes.size() < 1'500'000; ++i)
    {
        bytes += "line\n";
        bytes += "\r\n\x1A"; // the end of a file in text mode
        bytes.push_back(static_cast<char>(i & 0xFF));
        bytes.append(static_cast<std::size_t>(i % 7), '\0');
    }
    ASSERT_TRUE(Write(folder.Path(u"bytes"), bytes));
    EXPECT_TRUE(folder.Content(u"bytes") == bytes);
    ASSERT_TRUE(Write(folder.Path(u"bytes"), "\n\x1A", true));
    EXPECT_TRUE(folder.Content(u"bytes") == bytes + "\n\x1A");

    std::vector<std::uint8_t> image;
    const Status read = ReadFileImage(Utf8Path(folder.BytePath(u"bytes")), image);
    ASSERT_TRUE(read) << read.Reason();
    EXPECT_TRUE(std::string(image.begin(), image.end()) == bytes + "\n\x1A");
}

TEST(Writer, PatchesSizesInPlace)
{
    const ScratchFolder folder;
    {
        TEV2_FILE_WRITER writer(TEV2_WIDE_STRING(folder.Path(u"chunk")), false, true);
        EXPECT_TRUE(writer.BeginChunk());
        EXPECT_TRUE(writer.WriteU32(0x0A0D0A0D));
        EXPECT_TRUE(writer.EndChunk());
        EXPECT_EQ(writer.stream->lastError, 0);
    }
    EXPECT_EQ(folder.Content(u"chunk"), std::string("\x08\0\0\0\r\n\r\n", 8));
}

TEST(Writer, TakesNamesOfTheCodePage)
{
    if (GetACP() != 1252)
        GTEST_SKIP() << "the names are of code page 1252, this is " << GetACP();
    // The first three fit a byte each and are those bytes; the others go through the code page.
    for (const std::u16string name :
         {u"plain.tv2", u"caf\u00E9.tv2", u"\u00C5ngstr\u00F6m.tv2", u"\u20AC.tv2", u"\u0160\u00E9.tv2"})
    {
        const ScratchFolder folder(u"d\u00E9p\u00F4t");
        ASSERT_TRUE(Write(folder.Path(name), "new"));
        EXPECT_EQ(folder.Content(name), "new");
        EXPECT_NE(GetFileAttributesA(folder.BytePath(name).c_str()), INVALID_FILE_ATTRIBUTES);
        std::vector<std::uint8_t> image;
        const Status read = ReadFileImage(Utf8Path(folder.BytePath(name)), image);
        EXPECT_TRUE(read) << read.Reason();
        EXPECT_EQ(image.size(), 3u);
    }
}

TEST(Writer, LatchesAnErrorForNamesThatTheCodePageLacks)
{
    if (GetACP() == CP_UTF8)
        GTEST_SKIP() << "the code page has every name";
    const ScratchFolder folder;
    TEV2_FILE_WRITER writer(TEV2_WIDE_STRING(folder.Path(u"\u4E2D\u0E01\u05D0.tv2")), false, false);
    EXPECT_EQ(writer.stream->handle, nullptr);
    EXPECT_NE(writer.stream->lastError, 0);
}

} // namespace
} // namespace TEV2_LOADER
