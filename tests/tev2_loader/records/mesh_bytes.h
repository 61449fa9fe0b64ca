#pragma once

#include "tests/support/records.h"
#include "tests/support/tracks.h"
#include "tev2_loader/records/meshes.h"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

// Meshes of three vertices and three triangles, and their bytes by hand.

namespace tv2_tests
{

/// The numbers first, first + 1 and so on.
inline Bytes CountingFloats(std::size_t count, float first)
{
    Bytes bytes;
    for (std::size_t index = 0; index < count; ++index)
        bytes.F32({first + static_cast<float>(index)});
    return bytes;
}

/// Elements whose floats are those numbers.
template <typename Element>
std::vector<Element> CountingElements(std::size_t count, float first)
{
    const Bytes bytes = CountingFloats(count * sizeof(Element) / sizeof(float), first);
    std::vector<Element> elements(count);
    std::memcpy(static_cast<void*>(elements.data()), bytes.data.data(), bytes.data.size());
    return elements;
}

/// What all meshes begin with.
inline void FillHead(TEV2_LOADER::TEV2_TRI_OBJECT& mesh)
{
    mesh.name = Wide(u"m");
    mesh.value = 3;
    mesh.lights = {7};
    mesh.visibility = FloatTrack(0, 1);
    mesh.receivesShadow = false;
    mesh.subObjects.resize(2);
    mesh.subObjects[0].material = 4;
    mesh.subObjects[0].triangles = {{0, 1, 2}};
    mesh.subObjects[1].triangles = {{2, 1, 0}, {0, 2, 1}};
}

inline Bytes HeadBytes()
{
    const Bytes placed = Bytes::Of(u"m", u"", u"", 3u, Bytes().Zeros(20), 0u);
    const Bytes subObjects = Bytes().U32({2, 4, 1, 0, 1, 2, 0xFFFFFFFFu, 2, 2, 1, 0, 0, 2, 1});
    return Bytes::Of(placed, 1u, 7u, kOurLayout, FloatTrackBytes(0, 1), 1u, 0u, subObjects);
}

/// One set of colours, two of texture coordinates.
inline void FillColumns(TEV2_LOADER::TEV2_VERT_COLUMNS& vertices)
{
    vertices.colours = {CountingElements<TEV2_LOADER::TEV2_VECTOR_4>(3, 0)};
    vertices.uvs = {CountingElements<TEV2_LOADER::TEV2_VECTOR_2>(3, 100),
                    CountingElements<TEV2_LOADER::TEV2_VECTOR_2>(3, 200)};
}

inline Bytes ColumnBytes()
{
    return Bytes::Of(3u, 1u, CountingFloats(12, 0), 2u, CountingFloats(6, 100), CountingFloats(6, 200));
}

inline void FillVertices(TEV2_LOADER::TEV2_RIGID_VERTICES& vertices)
{
    FillColumns(vertices);
    vertices.positions = CountingElements<TEV2_LOADER::TEV2_VECTOR_3>(3, 300);
    vertices.normals = CountingElements<TEV2_LOADER::TEV2_VECTOR_3>(3, 400);
    vertices.frames = CountingElements<TEV2_LOADER::TEV2_VERTEX_FRAME>(3, 500);
}

inline Bytes VertexBytes()
{
    return Bytes::Of(ColumnBytes(), CountingFloats(9, 300), 1u, CountingFloats(9, 400), 1u,
                     CountingFloats(18, 500));
}

/// Two targets: one with all columns that moves vertices 0 and 2, and one that moves none.
inline void FillTargets(std::vector<TEV2_LOADER::TEV2_MORPH_TARGET>& targets)
{
    targets.resize(2);
    targets[0].name = Wide(u"smile");
    targets[0].track = FloatTrack(0.5f, 1);
    targets[0].offsets.vertices = {0, 2};
    targets[0].offsets.positions = CountingElements<TEV2_LOADER::TEV2_VECTOR_3>(2, 600);
    targets[0].offsets.normals = CountingElements<TEV2_LOADER::TEV2_VECTOR_3>(2, 700);
    targets[0].offsets.tangents = CountingElements<TEV2_LOADER::TEV2_VECTOR_3>(2, 800);
}

inline Bytes TargetBytes()
{
    const Bytes smile = Bytes::Of(u"smile", FloatTrackBytes(0.5f, 1), 2u, 0u, 2u, CountingFloats(6, 600), 1u,
                                  CountingFloats(6, 700), 1u, CountingFloats(6, 800));
    return Bytes::Of(2u, smile, u"", Bytes().Zeros(16));
}

inline void FillMesh(TEV2_LOADER::TEV2_RIGID& mesh)
{
    FillHead(mesh);
    FillVertices(*mesh.vertices);
}

/// Vertex 0 moves, vertex 1 turns its normal and its frame, vertex 2 does nothing.
inline void FillMesh(TEV2_LOADER::TEV2_ANIM_MESH& mesh)
{
    using namespace TEV2_LOADER;
    FillHead(mesh);
    FillColumns(*mesh.vertices);
    auto& tracks = mesh.vertices->tracks;
    tracks.resize(3);
    tracks[0].position = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0, 0, 0}, {2, 4, 6});
    tracks[1].normal = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0, 0, 1}, {0, 2, 1});
    tracks[1].frame =
        SampleTrack<TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR>({{1, 0, 0}, {0, 1, 0}}, {{1, 0, 4}, {0, 1, 8}});
}

inline void FillMesh(TEV2_LOADER::TEV2_MORPH_MESH& mesh)
{
    FillHead(mesh);
    FillVertices(*mesh.vertices);
    FillTargets(mesh.targets);
}

/// Two influences, two bones with matrices.
inline void FillMesh(TEV2_LOADER::TEV2_WEIGHTED_MESH& mesh)
{
    FillHead(mesh);
    FillVertices(*mesh.vertices);
    mesh.skin->influences = 2;
    mesh.skin->boneIndices = {0, 1, 1, 0, 1, 1};
    mesh.skin->weights = {0.25f, 0.75f, 1, 0, 0.5f, 0.5f};
    mesh.skin->bones = {5, 9};
    mesh.skin->bindMatrices = CountingElements<TEV2_LOADER::TEV2_MATRIX_3X4>(2, 900);
    FillTargets(mesh.targets);
}

inline Bytes BytesOf(const TEV2_LOADER::TEV2_RIGID&)
{
    return Bytes::Of(HeadBytes(), VertexBytes());
}

inline Bytes BytesOf(const TEV2_LOADER::TEV2_ANIM_MESH&)
{
    const Bytes position = SampleTrackBytes(3, Bytes().F32({0, 0, 0, 2, 4, 6}));
    const Bytes normal = SampleTrackBytes(3, Bytes().F32({0, 0, 1, 0, 2, 1}));
    const Bytes frame = SampleTrackBytes(10, Bytes().F32({1, 0, 0, 0, 1, 0, 1, 0, 4, 0, 1, 8}));
    return Bytes::Of(HeadBytes(), ColumnBytes(), position, 0u, 0u, 0u, normal, frame, 0u, 0u, 0u);
}

inline Bytes BytesOf(const TEV2_LOADER::TEV2_MORPH_MESH&)
{
    return Bytes::Of(HeadBytes(), VertexBytes(), TargetBytes());
}

inline Bytes BytesOf(const TEV2_LOADER::TEV2_WEIGHTED_MESH&)
{
    const Bytes weights = Bytes().U32({2, 0, 1, 1, 0, 1, 1}).F32({0.25f, 0.75f, 1, 0, 0.5f, 0.5f});
    return Bytes::Of(HeadBytes(), VertexBytes(), weights, 2u, 5u, 9u, 2u, CountingFloats(24, 900),
                     TargetBytes());
}

/// Loads a body that fills its chunk; returns the finding "path: expected, found", empty where there is none.
template <typename Mesh>
std::string LoadBodyOf(Mesh& mesh, const std::vector<std::uint8_t>& bytes,
                       const TEV2_LOADER::TEV2_LOAD_LIMITS& limits = {})
{
    TEV2_LOADER::TEV2_LOAD_REPORT report;
    TEV2_LOADER::TEV2_MEMORY_CURSOR cursor(bytes.data(), bytes.size(), &report, limits);
    const bool loaded = mesh.Load(cursor, TEV2_LOADER::kVersion);
    EXPECT_EQ(loaded, !cursor.Failed());
    EXPECT_EQ(cursor.Offset(), bytes.size());
    if (report.findings.empty())
        return "";
    EXPECT_EQ(report.findings.size(), 1u);
    const TEV2_LOADER::TEV2_LOAD_FINDING& finding = report.findings.front();
    EXPECT_EQ(finding.code, cursor.Failed() ? TEV2_LOADER::TEV2_LOAD_CODE::LimitExceeded
                                            : TEV2_LOADER::TEV2_LOAD_CODE::BodyKept);
    return finding.path + ": " + finding.expected + ", " + finding.found;
}

} // namespace tv2_tests
