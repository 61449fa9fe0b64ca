#include "tests/support/sample_scenes.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// The kinds of a file's chunks and where their bodies begin.
std::vector<std::pair<std::uint32_t, std::size_t>> Chunks(const std::vector<std::uint8_t>& image)
{
    std::vector<std::pair<std::uint32_t, std::size_t>> chunks;
    TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
    EXPECT_EQ(cursor.ReadU32(), kMagic);
    while (cursor.Remaining() > 0)
    {
        const std::uint32_t size = cursor.ReadU32();
        const std::uint32_t id = cursor.ReadU32();
        chunks.emplace_back(id, cursor.Offset());
        cursor.current += size - 8;
    }
    return chunks;
}

TEST(Save, WritesTheSmallestFile)
{
    const Bytes expected = Bytes()
                               .U8({0x01, 0x32, 0x56, 0x54})
                               .Chunk(0, Bytes().U32(0x3F947AE1u).Text(u"NATIVE WIN32").Text(u""))
                               .Chunk(1, Bytes().U32(23).Zeros(23 * 4))
                               .Chunk(2, Bytes().Zeros(24))
                               .Chunk(22, Bytes().Zeros(4))
                               .Chunk(12, Bytes().Zeros(4));
    const std::vector<std::uint8_t> image = SceneImage(TEV2());
    EXPECT_EQ(image, expected.data);
    EXPECT_EQ(image.size(), 204u);
}

TEST(Save, WritesTheChunksInTheirOrder)
{
    TEV2 scene;
    FillWithEverything(scene, true);
    std::vector<std::uint32_t> ids;
    for (const auto& [id, body] : Chunks(SceneImage(scene)))
        ids.push_back(id);
    const std::vector<std::uint32_t> expected = {0,  1,  2,  3,  4,  22, 5,  5,  5,  5,  5,  5,  6,  6,
                                                 7,  7,  7,  8,  8,  8,  9,  9,  9,  10, 10, 10, 11, 11,
                                                 11, 17, 17, 17, 23, 23, 23, 12, 13, 13, 13, 19, 18, 16,
                                                 14, 14, 18, 16, 15, 15, 20, 20, 21, 21, 21, 14};
    EXPECT_EQ(ids, expected);
}

TEST(Save, CountsEveryArrayInItsPlace)
{
    TEV2 scene;
    std::uint32_t next = 1;
    std::vector<std::uint32_t> expected = {23};
    const auto fill = [&](auto&... arrays) // with null entries: counted, but no chunk
    { ((arrays.resize(next), expected.push_back(next++)), ...); };
    auto& lists = scene.instanceLists;
    fill(scene.lights, scene.cameras, scene.rigids, scene.animMeshes, scene.morphMeshes, scene.weightedMeshes,
         scene.bezierSplines, scene.helpers, scene.materials, lists[3], lists[2], lists[5], lists[0],
         lists[4], lists[6], lists[1], lists[7], scene.xrefs15, scene.xrefs20, scene.xrefObjects, lists[8],
         scene.speedTreeReferences, lists[9]);

    const std::vector<std::uint8_t> image = SceneImage(scene);
    const auto chunks = Chunks(image);
    ASSERT_EQ(chunks.size(), 5u);
    TEV2_MEMORY_CURSOR cursor(image.data() + chunks[1].second, 96);
    for (const std::uint32_t count : expected)
        EXPECT_EQ(cursor.ReadU32(), count);
}

TEST(Save, AFileComesBackAndIsWrittenTheSame)
{
    TEV2 scene;
    FillWithEverything(scene);
    scene.lights.erase(scene.lights.begin() + 1); // the null entry: the file knows nothing of it
    const auto loaded = LoadImageOf(SceneImage(scene));
    ASSERT_TRUE(loaded->loaded);
    for (const TEV2_LOAD_FINDING& finding : loaded->report.findings)
        EXPECT_EQ(finding.code, TEV2_LOAD_CODE::BodyKept) << FindingText(finding);
    EXPECT_EQ(SceneImage(loaded->scene), SceneImage(scene));
}

TEST(Save, IsFalseWhereTheFileCannotLoad)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("more");
    const TEV2 scene;
    {
        TEV2_FILE_WRITER writer = WriterTo(path);
        EXPECT_TRUE(scene.Save(writer));
        EXPECT_FALSE(scene.Save(writer));
    }
    EXPECT_FALSE(LoadImageOf(ReadBytes(path))->loaded);
    for (const bool is_new : {false, true})
    {
        if (is_new)
            std::remove(path.c_str());
        TEV2_FILE_WRITER writer = WriterTo(path, true);
        EXPECT_FALSE(scene.Save(writer));
        EXPECT_TRUE(writer.stream->Close());
        EXPECT_FALSE(LoadImageOf(ReadBytes(path))->loaded);
    }
}

TEST(Save, AFileThatMetAnErrorDoesNotLoad)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("latched");
    {
        TEV2 scene;
        TEV2_FILE_WRITER writer = WriterTo(path);
        writer.stream->lastError = 5;
        EXPECT_TRUE(scene.Save(writer));
        EXPECT_EQ(writer.stream->lastError, 5);
    }
    std::vector<std::uint8_t> image = ReadBytes(path);
    EXPECT_EQ(image.size(), 204u);
    EXPECT_FALSE(LoadImageOf(image)->loaded);
    std::fill_n(image.begin(), 4, std::uint8_t{0});
    EXPECT_EQ(image, ReadBytes(path));
}

} // namespace
