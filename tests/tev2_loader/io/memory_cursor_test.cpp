#include "tests/support/records.h"

#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/memory_cursor.h"

#include <array>
#include <tuple>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(MemoryCursor, ReadsLittleEndianNumbersInTurn)
{
    const Bytes image =
        Bytes().U8({1, 2, 3, 4, 5, 6, 0xFE, 0xFF, 0xFF, 0xFF, 0, 0, 0x20, 0xC0, 8, 7, 6, 5, 4, 3, 2, 1});
    TEV2_MEMORY_CURSOR cursor(image.data.data(), image.data.size());
    EXPECT_EQ(cursor.ReadU16(), 0x0201u);
    EXPECT_EQ(cursor.ReadU32(), 0x06050403u);
    EXPECT_EQ(cursor.ReadI32(), -2);
    EXPECT_EQ(cursor.ReadF32(), -2.5f);
    EXPECT_EQ(cursor.ReadU64(), 0x0102030405060708u);
    EXPECT_EQ(cursor.Remaining(), 0u);
    EXPECT_FALSE(cursor.Failed());
}

TEST(MemoryCursor, ANumberPastTheEndIsZeroAndFailsForGood)
{
    const Bytes image = Bytes().U8({1, 2, 3, 4, 5, 6, 7});
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(image.data.data(), image.data.size(), &report);
    cursor.ReadU32();
    EXPECT_EQ(cursor.ReadU32(), 0u);
    EXPECT_TRUE(cursor.Failed());
    EXPECT_EQ(cursor.current, cursor.end);
    EXPECT_EQ(cursor.ReadU16(), 0u);
    EXPECT_EQ(cursor.ReadU64(), 0u);
    EXPECT_EQ(cursor.ReadCount(1), 0u);
    EXPECT_EQ(cursor.current, cursor.end);

    ASSERT_EQ(report.findings.size(), 1u);
    EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::RecordOverrun);
    EXPECT_EQ(report.findings[0].severity, TEV2_LOAD_SEVERITY::Error);
    EXPECT_EQ(report.findings[0].offset, 4u);
}

TEST(MemoryCursor, CopiesAtMostWhatRemains)
{
    const Bytes image = Bytes().U8({1, 2, 3});
    TEV2_MEMORY_CURSOR cursor(image.data.data(), image.data.size());
    std::array<std::uint8_t, 4> copy{9, 9, 9, 9};
    EXPECT_EQ(cursor.ReadBytes(copy.data(), 2), 2u);
    EXPECT_EQ(cursor.ReadBytes(copy.data(), 0xFFFFFFFFu), 1u);
    EXPECT_EQ(copy, (std::array<std::uint8_t, 4>{3, 2, 9, 9}));
    EXPECT_EQ(cursor.ReadBytes(copy.data(), 4), 0u);
    EXPECT_FALSE(cursor.Failed());

    TEV2_MEMORY_CURSOR empty(nullptr, 0);
    EXPECT_EQ(empty.ReadBytes(copy.data(), 4), 0u);
    EXPECT_EQ(empty.ReadU32(), 0u);
}

TEST(MemoryCursor, HoldsCountsAgainstTheBytesThatRemain)
{
    const std::tuple<std::uint32_t, std::size_t, bool> cases[] = {
        {2, 6, true},   {3, 6, false},           {12, 1, true},           {13, 1, false},
        {0, 100, true}, {0x40000000u, 4, false}, {0xFFFFFFFFu, 24, false}};
    for (const auto& [count, least_size, fits] : cases)
    {
        SCOPED_TRACE(count);
        const Bytes image = Bytes().U32(count).Zeros(12);
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(image.data.data(), image.data.size(), &report);
        EXPECT_EQ(cursor.ReadCount(least_size), fits ? count : 0);
        EXPECT_EQ(cursor.Failed(), !fits);
        ASSERT_EQ(report.findings.size(), fits ? 0u : 1u);
        if (fits)
            continue;
        EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::CountExceedsFile);
        EXPECT_EQ(report.findings[0].offset, 0u);
        EXPECT_EQ(report.findings[0].found, std::to_string(count));
    }
}

TEST(MemoryCursor, NamesTheRecordOfAFinding)
{
    TEV2_LOAD_REPORT report;
    const Bytes image = Bytes().Zeros(40);
    TEV2_MEMORY_CURSOR cursor(image.data.data(), image.data.size(), &report);
    cursor.Warn(TEV2_LOAD_CODE::UnknownChunk, "", "");
    cursor.ReadU64();
    cursor.EnterChunk({.id = 12, .size = 24, .offset = 4});
    {
        const RecordScope hierarchy(cursor, "matrixHierarchy");
        const RecordScope node(cursor, "nodes", 3);
        const RecordScope place(cursor, "", 5);
        {
            const RecordScope track(cursor, "rotation");
        }
        const RecordScope track(cursor, "scale");
        EXPECT_FALSE(cursor.Fail(TEV2_LOAD_CODE::UnknownTrackKind, "3", "42", 4));
        EXPECT_FALSE(cursor.Fail(TEV2_LOAD_CODE::RecordOverrun, "", ""));
    }
    ASSERT_EQ(report.findings.size(), 2u);
    EXPECT_EQ(report.findings[0].path, "");
    EXPECT_EQ(report.findings[0].chunkId, TEV2_LOAD_FINDING::kNoChunk);
    EXPECT_EQ(report.findings[0].severity, TEV2_LOAD_SEVERITY::Warning);
    EXPECT_EQ(report.findings[1].path, "matrixHierarchy.nodes[3][5].scale");
    EXPECT_EQ(report.findings[1].offset, 4u);
    EXPECT_EQ(report.findings[1].chunkId, 12u);
    EXPECT_EQ(report.findings[1].chunkOffset, 4u);
    EXPECT_EQ(report.findings[1].expected, "3");
}

TEST(FileImage, ReadsWholeFilesAndSaysWhyItCannot)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("image");
    const std::vector<std::uint8_t> bytes(200001, 0x5A);
    WriteBytes(path, bytes);
    std::vector<std::uint8_t> whole;
    EXPECT_TRUE(ReadFileImage(path, whole));
    EXPECT_EQ(whole, bytes);
    EXPECT_TRUE(ReadFileImage(path, whole, bytes.size()));
    EXPECT_EQ(ReadFileImage(path, whole, bytes.size() - 1).Reason(), "larger than 200000 bytes");

    std::vector<std::string> bad_paths = {path + ".missing", testing::TempDir()};
#if !defined(_WIN32)
    bad_paths.emplace_back("/dev/zero");
#endif
#if defined(__linux__)
    bad_paths.emplace_back("/proc/self/mem"); // opens, and cannot be read
#endif
    for (const std::string& bad : bad_paths)
    {
        std::vector<std::uint8_t> image{1};
        EXPECT_FALSE(ReadFileImage(bad, image).Reason().empty()) << bad;
        EXPECT_TRUE(image.empty());
    }
}

} // namespace
