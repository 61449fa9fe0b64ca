#include "tests/support/allocation_watch.h"
#include "tests/support/sample_scenes.h"
#include "tests/tev2_loader/robustness/dense_files.h"
#include "tev2_loader/file.h"

// How much memory a file can ask for, and limits that the caller sets.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// What a load takes at most for each byte of a file, and besides. The factor is what the smallest records are to the
/// objects that stand for them; files of scenes stay far below.
constexpr std::size_t kMostPerByte = 64;
constexpr std::size_t kMostBesides = std::size_t{1} << 20;

constexpr std::size_t kFileSize = 200'000;

struct Outcome
{
    bool loaded;
    std::size_t peak;
    TEV2_LOAD_REPORT report;
    bool kept;
};

Outcome Load(const Bytes& image, const TEV2_LOAD_LIMITS& limits)
{
    Outcome outcome;
    const AllocationPeak peak;
    TEV2 scene;
    TEV2_MEMORY_CURSOR cursor(image.data.data(), image.data.size(), &outcome.report, limits);
    outcome.loaded = scene.Load(cursor, true);
    outcome.peak = peak.Bytes();
    outcome.kept = scene.HasKeptBodies();
    return outcome;
}

void ExpectRefusedForLimits(const Outcome& outcome)
{
    EXPECT_FALSE(outcome.loaded);
    ASSERT_FALSE(outcome.report.findings.empty());
    EXPECT_EQ(outcome.report.findings.back().code, TEV2_LOAD_CODE::LimitExceeded);
}

/// Loads a file and expects it within the promise, and refused with less memory; returns whether bodies were kept.
bool ExpectProportion(const DenseFile& file)
{
    constexpr std::size_t kLimit = kFileSize / 4;
    const testing::ScopedTrace trace(__FILE__, __LINE__, file.what);
    const Outcome unlimited = Load(file.image, {});
    EXPECT_TRUE(unlimited.loaded) << CodeName(unlimited.report.findings.back().code);
    EXPECT_LE(unlimited.peak, kMostPerByte * file.image.data.size() + kMostBesides);
    const Outcome limited = Load(file.image, {.bytes = kLimit});
    ExpectRefusedForLimits(limited);
    EXPECT_LE(limited.peak, 3 * kLimit + kMostBesides);
    return unlimited.kept;
}

TEST(LoadMemory, StaysInProportionToTheFileAndWithinTheLimit)
{
    for (const DenseFile& file : DenseFiles(kFileSize))
        ExpectProportion(file);
    for (const DenseFile& file : DenseChunks(kFileSize))
        EXPECT_TRUE(ExpectProportion(file)) << file.what;
}

/// What an attempt to read a body takes, it gives back before the bytes are kept.
TEST(LoadMemory, OfBodiesStaysInProportionTypedAndKept)
{
    for (const DenseBody& body : DenseBodies(kFileSize))
    {
        EXPECT_FALSE(ExpectProportion({body.what, body.Typed()})) << body.what;
        EXPECT_TRUE(ExpectProportion({body.what, body.Kept()})) << body.what;
    }
}

TEST(LoadMemory, IsNotTakenForClaims)
{
    const Bytes claim = Current()
                            .Chunk(1, Bytes().U32({23, 0xFFFFFFFFu}).Zeros(88))
                            .Append(Many(kFileSize, Bytes().Chunk(99)));
    EXPECT_LE(Load(claim, {.bytes = 1000}).peak, kMostBesides);
    ExpectRefusedForLimits(Load(claim, {.bytes = 1000}));
}

Bytes Announcement(std::size_t array, std::uint32_t count)
{
    return Bytes().Chunk(1, Bytes().U32(23).Zeros(4 * array).U32(count).Zeros(4 * (22 - array)));
}

TEST(LoadMemory, IsReservedOnceAndCounted)
{
    // The arrays announced one after another, as many objects each as the file could hold.
    Bytes each = Current();
    for (std::size_t array = 0; array < 23; ++array)
        each.Append(Announcement(array, 0xFFFFFFFFu));
    each.Chunk(99, Bytes().Zeros(kFileSize));
    const std::size_t before = AllocatedBytes();
    TEV2 scene;
    TEV2_MEMORY_CURSOR cursor(each.data.data(), each.data.size());
    EXPECT_TRUE(scene.Load(cursor, false));
    EXPECT_LE(AllocatedBytes() - before, each.data.size() + kMostBesides);

    const TEV2_LOAD_LIMITS limits{.bytes = each.data.size() / 2};
    ExpectRefusedForLimits(Load(each, limits));
    EXPECT_LE(Load(each, limits).peak, limits.bytes + kMostBesides / 4);
}

/// Chunks that used to cost more the more there were before them, and all dense files.
std::vector<std::pair<const char*, Bytes>> ManyChunks(std::size_t chunks)
{
    std::vector<std::pair<const char*, Bytes>> files = {{"lights and their announcements", Current()},
                                                        {"hierarchies", Current()},
                                                        {"switchers", Current()},
                                                        {"parents outside", Current()},
                                                        {"unknown", Current()}};
    for (std::uint32_t i = 0; i < chunks; ++i)
    {
        files[0].second.Chunk(5, Bytes().U32(9)).Append(Announcement(0, i + 100));
        files[1].second.Chunk(12, Bytes::Of(1u, Node(0)));
        files[2].second.Chunk(22, Bytes().U32({1, 8, 0, 0, 2, 0, 1, 2, 7, 7}));
        files[3].second.Chunk(12, Bytes::Of(1u, Node(9)));
        files[4].second.Chunk(99);
    }
    return files;
}

TEST(LoadTime, GrowsNoFasterThanTheNumberOfChunks)
{
    struct Cost
    {
        double calls;
        double bytes;
    };
    std::vector<Cost> last;
    for (const std::size_t chunks : {2'000u, 4'000u, 8'000u, 16'000u})
    {
        std::vector<Cost> costs;
        for (const auto& [what, image] : ManyChunks(chunks))
        {
            SCOPED_TRACE(what);
            const long calls = AllocationCount();
            const std::size_t bytes = AllocatedBytes();
            EXPECT_TRUE(Load(image, {}).loaded);
            costs.push_back({static_cast<double>(AllocationCount() - calls),
                             static_cast<double>(AllocatedBytes() - bytes)});
            if (!last.empty())
            {
                EXPECT_LE(costs.back().calls, 2.3 * last[costs.size() - 1].calls) << chunks;
                EXPECT_LE(costs.back().bytes, 2.3 * last[costs.size() - 1].bytes) << chunks;
            }
        }
        last = costs;
    }
}

/// A skeleton that moves: each node is translated and turned by `keys` keys.
void FillWithMotion(TEV2& scene, std::size_t nodes, std::size_t keys)
{
    scene.matrixHierarchy.nodes.resize(nodes);
    for (TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        auto translation = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        auto rotation = std::make_unique<TEV2_ANIMATABLE_QUATERNION_SLERP>();
        for (std::size_t key = 0; key < keys; ++key)
        {
            translation->Append(static_cast<float>(key), {1, 2, 3});
            rotation->Append(static_cast<float>(key), {});
        }
        node.name = Wide(u"a name of usual length");
        node.translation = std::move(translation);
        node.rotation = std::move(rotation);
    }
}

TEST(LoadMemory, OfAUsualFileAndItsSceneIsLittleMoreThanTwiceTheFile)
{
    const ScratchFolder folder;
    TEV2 scene;
    FillWithMotion(scene, 100, 300);
    const std::string path = folder.Path("motion");
    ASSERT_TRUE(SaveFile(scene, path));

    const AllocationPeak peak;
    TEV2 loaded;
    ASSERT_TRUE(LoadFile(path, loaded));
    const std::size_t size = std::filesystem::file_size(path);
    EXPECT_GT(size, 1'000'000u);
    EXPECT_LE(static_cast<double>(peak.Bytes()), 2.2 * static_cast<double>(size));
}

TEST(SaveMemory, DoesNotGrowWithTheScene)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("saved");
    constexpr std::size_t kBufferOfStream = std::size_t{1} << 18;
    for (const std::size_t nodes : {10u, 100u})
    {
        TEV2 scene;
        FillWithMotion(scene, nodes, 300);
        const AllocationPeak peak;
        TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(path), false, true);
        EXPECT_TRUE(scene.Save(writer) && writer.stream->Close());
        EXPECT_GE(peak.Bytes(), kBufferOfStream);
        EXPECT_LE(peak.Bytes(), kBufferOfStream + 8192) << nodes; // the heap rounds to pages
    }
}

TEST(LoadLimits, OfBytesThatSufficeChangeNothing)
{
    TEV2 scene;
    FillWithEverything(scene, true);
    const Bytes image{SceneImage(scene)};
    std::size_t enough = 1;
    while (!Load(image, {.bytes = enough}).loaded)
        enough += 16;
    EXPECT_GT(enough, image.data.size());
    const auto limited = LoadImageOf(image.data, false, {.bytes = enough});
    ASSERT_TRUE(limited->loaded);
    EXPECT_EQ(SceneImage(limited->scene), SceneImage(LoadImageOf(image.data)->scene));
}

/// An attempt to read a body must fit the limit; when it fails, what it took may be taken for the bytes.
TEST(LoadLimits, OfBytesHoldForEachAttemptAlone)
{
    constexpr std::size_t kSize = 2'000;
    constexpr std::size_t kFieldsBefore = 150; // are among the bytes
    for (const DenseBody& body : DenseBodies(kSize))
    {
        SCOPED_TRACE(body.what);
        std::size_t enough = 1;
        while (!Load(body.Typed(), {.bytes = enough}).loaded)
            enough += 16;
        EXPECT_GT(enough, kSize);
        const Outcome kept = Load(body.Kept(), {.bytes = enough + kFieldsBefore});
        EXPECT_TRUE(kept.loaded && kept.kept);
        ExpectRefusedForLimits(Load(body.Kept(), {.bytes = kSize / 2}));
    }
}

/// Nodes with these parents.
Bytes Hierarchy(const std::vector<std::uint32_t>& parents)
{
    Bytes nodes = Bytes().U32(static_cast<std::uint32_t>(parents.size()));
    for (const std::uint32_t parent : parents)
        nodes.Append(Node(parent));
    return Current().Chunk(12, nodes);
}

TEST(LoadLimits, OfNodesAndNesting)
{
    constexpr std::uint32_t kTop = 0xFFFFFFFFu;
    const struct
    {
        const char* what;
        std::vector<std::uint32_t> parents;
        std::size_t nesting; ///< the least that it loads with; 0: none
    } cases[] = {
        {"no node", {}, 1},
        {"one node", {kTop}, 1},
        {"two side by side", {kTop, kTop}, 1},
        {"a chain", {kTop, 0, 1, 2}, 4},
        {"a chain, children first", {1, 2, 3, kTop}, 4},
        {"a tree", {kTop, 0, 0, 2, 1, 0}, 3},
        {"below a node that is not there", {9, 0}, 2},
        {"its own parent", {kTop, 1}, 0},
        {"a circle, and a chain into it", {1, 2, 1, 0}, 0},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.what);
        const Bytes image = Hierarchy(item.parents);
        EXPECT_TRUE(Load(image, {}).loaded);
        for (std::size_t limit = 1; limit < 10; ++limit)
        {
            SCOPED_TRACE(limit);
            const Outcome nested = Load(image, {.nesting = limit});
            if (item.nesting != 0 && limit >= item.nesting)
                EXPECT_TRUE(nested.loaded);
            else
                ExpectRefusedForLimits(nested);
            const Outcome counted = Load(image, {.nodes = limit});
            if (limit >= item.parents.size())
                EXPECT_TRUE(counted.loaded);
            else
                ExpectRefusedForLimits(counted);
        }
    }
}

} // namespace
