// What the runtime of this system does to files: their names, their bytes, and replacing them as a whole.

#include "tests/windows/scratch_folder.h"

#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/whole_file.h"

#include <cerrno>

namespace TEV2_LOADER
{
namespace
{

using tev2_tests::ScratchFolder;
using tev2_tests::Wide;

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

TEST(Files, HaveNamesOfTheCodePage)
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

        EXPECT_TRUE(WriteWholeFile(folder.Utf8Path(name), "replaced\n"));
        EXPECT_EQ(folder.Content(name), "replaced\n");
        EXPECT_TRUE(WriteWholeFile(folder.Utf8Path(u"made " + name), "made\n"));
        EXPECT_EQ(folder.Content(u"made " + name), "made\n");
        EXPECT_EQ(folder.Count(u".part"), 0u);
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

TEST(WholeFile, KeepsTheOldFileWhenTheContentIsIncomplete)
{
    const ScratchFolder folder;
    folder.Make(u"a.tv2", "old");
    const auto half = [&](std::unique_ptr<TEV2_FILE_STREAM>& stream)
    {
        EXPECT_EQ(folder.Count(u".part"), 1u);
        return stream->Write("half", 4) == 4 && false;
    };
    EXPECT_FALSE(WriteWholeFile(folder.Utf8Path(u"a.tv2"), half));
    EXPECT_EQ(folder.Content(u"a.tv2"), "old");
    EXPECT_EQ(folder.Count(u".part"), 0u);
}

TEST(WholeFile, DoesNotReplaceReadOnlyFilesAndFolders)
{
    const ScratchFolder folder;
    folder.Make(u"a.tv2", "old", FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(WriteWholeFile(folder.Utf8Path(u"a.tv2"), "new").Reason(), Status::FromErrno(EACCES).Reason());
    EXPECT_EQ(folder.Content(u"a.tv2"), "old");
    EXPECT_FALSE(WriteWholeFile(folder.Utf8Path(u"no\\folder.tv2"), "new"));
    const std::string itself = folder.BytePath(u"");
    EXPECT_FALSE(WriteWholeFile(itself.substr(0, itself.size() - 1), "new"));
    EXPECT_EQ(folder.Count(u".part"), 0u);
}

/// Who reads a file without leave to delete it keeps it from being replaced, though not from being written to.
TEST(WholeFile, GoesStraightToTheNameWhenReplacingIsRefused)
{
    const ScratchFolder folder;
    const std::u16string path = folder.Make(u"a.tv2", "old, and longer");
    const HANDLE reader = CreateFileW(Wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(WriteWholeFile(folder.Utf8Path(u"a.tv2"), "new"));
    char content[8] = {};
    DWORD size = 0;
    EXPECT_TRUE(ReadFile(reader, content, sizeof content, &size, nullptr));
    CloseHandle(reader);
    EXPECT_EQ(std::string(content, size), "new");
    EXPECT_EQ(folder.Count(u".part"), 0u);
}

TEST(WholeFile, RemovesThePartFilesThatNobodyIsWriting)
{
    const ScratchFolder folder;
    const auto part = [](unsigned long process)
    {
        const std::string name = ".a.tv2." + std::to_string(process) + "-7777.part";
        return std::u16string(name.begin(), name.end());
    };
    constexpr unsigned long kNoProcess = 0xFFFFFFF0; // far beyond what the system hands out
    folder.Make(part(kNoProcess));
    folder.Make(part(GetCurrentProcessId()));
    folder.Make(u".b.tv2.4294967280-1.part");
    const HANDLE writing = CreateFileW(Wide(folder.Path(u".a.tv2.4294967280-2.part")), GENERIC_WRITE,
                                       FILE_SHARE_READ, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_TRUE(WriteWholeFile(folder.Utf8Path(u"a.tv2"), "new"));
    EXPECT_FALSE(folder.Has(part(kNoProcess)));
    EXPECT_FALSE(folder.Has(part(GetCurrentProcessId())));
    EXPECT_TRUE(folder.Has(u".b.tv2.4294967280-1.part"));
    EXPECT_TRUE(folder.Has(u".a.tv2.4294967280-2.part"));
    CloseHandle(writing);
}

} // namespace
} // namespace TEV2_LOADER
