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

bool Loads(const std::vector<std::uint8_t>& image)
{
    TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
    return TEV2().Load(cursor, false);
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
    const std::vector<std::uint32_t> expected = {0,  1,  2,  3,          4,  22, 5,  5,  5,  6,  7,
                                                 8,  9,  10, 11,         17, 23, 12, 13, 13, 13, 19,
                                                 18, 16, 14, /* 4 */ 14, 18, 16, 15, 20, 21, 14};
    EXPECT_EQ(ids, expected);
}

TEST(Save, PutsTypesAndListsBeforeTheBodies)
{
    TEV2 scene;
    FillWithEverything(scene, true);
    const std::vector<std::uint8_t> image = SceneImage(scene);
    std::vector<std::uint32_t> lights;
    std::vector<std::uint32_t> materials;
    std::vector<std::uint32_t> lists;
    for (const auto& [id, body] : Chunks(image))
    {
        TEV2_MEMORY_CURSOR cursor(image.data() + body, image.size() - body);
        if (id == 5)
            lights.push_back(cursor.ReadU32());
        if (id == 13)
            materials.push_back(cursor.ReadU32());
        if (id == 14 || id == 16 || id == 18 || id == 19)
        {
            lists.push_back(cursor.ReadU32());
            EXPECT_EQ(*cursor.current, lists.back()) << "the body that the sample gave it";
        }
    }
    EXPECT_EQ(lights, (std::vector<std::uint32_t>{0, 2, 77}));
    EXPECT_EQ(materials, (std::vector<std::uint32_t>{1, 0, 5}));
    EXPECT_EQ(lists, (std::vector<std::uint32_t>{3, 2, 5, 0, 4, 6, 1, 8}));
}

TEST(Save, CountsEveryArrayInItsPlace)
{
    TEV2 scene;
    std::uint32_t next = 1;
    std::vector<std::uint32_t> expected = {23};
    const auto fill = [&](auto& array)
    {
        array.resize(next); // null entries: counted, but no chunk
        expected.push_back(next++);
    };
    auto& lists = scene.instanceLists;
    fill(scene.lights);
    fill(scene.cameras);
    fill(scene.rigids);
    fill(scene.animMeshes);
    fill(scene.morphMeshes);
    fill(scene.weightedMeshes);
    fill(scene.bezierSplines);
    fill(scene.helpers);
    fill(scene.materials);
    for (const std::size_t list : {3u, 2u, 5u, 0u, 4u, 6u, 1u, 7u})
        fill(lists[list]);
    fill(scene.xrefs15);
    fill(scene.xrefs20);
    fill(scene.xrefObjects);
    fill(lists[8]);
    fill(scene.speedTreeReferences);
    fill(lists[9]);

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
    // The file knows nothing of the null entry.
    scene.lights.erase(scene.lights.begin() + 1);
    const std::vector<std::uint8_t> image = SceneImage(scene);
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(image.data(), image.size(), &report);
    TEV2 loaded;
    ASSERT_TRUE(loaded.Load(cursor, false));
    EXPECT_TRUE(report.findings.empty());
    EXPECT_EQ(SceneImage(loaded), image);
}

TEST(Save, IsFalseWhereTheFileCannotLoad)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("more");
    const TEV2 scene;
    {
        TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(path), false, true);
        EXPECT_TRUE(scene.Save(writer));
        EXPECT_FALSE(scene.Save(writer));
    }
    EXPECT_FALSE(Loads(ReadBytes(path)));
    for (const bool is_new : {false, true})
    {
        if (is_new)
            std::remove(path.c_str());
        TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(path), true, true);
        EXPECT_FALSE(scene.Save(writer));
        EXPECT_TRUE(writer.stream->Close());
        EXPECT_FALSE(Loads(ReadBytes(path)));
    }
}

TEST(Save, WithoutAFileReportsFailure)
{
    const ScratchFolder folder;
    TEV2 scene;
    TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(folder.Path("no") + "/such/folder.tv2"), false, true);
    EXPECT_FALSE(scene.Save(writer));
    EXPECT_NE(writer.stream->lastError, 0);
}

TEST(Save, AFileThatMetAnErrorDoesNotLoad)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("latched");
    {
        TEV2 scene;
        TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(path), false, true);
        writer.stream->lastError = 5;
        EXPECT_TRUE(scene.Save(writer));
        EXPECT_EQ(writer.stream->lastError, 5);
    }
    std::vector<std::uint8_t> image = ReadBytes(path);
    EXPECT_EQ(image.size(), 204u);
    EXPECT_FALSE(Loads(image));
    std::fill_n(image.begin(), 4, std::uint8_t{0});
    EXPECT_EQ(image, ReadBytes(path));
}

} // namespace
