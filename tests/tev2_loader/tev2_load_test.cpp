#include "tests/support/sample_scenes.h"
#include "tev2_loader/array_length_helper.h"

#include <cmath>
#include <set>

#if defined(__linux__)
#include <sys/mman.h>
#endif

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

std::unique_ptr<LoadOutcome> Load(const Bytes& image, bool applyStartTime = false)
{
    return LoadImageOf(image.data, applyStartTime);
}

Bytes Current()
{
    return FileOfVersion(kVersion);
}

const Bytes kEmptyNode = Bytes().Text(u"").U32(0xFFFFFFFFu).Zeros(3 * 4 + 2 + 20);
constexpr std::size_t kInformationEnd = 4 + 16;
constexpr std::size_t kVersionField = 4 + 8;

TEST(Load, TakesAFileOfNothingButTheMagic)
{
    const auto outcome = Load(Bytes().U8({0x01, 0x32, 0x56, 0x54}), true);
    EXPECT_TRUE(outcome->loaded);
    EXPECT_TRUE(outcome->report.findings.empty());
    EXPECT_TRUE(outcome->report.chunks.empty());
}

/// A file, the first code that its load reports, and where.
struct CodeCase
{
    const char* what;
    Bytes image;
    TEV2_LOAD_CODE code;
    std::size_t offset;
    std::string path;
    TEV2_LOAD_LIMITS limits = {};
};

constexpr std::size_t kBody = kInformationEnd + 8;

std::vector<CodeCase> Errors()
{
    using enum TEV2_LOAD_CODE;
    return {
        {"no byte", Bytes(), EmptyImage, 0, ""},
        {"three bytes", Bytes().U8({0x01, 0x32, 0x56}), RecordOverrun, 0, ""},
        {"another magic", Bytes().U32(kMagic + 1), BadMagic, 0, ""},
        {"an interrupted save", Bytes().U32(0).Chunk(0), BadMagic, 0, ""},
        {"half a chunk header", Current().Zeros(7), TruncatedChunkHeader, kInformationEnd, ""},
        {"size 7", Current().U32({7, 99}), BadChunkSize, kInformationEnd, ""},
        {"size 0", Current().U32({0, 99}).Zeros(100), BadChunkSize, kInformationEnd, ""},
        {"size past the end", Current().U32({13, 99}).Zeros(4), BadChunkSize, kInformationEnd, ""},
        {"largest size", Current().U32({0xFFFFFFFFu, 99}), BadChunkSize, kInformationEnd, ""},
        {"a newer version", FileOfVersion(1.17f), UnsupportedVersion, kVersionField, "information"},
        {"no version", FileOfVersion(NAN), UnsupportedVersion, kVersionField, "information"},
        {"instance list 10", Current().Chunk(14, Bytes().U32(10)), BadInstanceList, kBody, ""},
        {"instance without list", Current().Chunk(16, Bytes().Zeros(3)).Chunk(99), ChunkTooSmall, kBody, ""},
        {"light without type", Current().Chunk(5).Chunk(99), ChunkTooSmall, kBody, "lights[0]"},
        {"material without type", Current().Chunk(13, Bytes().Zeros(2)).Chunk(99), ChunkTooSmall, kBody,
         "materials[0]"},
        {"a colour of another kind", Current().Chunk(2, Bytes().Zeros(8).U32({1, 3}).Zeros(24)),
         UnknownTrackKind, kBody + 12, "environment.environmentColour"},
        {"a switcher of another kind", Current().Chunk(22, Bytes().U32({1, 0}).Zeros(16)), UnknownTrackKind,
         kBody + 4, "cameraMan.cameraIndex"},
        {"a node's rotation of another kind",
         Current().Chunk(12, Bytes().U32(2).Append(kEmptyNode).Text(u"").Zeros(8).U32({1, 3}).Zeros(40)),
         UnknownTrackKind, kBody + 4 + 40 + 2 + 4 + 4 + 4, "matrixHierarchy.nodes[1].rotation"},
        {"an effect that there is not", Current().Chunk(6, Bytes().Zeros(54).U32({2, 0, 1, 2})),
         UnknownEffectType, kBody + 54 + 12, "cameras[0].effects[1]"},
        {"more nodes than bytes", Current().Chunk(12, Bytes().U32(3).Append(kEmptyNode).Append(kEmptyNode)),
         CountExceedsFile, kBody, "matrixHierarchy"},
        {"more keys than bytes", Current().Chunk(22, Bytes().U32({1, 8}).Zeros(8).U32(0x40000000u).Zeros(16)),
         CountExceedsFile, kBody + 16, "cameraMan.cameraIndex"},
        {"a record past the end", Current().Chunk(2, Bytes().Zeros(20)), RecordOverrun, kBody + 16,
         "environment"},
        {"lengths past the end", Current().Chunk(1, Bytes().U32(23).Zeros(40)), RecordOverrun, kBody + 44,
         "arrayLengths"},
        {"more than the limits",
         Current().Chunk(7, Bytes().Zeros(100)),
         LimitExceeded,
         kBody,
         "rigids[0]",
         {.bytes = 99}},
        {"lengths that announce more than the limits",
         Current().Chunk(1, Bytes().U32({23, 100}).Zeros(22 * 4)).Chunk(99, Bytes().Zeros(800)),
         LimitExceeded,
         kBody + 96,
         "",
         {.bytes = 99}},
    };
}

std::vector<CodeCase> Warnings()
{
    using enum TEV2_LOAD_CODE;
    return {
        {"unknown chunk", Current().Chunk(99, Bytes().Zeros(4)), UnknownChunk, kBody, ""},
        // The four zero bytes behind the record are taken for the size of the next chunk, so more must
        // follow.
        {"record ends before its chunk", Current().Chunk(22, Bytes().U32(0).U32({8, 99})),
         RecordEndsBeforeChunk, kBody + 4, ""},
        {"record ends after its chunk", Current().U32({8, 22}).U32(0), RecordEndsAfterChunk, kBody + 4, ""},
        {"parent outside", Current().Chunk(12, Bytes().U32(1).Text(u"").U32(1).Zeros(34)), ParentOutside,
         kBody + 4 + 2, "matrixHierarchy.nodes[0]"},
        {"body of an older version", FileOfVersion(1.15f).Chunk(7, Bytes().Zeros(3)), UnparsedOtherVersion,
         kBody, "rigids[0]"},
        {"body of another layout", Current().Chunk(3, Bytes().U32(kOurLayout + 1)), BodyKept, kBody,
         "globalLightTint.layout"},
        {"instance list 7", Current().Chunk(18, Bytes().U32(7)), InstanceListNeverSaved, kBody + 4,
         "instanceLists[7][0]"},
        {"instance list 9", Current().Chunk(19, Bytes().U32(9)), InstanceListNeverSaved, kBody + 4,
         "instanceLists[9][0]"},
        {"clamped text", Bytes().U32(kMagic).Chunk(0, Bytes().F32({1.0f}).Text(u"").U16(3).U16(u'x')),
         StringClamped, 4 + 8 + 4 + 2 + 4, "information"},
    };
}

TEST(Load, EachWayToFailHasItsCode)
{
    for (const CodeCase& item : Errors())
    {
        SCOPED_TRACE(item.what);
        const auto outcome = LoadImageOf(item.image.data, false, item.limits);
        EXPECT_FALSE(outcome->loaded);
        ASSERT_EQ(outcome->report.findings.size(), 1u);
        const TEV2_LOAD_FINDING& finding = outcome->report.findings[0];
        EXPECT_STREQ(CodeName(finding.code), CodeName(item.code));
        EXPECT_EQ(finding.severity, TEV2_LOAD_SEVERITY::Error);
        EXPECT_EQ(finding.offset, item.offset);
        EXPECT_EQ(finding.path, item.path);

        // The report only watches: without one the answer is the same.
        TEV2_MEMORY_CURSOR cursor(item.image.data.data(), item.image.data.size(), nullptr, item.limits);
        EXPECT_FALSE(TEV2().Load(cursor, true));
    }
}

TEST(Load, WarnsAndGoesOn)
{
    for (const CodeCase& item : Warnings())
    {
        SCOPED_TRACE(item.what);
        const auto outcome = Load(item.image);
        EXPECT_TRUE(outcome->loaded);
        ASSERT_FALSE(outcome->report.findings.empty());
        const TEV2_LOAD_FINDING& finding = outcome->report.findings[0];
        EXPECT_STREQ(CodeName(finding.code), CodeName(item.code));
        EXPECT_EQ(finding.severity, TEV2_LOAD_SEVERITY::Warning);
        EXPECT_EQ(finding.offset, item.offset);
        EXPECT_EQ(finding.chunkId, WordAt(item.image.data, finding.chunkOffset + 4));
        EXPECT_EQ(finding.path, item.path);
    }
}

TEST(Load, KeepsAThousandWarnings)
{
    Bytes many = Current();
    for (std::size_t warning = 0; warning <= TEV2_LOAD_REPORT::kMostWarnings; ++warning)
        many.Chunk(99);
    const auto outcome = Load(many);
    EXPECT_TRUE(outcome->loaded);
    EXPECT_EQ(outcome->report.findings.size(), TEV2_LOAD_REPORT::kMostWarnings + 1);
    EXPECT_EQ(outcome->report.findings.back().code, TEV2_LOAD_CODE::MoreWarnings);
}

TEST(Load, RaisesEveryCodeThatHasAName)
{
    std::set<std::string> raised = {"image-too-large", "more-warnings"}; // in tests of their own
    for (const std::vector<CodeCase>& cases : {Errors(), Warnings()})
        for (const CodeCase& item : cases)
            raised.insert(CodeName(item.code));
    std::set<std::string> named;
    for (int number = 0; std::string_view(CodeName(TEV2_LOAD_CODE{number})) != "unknown"; ++number)
        EXPECT_TRUE(named.insert(CodeName(TEV2_LOAD_CODE{number})).second) << number;
    EXPECT_EQ(raised, named);
}

#if defined(__linux__)

/// 4 GiB of inaccessible memory: a load that reads any of it crashes.
TEST(Load, RefusesAnImageOfFourGigabytes)
{
    constexpr std::size_t kSize = std::size_t{1} << 32;
    void* const image = mmap(nullptr, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(image, MAP_FAILED);
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(image, kSize, &report);
    EXPECT_FALSE(TEV2().Load(cursor, true));
    ASSERT_EQ(report.findings.size(), 1u);
    EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::ImageTooLarge);
    munmap(image, kSize);
}

#endif

TEST(Load, GoesOnWhereTheRecordEnded)
{
    // The chunk behind the camera switcher is found inside its frame: a known one, then an unknown one.
    const auto outcome =
        Load(Current().Chunk(22, Bytes().U32(0).Chunk(2, Bytes().F32({3, 4}).Zeros(16)).Chunk(99)));
    EXPECT_TRUE(outcome->loaded);
    EXPECT_EQ(outcome->scene.environment.timeRange.minimum, 3.0f);
    ASSERT_EQ(outcome->report.chunks.size(), 4u);
    EXPECT_EQ(outcome->report.chunks[1].id, 22u);
    EXPECT_EQ(outcome->report.chunks[2].id, 2u);
    EXPECT_EQ(outcome->report.chunks[2].offset, kInformationEnd + 12);
    EXPECT_EQ(outcome->report.chunks[2].size, 32u);
    EXPECT_EQ(outcome->report.chunks[3].id, 99u);
}

TEST(Load, KeepsTheLastOfASingleRecord)
{
    const auto outcome = Load(
        Current().Chunk(3, Bytes().U8({1})).Chunk(4, Bytes().U8({2})).Chunk(3, Bytes().U8({3, 4})).Chunk(4));
    ASSERT_TRUE(outcome->loaded);
    const auto kept = outcome->scene.globalLightTint->Bytes();
    EXPECT_EQ(std::vector(kept.begin(), kept.end()), (std::vector<std::uint8_t>{3, 4}));
    EXPECT_TRUE(outcome->scene.ambientLight->Bytes().empty());
}

TEST(Load, ReadsWhatItsVersionHas)
{
    for (const float version : kGateVersions)
    {
        SCOPED_TRACE(version);
        const auto outcome = Load(SceneOfVersion(version));
        ASSERT_TRUE(outcome->loaded);
        for (const TEV2_LOAD_FINDING& finding : outcome->report.findings)
        {
            EXPECT_EQ(finding.code,
                      version == 1.16f ? TEV2_LOAD_CODE::BodyKept : TEV2_LOAD_CODE::UnparsedOtherVersion)
                << finding.path;
        }
        const TEV2& scene = outcome->scene;
        EXPECT_EQ(scene.environment.reserved[7], version >= 1.16f ? 8 : 0);
        const TEV2_CAMERA& camera = *scene.cameras.at(0);
        EXPECT_EQ(camera.thirdText, Wide(u"c"));
        EXPECT_EQ(camera.properties.floatValues.size(), version >= 1.04f ? 1u : 0u);
        EXPECT_EQ(camera.bounds != nullptr, version >= 1.13f);
        EXPECT_EQ(camera.inverseAspect, 0.5f);
        EXPECT_EQ(camera.effects.size(), 2u);
        EXPECT_EQ(camera.keptEffects.count, 0u);
        const TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.at(1);
        EXPECT_EQ(node.parentIndex, 0);
        EXPECT_EQ(node.scale != nullptr, version >= 1.15f);
        EXPECT_EQ(node.userText, Wide(u"user"));
        EXPECT_EQ(node.properties.floatValues.size(), version >= 1.04f ? 1u : 0u);
    }
}

TEST(Load, ReservesNoMoreThanTheFileCanFill)
{
    Bytes lengths = Bytes().U32(23).U32(3);
    for (int count = 1; count < 23; ++count)
        lengths.U32(0xFFFFFFFFu);
    const auto outcome = Load(Current().Chunk(1, lengths).Chunk(99, Bytes().Zeros(792)));
    ASSERT_TRUE(outcome->loaded);
    EXPECT_EQ(outcome->scene.lights.capacity(), 3u);
    EXPECT_EQ(outcome->scene.cameras.capacity(), 97u);
    EXPECT_EQ(outcome->scene.rigids.capacity(), 0u);
}

TEST(Load, HandsOnTheVersionOfTheInformationRecord)
{
    // Before it, records are read as of version 0: a positional object of name, two texts and a number.
    const Bytes old = Bytes().Zeros(10).F32({0.5f}).Zeros(20);
    for (const auto& [version, body] : {std::pair{1.0f, old}, std::pair{1.16f, Bytes().Zeros(58)}})
    {
        const auto outcome = Load(Bytes()
                                      .U32(kMagic)
                                      .Chunk(6, old)
                                      .Chunk(0, Bytes().F32({version}).Text(u"").Text(u""))
                                      .Chunk(6, body));
        EXPECT_TRUE(outcome->loaded);
        EXPECT_TRUE(outcome->report.findings.empty());
        EXPECT_EQ(outcome->report.version, version);
        ASSERT_EQ(outcome->scene.cameras.size(), 2u);
        EXPECT_EQ(outcome->scene.cameras[0]->inverseAspect, 0.5f);
    }
}

TEST(Load, LeavesWhatItReadBeforeAFailureAndClearsItTheNextTime)
{
    auto outcome = Load(Current().Chunk(7).Chunk(2, Bytes().F32({1, 2}).Zeros(16)).Chunk(6, Bytes().U16(0)));
    EXPECT_FALSE(outcome->loaded);
    EXPECT_EQ(outcome->scene.rigids.size(), 1u);
    EXPECT_EQ(outcome->scene.cameras.size(), 1u);
    EXPECT_EQ(outcome->scene.environment.timeRange.maximum, 2.0f);

    FillWithEverything(outcome->scene, true);
    const Bytes magic = Bytes().U32(kMagic);
    TEV2_MEMORY_CURSOR cursor(magic.data.data(), magic.data.size());
    EXPECT_TRUE(outcome->scene.Load(cursor, true));
    EXPECT_EQ(SceneImage(outcome->scene), SceneImage(TEV2()));
}

} // namespace
