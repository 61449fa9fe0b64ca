#include "tests/support/sample_scenes.h"
#include "tests/support/typed_seeds.h"

#include <algorithm>
#include <random>
#include <set>

// Bodies that are nearly typed, or not at all, are kept as bytes and saved as they were.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// A chunk of a file: its kind, the number in front of its body where it has one, and the body.
struct Chunk
{
    std::uint32_t id = 0;
    Bytes prefix;
    std::vector<std::uint8_t> body;

    Bytes In(float version) const { return FileOfVersion(version).Append(Whole()); }
    Bytes Whole() const { return Bytes().Chunk(id, Bytes(prefix).Append(Bytes(body))); }
};

bool IsPrefixed(std::uint32_t id)
{
    return id == kLightChunk || id == kMaterialChunk || TEV2_INSTANCE::FindKind(id) != nullptr;
}

/// The chunks of a file of the newest version whose bodies are typed or kept.
std::vector<Chunk> BodiesOf(const std::vector<std::uint8_t>& image)
{
    const std::set<std::uint32_t> others = {kInformationChunk, kArrayLengthsChunk, kEnvironmentChunk,
                                            kCameraChunk,      kCameraManChunk,    kMatrixHierarchyChunk};
    std::vector<Chunk> chunks;
    const auto outcome = LoadImageOf(image);
    for (const TEV2_CHUNK_SPAN& span : outcome->report.chunks)
    {
        if (others.contains(span.id))
            continue;
        const std::size_t begin = span.offset + kChunkHeader;
        const std::size_t body = begin + (IsPrefixed(span.id) ? sizeof(std::uint32_t) : 0);
        const auto at = [&image](std::size_t offset)
        { return image.begin() + static_cast<std::ptrdiff_t>(offset); };
        chunks.push_back({span.id, Bytes({at(begin), at(body)}), {at(body), at(span.offset + span.size)}});
    }
    return chunks;
}

/// Expects that a body that cannot be typed passes as it is: in the newest version it is saved, in an older one it is
/// saved where the placed object in front of it was read, which leaves no bytes of another version.
void ExpectKept(const Chunk& chunk)
{
    for (const float version : {1.15f, 1.16f})
    {
        SCOPED_TRACE(testing::Message() << ChunkTitle(chunk.id) << " of version " << version << ", "
                                        << chunk.body.size() << " bytes");
        const auto outcome = LoadImageOf(chunk.In(version).data);
        ASSERT_TRUE(outcome->loaded);
        ASSERT_EQ(outcome->report.findings.size(), 1u);
        EXPECT_EQ(outcome->report.findings[0].code,
                  version == kVersion ? TEV2_LOAD_CODE::BodyKept : TEV2_LOAD_CODE::UnparsedOtherVersion);
        TEV2_POSITIONAL_OBJECT placed;
        TEV2_MEMORY_CURSOR cursor(chunk.body.data(), chunk.body.size());
        const bool has_placed = placed.Load(cursor, version) && !cursor.Failed();
        bool saved = false;
        const auto image = WrittenBy([&](TEV2_FILE_WRITER& writer) { saved = outcome->scene.Save(writer); });
        EXPECT_TRUE(saved || version != kVersion);
        EXPECT_FALSE(saved && version != kVersion && !has_placed);
        const auto whole = chunk.Whole().data;
        EXPECT_NE(std::search(image.begin(), image.end(), whole.begin(), whole.end()), image.end());
    }
}

std::vector<Chunk> SampleBodies()
{
    std::vector<Chunk> bodies;
    for (const auto& [name, image] : TypedSeeds())
        for (const Chunk& chunk : BodiesOf(image))
            bodies.push_back(chunk);
    return bodies;
}

TEST(KeptBodies, OfEveryKindAreSavedAsTheyWere)
{
    const Bytes layout = Bytes().U32(kOurLayout);
    std::set<std::uint32_t> typed;
    for (const Chunk& sample : SampleBodies())
    {
        EXPECT_TRUE(LoadImageOf(sample.In(kVersion).data)->report.findings.empty());
        typed.insert(sample.id);
        Chunk damaged = sample;
        damaged.body.push_back(0);
        ExpectKept(damaged);
        damaged.body.resize(sample.body.size() - 1);
        ExpectKept(damaged);
        damaged = sample;
        const auto number =
            std::search(damaged.body.begin(), damaged.body.end(), layout.data.begin(), layout.data.end());
        ASSERT_NE(number, damaged.body.end());
        ++*number;
        ExpectKept(damaged);
        if (HasFailure())
            return;
    }
    for (std::uint32_t id = kGlobalLightTintChunk; FindChunkKind(id) != nullptr; ++id)
        EXPECT_TRUE(typed.contains(id) || id == kCameraChunk || id == kCameraManChunk ||
                    id == kMatrixHierarchyChunk)
            << ChunkTitle(id);
}

TEST(KeptBodies, MayBeAnyBytes)
{
    std::minstd_rand random;
    for (Chunk chunk : SampleBodies())
        for (int pass = 0; pass < 30 && !HasFailure(); ++pass)
        {
            chunk.body.resize(random() % 150);
            const bool sparse = pass % 2 == 0; // mostly zeros make a placed object
            for (std::uint8_t& byte : chunk.body)
                byte = sparse && random() % 8 != 0 ? 0 : static_cast<std::uint8_t>(random() >> 8);
            ExpectKept(chunk);
        }
}

} // namespace
