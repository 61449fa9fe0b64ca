#include "tests/support/sample_scenes.h"

#include <algorithm>
#include <sys/mman.h>

// Every code that a load can report is raised by a file that deserves it.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

struct CodeFixture
{
    TEV2_LOAD_CODE code;
    Bytes image;
    TEV2_LOAD_LIMITS limits = {};
};

Bytes Current()
{
    return FileOfVersion(kVersion);
}

std::vector<CodeFixture> CodeFixtures()
{
    const Bytes node = Bytes().Text(u"").U32(9).Zeros(3 * 4 + 2 + 20);
    Bytes many = Current();
    for (std::size_t warning = 0; warning <= TEV2_LOAD_REPORT::kMostWarnings; ++warning)
        many.Chunk(99);
    return {
        {TEV2_LOAD_CODE::EmptyImage, Bytes()},
        {TEV2_LOAD_CODE::BadMagic, Bytes().U32(0)},
        {TEV2_LOAD_CODE::TruncatedChunkHeader, Current().Zeros(1)},
        {TEV2_LOAD_CODE::BadChunkSize, Current().U32({7, 0})},
        {TEV2_LOAD_CODE::ChunkTooSmall, Current().Chunk(5)},
        {TEV2_LOAD_CODE::UnsupportedVersion, FileOfVersion(2.0f)},
        {TEV2_LOAD_CODE::BadInstanceList, Current().Chunk(14, Bytes().U32(10))},
        {TEV2_LOAD_CODE::UnknownTrackKind, Current().Chunk(22, Bytes().U32({1, 0}))},
        {TEV2_LOAD_CODE::UnknownEffectType, Current().Chunk(6, Bytes().Zeros(54).U32({1, 1, 2}))},
        {TEV2_LOAD_CODE::EnvironmentMapUnsupported, Current().Chunk(2, Bytes().Zeros(12).U32(1))},
        {TEV2_LOAD_CODE::CountExceedsFile, Current().Chunk(12, Bytes().U32(1))},
        {TEV2_LOAD_CODE::RecordOverrun, Current().Chunk(2)},
        {TEV2_LOAD_CODE::LimitExceeded, Current().Chunk(7, Bytes().Zeros(100)), {.bytes = 99}},
        {TEV2_LOAD_CODE::RecordEndsBeforeChunk, Current().Chunk(22, Bytes().U32({0, 8, 99}))},
        {TEV2_LOAD_CODE::RecordEndsAfterChunk, Current().Chunk(22).U32(0)},
        {TEV2_LOAD_CODE::UnknownChunk, Current().Chunk(24)},
        {TEV2_LOAD_CODE::StringClamped, Current().Chunk(0, Bytes().F32({kVersion}).Text(u"").U16(9))},
        {TEV2_LOAD_CODE::ParentOutside, Current().Chunk(12, Bytes().U32(1).Append(node))},
        {TEV2_LOAD_CODE::UnparsedOtherVersion, FileOfVersion(1.0f).Chunk(7)},
        {TEV2_LOAD_CODE::InstanceListNeverSaved, Current().Chunk(14, Bytes().U32(9))},
        {TEV2_LOAD_CODE::MoreWarnings, many},
    };
}

bool Raises(TEV2_LOAD_CODE code, const void* image, std::size_t size, const TEV2_LOAD_LIMITS& limits)
{
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(image, size, &report, limits);
    const bool loaded = TEV2().Load(cursor, true);
    const bool is_error = code < TEV2_LOAD_CODE::RecordEndsBeforeChunk;
    EXPECT_EQ(loaded, !is_error) << CodeName(code);
    for (const TEV2_LOAD_FINDING& finding : report.findings)
    {
        if (finding.code == code)
            return (finding.severity == TEV2_LOAD_SEVERITY::Error) == is_error;
    }
    return false;
}

/// 4 GiB that nothing stands behind: a load that reads any of it crashes.
TEST(LoadCodes, ImageTooLarge)
{
    constexpr std::size_t kSize = std::size_t{1} << 32;
    void* const image = mmap(nullptr, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(image, MAP_FAILED);
    EXPECT_TRUE(Raises(TEV2_LOAD_CODE::ImageTooLarge, image, kSize, {}));
    munmap(image, kSize);
}

TEST(LoadCodes, EachIsRaisedBySomeFile)
{
    const std::vector<CodeFixture> fixtures = CodeFixtures();
    for (const CodeFixture& fixture : fixtures)
        EXPECT_TRUE(
            Raises(fixture.code, fixture.image.data.data(), fixture.image.data.size(), fixture.limits))
            << CodeName(fixture.code);

    // Codes count up from 0 and each has a name.
    for (int number = 0; std::string_view(CodeName(TEV2_LOAD_CODE{number})) != "unknown"; ++number)
    {
        const TEV2_LOAD_CODE code{number};
        const bool raised = std::any_of(fixtures.begin(), fixtures.end(),
                                        [code](const CodeFixture& fixture) { return fixture.code == code; });
        EXPECT_TRUE(raised || code == TEV2_LOAD_CODE::ImageTooLarge) << CodeName(code);
    }
}

} // namespace
