#include "tests/tev2_loader/records/mesh_bytes.h"

// Single vertices: what they are in a file, and how meshes give them out and take them back.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

void FillVertex(TEV2_RIGID_VERT& vertex)
{
    vertex.colours = {{1, 2, 3, 4}};
    vertex.uvs = {{5, 6}, {7, 8}};
    vertex.position = {9, 10, 11};
    vertex.normal = {12, 13, 14};
    vertex.frame = {{15, 16, 17}, {18, 19, 20}};
}

const Bytes kRigidVertex = Bytes::Of(1u, CountingFloats(4, 1), 2u, CountingFloats(4, 5), CountingFloats(3, 9),
                                     1u, CountingFloats(3, 12), 1u, CountingFloats(6, 15));

TEST(Vertex, IsItsColumnsWithoutACount)
{
    TEV2_VERT vertex;
    ExpectStoredAs(vertex, Bytes().Zeros(8));
    vertex.colours = {{1, 2, 3, 4}};
    vertex.uvs = {{5, 6}, {7, 8}};
    ExpectStoredAs(vertex, Bytes::Of(1u, CountingFloats(4, 1), 2u, CountingFloats(4, 5)));

    TEV2_RIGID_VERT rigid;
    ExpectStoredAs(rigid, Bytes().Zeros(8 + 12 + 4 + 4));
    FillVertex(rigid);
    const TEV2_RIGID_VERT loaded = ExpectStoredAs(rigid, kRigidVertex);
    EXPECT_EQ(loaded.frame->tangent, (TEV2_VECTOR_3{18, 19, 20}));

    TEV2_TARGET_VERT target;
    ExpectStoredAs(target, Bytes::Of(0xFFFFFFFFu, Bytes().Zeros(20)));
    target.vertex = 7;
    target.position = {1, 2, 3};
    target.normal = {4, 5, 6};
    target.tangent = {7, 8, 9};
    const Bytes targetBytes =
        Bytes::Of(7u, CountingFloats(3, 1), 1u, CountingFloats(3, 4), 1u, CountingFloats(3, 7));
    ExpectStoredAs(target, targetBytes);

    TEV2_MORPH_MESH_VERT morph;
    FillVertex(morph);
    morph.targets.push_back(std::move(target));
    ExpectStoredAs(morph, Bytes::Of(kRigidVertex, 1u, targetBytes));

    ExpectStoredAs(TEV2_BONE_WEIGHT_DATA(3, 0.5f), Bytes::Of(3u, 0.5f));
    TEV2_WEIGHTED_MESH_VERT weighted;
    FillVertex(weighted);
    weighted.weights = {{3, 0.5f}, {4, 0.25f}};
    ExpectStoredAs(weighted, Bytes::Of(kRigidVertex, 2u, 3u, 0.5f, 4u, 0.25f));

    TEV2_TRI_CLIPPER_RIGID_VERT clipped;
    FillVertex(clipped);
    clipped.first = 1;
    clipped.second = 2;
    clipped.fraction = 0.25f;
    ExpectStoredAs(clipped, Bytes::Of(kRigidVertex, 1u, 2u, 0.25f));
}

TEST(Vertex, OfAnAnimMeshIsItsTracksAndMovesThem)
{
    TEV2_ANIM_MESH_VERT vertex;
    ExpectStoredAs(vertex, Bytes().Zeros(8 + 12));
    vertex.uvs = {{5, 6}};
    vertex.tracks.normal = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    ExpectStoredAs(
        vertex, Bytes::Of(0u, 1u, CountingFloats(2, 5), 0u, SampleTrackBytes(3, CountingFloats(6, 1)), 0u));
    vertex.SetTime(1.5f);
    EXPECT_EQ(vertex.tracks.normal->GetValue(), (TEV2_VECTOR_3{2.5f, 3.5f, 4.5f}));
}

template <typename Mesh>
void ExpectGivenOutAndTakenBack()
{
    Mesh from;
    FillMesh(from);
    Mesh to;
    if constexpr (requires { to.targets; })
        FillTargets(to.targets);
    if constexpr (std::is_same_v<Mesh, TEV2_MORPH_MESH>)
        to.targets[0].offsets = {};
    if constexpr (std::is_same_v<Mesh, TEV2_WEIGHTED_MESH>)
    {
        to.skin->bones = from.skin->bones;
        to.skin->bindMatrices = from.skin->bindMatrices;
    }
    for (std::size_t index = 0; index < 3; ++index)
        to.Append(from.Vertex(index));
    to.SetVertex(1, from.Vertex(1));
    FillHead(to);
    EXPECT_EQ(SavedBytes(to), BytesOf(from).data);
}

TEST(Vertices, AreGivenOutAndTakenBack)
{
    ExpectGivenOutAndTakenBack<TEV2_RIGID>();
    ExpectGivenOutAndTakenBack<TEV2_ANIM_MESH>();
    ExpectGivenOutAndTakenBack<TEV2_MORPH_MESH>();
    ExpectGivenOutAndTakenBack<TEV2_WEIGHTED_MESH>();
}

TEST(Vertices, ThatHaveMoreThanTheOthersMakeColumns)
{
    TEV2_RIGID_VERTICES vertices;
    vertices.Append({});
    EXPECT_TRUE(vertices.normals.empty() && vertices.frames.empty() && vertices.uvs.empty());
    TEV2_RIGID_VERT vertex;
    FillVertex(vertex);
    vertices.Append(vertex);
    vertices.Append({});
    EXPECT_EQ(vertices.uvs[1], (std::vector<TEV2_VECTOR_2>{{}, {7, 8}, {}}));
    EXPECT_EQ(vertices.colours[0], (std::vector<TEV2_VECTOR_4>{{}, {1, 2, 3, 4}, {}}));
    EXPECT_EQ(vertices.normals, (std::vector<TEV2_VECTOR_3>{{}, {12, 13, 14}, {}}));
    EXPECT_EQ(vertices.frames[1].tangent, (TEV2_VECTOR_3{18, 19, 20}));
    vertices.SetVertex(1, {});
    EXPECT_EQ(vertices.normals, std::vector<TEV2_VECTOR_3>(3));
}

TEST(Vertices, OfAMorphMeshChangeItsTargets)
{
    TEV2_MORPH_MESH mesh;
    FillMesh(mesh);
    TEV2_MORPH_MESH_VERT vertex = mesh.Vertex(1);
    ASSERT_EQ(vertex.targets.size(), 2u);
    EXPECT_EQ(vertex.targets[0].vertex, kNone) << "the target leaves it alone";

    vertex.targets[0].vertex = 1;
    vertex.targets[0].position = {1, 2, 3};
    vertex.targets.resize(1);
    mesh.SetVertex(1, vertex);
    TEV2_TARGET_VERTICES& offsets = mesh.targets[0].offsets;
    EXPECT_EQ(offsets.vertices, (std::vector<std::uint32_t>{0, 1, 2}));
    EXPECT_EQ(offsets.positions[1], (TEV2_VECTOR_3{1, 2, 3}));
    EXPECT_EQ(offsets.normals, (std::vector<TEV2_VECTOR_3>{{700, 701, 702}, {}, {703, 704, 705}}));

    vertex.targets.clear();
    mesh.SetVertex(0, vertex);
    EXPECT_EQ(offsets.vertices, (std::vector<std::uint32_t>{1, 2}));
    EXPECT_EQ(offsets.tangents, (std::vector<TEV2_VECTOR_3>{{}, {803, 804, 805}}));
}

TEST(Vertices, OfAWeightedMeshAllHaveRoomForTheMostWeights)
{
    TEV2_WEIGHTED_MESH mesh;
    FillMesh(mesh);
    TEV2_WEIGHTED_MESH_VERT vertex = mesh.Vertex(1);
    vertex.weights = {{0, 0.5f}, {1, 0.25f}, {0, 0.25f}};
    mesh.SetVertex(1, vertex);
    EXPECT_EQ(mesh.skin->influences, 3u);
    EXPECT_EQ(mesh.skin->boneIndices, (std::vector<std::uint32_t>{0, 1, 0, 0, 1, 0, 1, 1, 0}));
    EXPECT_EQ(mesh.skin->weights, (std::vector<float>{0.25f, 0.75f, 0, 0.5f, 0.25f, 0.25f, 0.5f, 0.5f, 0}));
    vertex.weights.resize(1);
    mesh.SetVertex(1, vertex);
    EXPECT_EQ(mesh.Vertex(1).weights[1].weight, 0.0f);
}

} // namespace
