#include "tests/tev2_loader/records/mesh_bytes.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

template <typename Mesh>
class EveryMesh : public testing::Test
{
};

using Meshes = testing::Types<TEV2_RIGID, TEV2_ANIM_MESH, TEV2_MORPH_MESH, TEV2_WEIGHTED_MESH>;
TYPED_TEST_SUITE(EveryMesh, Meshes);

template <typename Mesh>
void ExpectAsConstructed(const Mesh& mesh)
{
    EXPECT_TRUE(mesh.castsShadow && mesh.receivesShadow);
    EXPECT_EQ(mesh.visibility, nullptr);
    EXPECT_EQ(mesh.TriangleCount(), 0u);
    EXPECT_TRUE(mesh.vertices.Empty());
    EXPECT_EQ(mesh.vertices->Count(), 0u);
}

TYPED_TEST(EveryMesh, IsItsBytes)
{
    TypeParam mesh;
    FillMesh(mesh);
    const Bytes bytes = BytesOf(mesh);
    EXPECT_EQ(SavedBytes(mesh), bytes.data);

    TypeParam loaded;
    for (const char* where : {"in an empty one", "over what there was"})
    {
        EXPECT_EQ(LoadBodyOf(loaded, bytes.data), "") << where;
        EXPECT_TRUE(loaded.IsTyped()) << where;
        EXPECT_EQ(SavedBytes(loaded), bytes.data) << where;
    }
    EXPECT_EQ(loaded.TriangleCount(), 3u);
    const TEV2_CARD32_TRIPLE last = loaded.Triangle(2);
    EXPECT_EQ((std::array{last.first, last.second, last.third}), (std::array<std::uint32_t, 3>{0, 2, 1}));
}

TYPED_TEST(EveryMesh, WithNothingInItHasTheFewestBytes)
{
    const TypeParam mesh;
    ExpectAsConstructed(mesh);
    const std::vector<std::uint8_t> bytes = SavedBytes(mesh);
    const Bytes head = Bytes::Of(u"", u"", u"", 0u, Bytes().Zeros(20), 0u, 0u, kOurLayout, 0u, 1u, 1u, 0u);
    ASSERT_GT(bytes.size(), head.data.size());
    EXPECT_EQ(std::vector(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(head.data.size())),
              head.data);
    for (std::size_t at = head.data.size(); at < bytes.size(); ++at)
        EXPECT_EQ(bytes[at], 0) << at;
    TypeParam loaded;
    EXPECT_EQ(LoadBodyOf(loaded, bytes), "");
    EXPECT_TRUE(loaded.IsTyped());
    EXPECT_TRUE(mesh.vertices.Empty()) << "after it was saved";
}

TYPED_TEST(EveryMesh, ThatIsAByteShortOrLongIsKept)
{
    TypeParam mesh;
    FillMesh(mesh);
    mesh.bounds = SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({}, {});
    const std::vector<std::uint8_t> whole = SavedBytes(mesh);
    std::vector<std::uint8_t> shorter = whole;
    shorter.pop_back();
    std::vector<std::uint8_t> longer = whole;
    longer.push_back(0);
    for (const auto& bytes : {shorter, longer})
    {
        EXPECT_NE(LoadBodyOf(mesh, bytes), "");
        EXPECT_FALSE(mesh.IsTyped());
        EXPECT_EQ(mesh.name, Wide(u"m"));
        ExpectAsConstructed(mesh);
        EXPECT_EQ(SavedBytes(mesh), bytes);
        mesh.SetTime(1.0f);
        EXPECT_EQ(mesh.bounds->m_fraction, 0.25f) << "nothing else moves";
        ExpectAsConstructed(mesh);
    }
}

TYPED_TEST(EveryMesh, MovesItsVisibilityAndBounds)
{
    TypeParam mesh;
    FillMesh(mesh);
    mesh.bounds = SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({}, {});
    mesh.SetTime(1.0f);
    EXPECT_EQ(mesh.visibility->m_fraction, 0.25f);
    EXPECT_EQ(mesh.bounds->m_fraction, 0.25f);
    mesh.Update(0.5f);
    EXPECT_EQ(mesh.visibility->m_fraction, 0.5f);
    EXPECT_EQ(mesh.bounds->m_fraction, 0.5f);
    if constexpr (requires { mesh.targets; })
    {
        EXPECT_EQ(mesh.targets[0].Weight(), 0.75f);
        EXPECT_EQ(mesh.targets[1].Weight(), 0.0f) << "without a track";
    }
}

/// Expects that a load keeps this body for this reason.
template <typename Mesh>
void ExpectKept(const std::vector<std::uint8_t>& bytes, const std::string& finding)
{
    Mesh mesh;
    FillMesh(mesh);
    EXPECT_EQ(LoadBodyOf(mesh, bytes), finding);
    EXPECT_FALSE(mesh.IsTyped()) << finding;
    EXPECT_EQ(mesh.name, Wide(u"m"));
    ExpectAsConstructed(mesh);
    EXPECT_EQ(SavedBytes(mesh), bytes) << finding;
}

/// Spoils a mesh and expects that its save is false for this reason, and that a load of what it wrote keeps the body.
template <typename Mesh>
void ExpectKept(void (*spoil)(Mesh& mesh), const std::string& finding)
{
    Mesh mesh;
    FillMesh(mesh);
    spoil(mesh);
    const std::vector<std::uint8_t> bytes = WrittenBy(
        [&](TEV2_FILE_WRITER& writer)
        {
            EXPECT_FALSE(mesh.Save(writer)) << finding;
            EXPECT_EQ(writer.refusal.field, finding.substr(0, finding.find(": ")));
        });
    ExpectKept<Mesh>(bytes, finding);
}

TEST(Meshes, AreKeptWhereIndicesLeadOutOfThem)
{
    using Rigid = TEV2_RIGID;
    using Anim = TEV2_ANIM_MESH;
    using Morph = TEV2_MORPH_MESH;
    using Weighted = TEV2_WEIGHTED_MESH;
    ExpectKept<Rigid>([](auto& m) { m.subObjects[1].triangles[1][1] = 3; },
                      "subObjects[1].triangles[1]: below 3, 3");
    ExpectKept<Rigid>([](auto& m) { *m.vertices = {}; }, "subObjects[0].triangles[0]: below 0, 2");
    ExpectKept<Anim>([](auto& m) { m.subObjects[0].triangles[0][2] = 0xFFFFFFFFu; },
                     "subObjects[0].triangles[0]: below 3, 4294967295");
    ExpectKept<Morph>(
        [](auto& m) {
            m.subObjects[1].triangles[0] = TEV2_TRIANGLE{3, 4, 0};
        },
        "subObjects[1].triangles[0]: below 3, 4");
    ExpectKept<Morph>([](auto& m) { m.targets[0].offsets.vertices[1] = 0; },
                      "targets[0].offsets.vertices[1]: above 0, 0");
    ExpectKept<Morph>([](auto& m) { m.targets[0].offsets.vertices[0] = 9; },
                      "targets[0].offsets.vertices[1]: above 9, 2");
    ExpectKept<Morph>([](auto& m) { m.targets[0].offsets.vertices[1] = 3; },
                      "targets[0].offsets.vertices[1]: below 3, 3");
    ExpectKept<Weighted>([](auto& m) { m.subObjects[0].triangles[0][0] = 3; },
                         "subObjects[0].triangles[0]: below 3, 3");
    ExpectKept<Weighted>([](auto& m) { m.skin->boneIndices[4] = 2; }, "skin.boneIndices[4]: below 2, 2");
    ExpectKept<Weighted>([](auto& m) { m.skin->bones = {}; }, "skin.boneIndices[0]: below 0, 0");
    ExpectKept<Weighted>([](auto& m) { m.skin->bindMatrices.resize(1); }, "skin.bindMatrices: none or 2, 1");
    ExpectKept<Weighted>([](auto& m) { m.targets[0].offsets.vertices[1] = 3; },
                         "targets[0].offsets.vertices[1]: below 3, 3");
}

TEST(Meshes, AreKeptWhereNumbersAreNotOfTheLayout)
{
    const std::vector<std::uint8_t> whole = BytesOf(TEV2_WEIGHTED_MESH()).data;
    const std::size_t head = HeadBytes().data.size();
    const std::size_t skin = head + VertexBytes().data.size();
    const std::size_t normals = head + 4 + 4 + 48 + 4 + 48 + 36;
    const std::string most_vertices = std::to_string((whole.size() - head - 4) / 12);
    const auto expect_kept = [&](std::size_t offset, std::uint32_t word, const std::string& finding)
    {
        std::vector<std::uint8_t> bytes = whole;
        SetWordAt(bytes, offset, word);
        ExpectKept<TEV2_WEIGHTED_MESH>(bytes, finding);
    };
    expect_kept(head, 0xFFFFFFFFu, "vertices: at most " + most_vertices + ", 4294967295");
    expect_kept(head + 4, 65, "vertices.colours: at most 64, 65");
    expect_kept(normals, 2, "vertices.normals: 0 or 1, 2");
    expect_kept(skin, 65, "skin.influences: at most 64, 65");
}

TEST(Meshes, WithColumnsOfOtherLengthsAreNotSaved)
{
    const auto saved = [](const TEV2_WEIGHTED_MESH& mesh)
    {
        bool result = false;
        WrittenBy([&](TEV2_FILE_WRITER& writer) { result = mesh.Save(writer); });
        return result;
    };
    void (*const spoil[])(TEV2_WEIGHTED_MESH&) = {
        [](auto& mesh) { mesh.vertices->normals.pop_back(); },
        [](auto& mesh) { mesh.vertices->uvs[1].pop_back(); },
        [](auto& mesh) { mesh.vertices->colours.resize(65, mesh.vertices->colours[0]); },
        [](auto& mesh) { mesh.skin->weights.push_back(0.0f); },
        [](auto& mesh) { mesh.targets[0].offsets.positions.pop_back(); },
        [](auto& mesh) { mesh.skin->influences = 0xFFFFFFFF; }, // and does not write as many entries
    };
    for (const auto& each : spoil)
    {
        TEV2_WEIGHTED_MESH mesh;
        FillMesh(mesh);
        EXPECT_TRUE(saved(mesh));
        each(mesh);
        EXPECT_FALSE(saved(mesh)) << &each - spoil;
    }
}

TEST(AnimMesh, HasItsVerticesAtThePresentTime)
{
    using Positions = std::vector<TEV2_VECTOR_3>;
    using Frames = std::vector<TEV2_VERTEX_FRAME>;
    TEV2_ANIM_MESH mesh;
    FillMesh(mesh);
    EXPECT_TRUE(mesh.vertices->positions.empty()) << "until it is moved";

    mesh.SetTime(1.0f); // a quarter of the way from 0.5 s to 2.5 s
    EXPECT_EQ(mesh.vertices->positions, (Positions{{0.5f, 1, 1.5f}, {}, {}}));
    EXPECT_EQ(mesh.vertices->normals, (Positions{{}, {0, 0.5f, 1}, {}}));
    EXPECT_EQ(mesh.vertices->frames, (Frames{{}, {{1, 0, 1}, {0, 1, 2}}, {}}));
    mesh.Update(0.5f);
    EXPECT_EQ(mesh.vertices->positions[0], (TEV2_VECTOR_3{1, 2, 3}));
    mesh.SetTime(9.0f); // held after the last key
    EXPECT_EQ(mesh.vertices->positions[0], (TEV2_VECTOR_3{2, 4, 6}));

    TEV2_ANIM_MESH loaded;
    EXPECT_EQ(LoadBodyOf(loaded, BytesOf(loaded).data), "");
    EXPECT_EQ(loaded.vertices->positions, Positions(3)) << "at the first key, before it is moved";
    EXPECT_EQ(loaded.vertices->normals, (Positions{{}, {0, 0, 1}, {}}));

    mesh.vertices->tracks.pop_back();
    mesh.vertices->tracks[1].normal = nullptr;
    mesh.vertices->tracks[1].frame = nullptr;
    mesh.SetTime(0.0f);
    EXPECT_EQ(mesh.vertices->positions, Positions(2));
    EXPECT_TRUE(mesh.vertices->normals.empty());
    EXPECT_TRUE(mesh.vertices->frames.empty());
}

TEST(AnimMesh, TakesNoMoreMemoryThanItMay)
{
    constexpr std::size_t kVertices = 1000;
    TEV2_ANIM_MESH mesh;
    mesh.vertices->tracks.resize(kVertices);
    const std::vector<std::uint8_t> bytes = SavedBytes(mesh);
    const std::size_t tracks = kVertices * sizeof(TEV2_VERTEX_TRACKS) + sizeof(TEV2_ANIM_VERTICES);
    const std::size_t positions = kVertices * sizeof(TEV2_VECTOR_3);
    EXPECT_EQ(LoadBodyOf(mesh, bytes, {tracks + positions}), "");
    EXPECT_TRUE(mesh.IsTyped());
    EXPECT_NE(LoadBodyOf(mesh, bytes, {tracks + positions - 1}), "");
    ExpectAsConstructed(mesh);
}

} // namespace
