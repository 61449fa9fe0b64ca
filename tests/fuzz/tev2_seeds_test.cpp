#include "tests/support/sample_scenes.h"
#include "tests/support/typed_seeds.h"

#include <set>

// The seeds of typed records are still typed, and every kind of chunk whose bodies may be kept has one.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(TypedSeeds, AreTyped)
{
    std::set<std::uint32_t> kinds;
    for (const auto& [name, image] : TypedSeeds())
    {
        SCOPED_TRACE(name);
        const auto outcome = LoadImageOf(image);
        EXPECT_TRUE(outcome->loaded);
        EXPECT_TRUE(outcome->report.findings.empty());
        EXPECT_FALSE(outcome->scene.HasKeptBodies());
        for (const TEV2_CHUNK_SPAN& chunk : outcome->report.chunks)
            kinds.insert(chunk.id);
    }
    for (std::uint32_t id = 2; FindChunkKind(id) != nullptr; ++id)
        EXPECT_TRUE(kinds.contains(id) || id == kCameraManChunk || id == kMatrixHierarchyChunk)
            << ChunkTitle(id);
}

} // namespace
