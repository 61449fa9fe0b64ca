#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_loader/math/vectors.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace TEV2_LOADER
{

// Vertices. A mesh holds them column by column (TEV2_RIGID_VERTICES and the others): plain arrays that can be uploaded
// as they are, of one length. TEV2_RIGID_VERT and the others are one vertex as a record of its own, which a mesh gives
// out and takes back.

/// What all kinds of vertices have.
class TEV2_VERT : public TEV2_RECORD_OF<TEV2_VERT, TEV2_SERIALISABLE_OBJECT>
{
public:
    std::vector<TEV2_VECTOR_4> colours; ///< linear red, green, blue, and alpha, one of each set
    std::vector<TEV2_VECTOR_2>
        uvs; ///< of each set; (0, 0) is the upper left corner of the image, v runs down

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        archive.Values("colours", vertex.colours);
        archive.Values("uvs", vertex.uvs);
    }
};

/// A vertex that does not move by itself, in the axes of the mesh.
class TEV2_RIGID_VERT : public TEV2_RECORD_OF<TEV2_RIGID_VERT, TEV2_VERT>
{
public:
    TEV2_VECTOR_3 position;              ///< metres
    std::optional<TEV2_VECTOR_3> normal; ///< none: its triangles are flat
    std::optional<TEV2_VERTEX_FRAME> frame;

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        TEV2_VERT::Fields(vertex, archive);
        archive.Value("position", vertex.position);
        archive.OptionalValue("normal", vertex.normal);
        archive.OptionalValue("frame", vertex.frame);
    }
};

/// The tracks of a vertex that moves.
struct TEV2_VERTEX_TRACKS
{
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> position;      ///< metres; null: the origin
    std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> normal;        ///< null: none
    std::unique_ptr<TEV2_ANIMATABLE_BINORMAL_TANGENT> frame; ///< null: none

    template <typename Self, typename Archive>
    static void Fields(Self& tracks, Archive& archive)
    {
        archive.Track("position", tracks.position);
        archive.Track("normal", tracks.normal);
        archive.Track("frame", tracks.frame);
    }
};

/// A vertex that moves.
class TEV2_ANIM_MESH_VERT final
    : public TEV2_MOVING_RECORD_OF<TEV2_ANIM_MESH_VERT, TEV2_VERT, TEV2_INTERNAL_ANIM_OBJECT>
{
public:
    TEV2_VERTEX_TRACKS tracks;

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        TEV2_VERT::Fields(vertex, archive);
        TEV2_VERTEX_TRACKS::Fields(vertex.tracks, archive);
    }
};

/// How a morph target moves a vertex: offsets at a weight of 1. The binormal is formed anew.
class TEV2_TARGET_VERT final : public TEV2_RECORD_OF<TEV2_TARGET_VERT, TEV2_SERIALISABLE_OBJECT>
{
public:
    std::uint32_t vertex = kNone; ///< index of the vertex in its mesh
    TEV2_VECTOR_3 position;       ///< metres
    std::optional<TEV2_VECTOR_3> normal;
    std::optional<TEV2_VECTOR_3> tangent;

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        archive.Value("vertex", vertex.vertex);
        archive.Value("position", vertex.position);
        archive.OptionalValue("normal", vertex.normal);
        archive.OptionalValue("tangent", vertex.tangent);
    }
};

/// A vertex of a morph mesh.
class TEV2_MORPH_MESH_VERT final : public TEV2_RECORD_OF<TEV2_MORPH_MESH_VERT, TEV2_RIGID_VERT>
{
public:
    /// One for each target of the mesh, in their order. Its `vertex` is kNone where the target leaves the vertex alone.
    std::vector<TEV2_TARGET_VERT> targets;

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        TEV2_RIGID_VERT::Fields(vertex, archive);
        archive.Records("targets", vertex.targets);
    }
};

/// A bone that a vertex follows, and how far.
class TEV2_BONE_WEIGHT_DATA final : public TEV2_RECORD_OF<TEV2_BONE_WEIGHT_DATA, TEV2_SERIALISABLE_OBJECT>
{
public:
    std::uint32_t bone = 0; ///< index in the bones of the mesh, not in the nodes
    float weight = 0.0f;    ///< the weights of a vertex have the sum 1

    TEV2_BONE_WEIGHT_DATA() = default;
    TEV2_BONE_WEIGHT_DATA(std::uint32_t the_bone, float the_weight) : bone(the_bone), weight(the_weight) {}

    template <typename Self, typename Archive>
    static void Fields(Self& data, Archive& archive)
    {
        archive.Value("bone", data.bone);
        archive.Value("weight", data.weight);
    }
};

/// A vertex of a weighted mesh, in its bind space.
class TEV2_WEIGHTED_MESH_VERT final : public TEV2_RECORD_OF<TEV2_WEIGHTED_MESH_VERT, TEV2_RIGID_VERT>
{
public:
    std::vector<TEV2_BONE_WEIGHT_DATA> weights;

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        TEV2_RIGID_VERT::Fields(vertex, archive);
        archive.Records("weights", vertex.weights);
    }
};

/// A vertex on an edge of a triangle that was cut. No chunk holds one.
class TEV2_TRI_CLIPPER_RIGID_VERT final : public TEV2_RECORD_OF<TEV2_TRI_CLIPPER_RIGID_VERT, TEV2_RIGID_VERT>
{
public:
    std::uint32_t first = 0; ///< the vertices that it lies between
    std::uint32_t second = 0;
    float fraction = 0.0f; ///< 0 at the first, 1 at the second

    template <typename Self, typename Archive>
    static void Fields(Self& vertex, Archive& archive)
    {
        TEV2_RIGID_VERT::Fields(vertex, archive);
        archive.Value("first", vertex.first);
        archive.Value("second", vertex.second);
        archive.Value("fraction", vertex.fraction);
    }
};

/// What the vertices of all meshes may have: sets of colours and of texture coordinates, at most kMostColumns of each.
/// A set has one value for each vertex.
struct TEV2_VERT_COLUMNS
{
    /// Linear red, green, blue, and alpha.
    std::vector<std::vector<TEV2_VECTOR_4>> colours;

    /// (0, 0) is the upper left corner of the image, v runs down.
    std::vector<std::vector<TEV2_VECTOR_2>> uvs;

    template <typename Self, typename Archive>
    static void Fields(Self& vertices, Archive& archive, std::size_t count)
    {
        archive.ColumnGroup("colours", vertices.colours, count);
        archive.ColumnGroup("uvs", vertices.uvs, count);
    }
};

/// Vertices in the axes of the mesh. Every column that is there has one value for each vertex; a save of others fails.
struct TEV2_RIGID_VERTICES : TEV2_VERT_COLUMNS
{
    std::vector<TEV2_VECTOR_3> positions;  ///< metres
    std::vector<TEV2_VECTOR_3> normals;    ///< empty: every triangle is flat
    std::vector<TEV2_VERTEX_FRAME> frames; ///< empty: none

    template <typename Self, typename Archive>
    static void Fields(Self& vertices, Archive& archive)
    {
        auto count = static_cast<std::uint32_t>(vertices.positions.size());
        archive.VertexCount("count", count, sizeof vertices.positions[0]);
        TEV2_VERT_COLUMNS::Fields(vertices, archive, count);
        archive.Column("positions", vertices.positions, count);
        archive.OptionalColumn("normals", vertices.normals, count);
        archive.OptionalColumn("frames", vertices.frames, count);
    }

    std::size_t Count() const { return positions.size(); }

    /// A vertex below Count(); Get gives it as part of a larger one.
    TEV2_RIGID_VERT Vertex(std::size_t index) const;
    void Get(std::size_t index, TEV2_RIGID_VERT& vertex) const;

    /// Replaces a vertex below Count(). A column that only this or only the other vertices have is filled up with
    /// zeros.
    void SetVertex(std::size_t index, const TEV2_RIGID_VERT& vertex);
    void Append(const TEV2_RIGID_VERT& vertex);
};

/// Vertices that move one by one. The columns of TEV2_RIGID_VERTICES have them at the present time of the tracks;
/// colours and texture coordinates stay.
struct TEV2_ANIM_VERTICES : TEV2_RIGID_VERTICES
{
    std::vector<TEV2_VERTEX_TRACKS> tracks; ///< of each vertex

    template <typename Self, typename Archive>
    static void Fields(Self& vertices, Archive& archive)
    {
        constexpr std::size_t kThreeFlags = 3 * sizeof(std::uint32_t);
        auto count = static_cast<std::uint32_t>(vertices.tracks.size());
        archive.VertexCount("count", count, kThreeFlags);
        TEV2_VERT_COLUMNS::Fields(vertices, archive, count);
        archive.Run("tracks", vertices.tracks, count);
    }

    std::size_t Count() const { return tracks.size(); }

    /// Copies of the tracks of a vertex below Count().
    TEV2_ANIM_MESH_VERT Vertex(std::size_t index) const;

    /// Replaces a vertex below Count(), as TEV2_RIGID_VERTICES does.
    void SetVertex(std::size_t index, TEV2_ANIM_MESH_VERT vertex);
    void Append(TEV2_ANIM_MESH_VERT vertex);

    /// Bytes that Evaluate allocates where the columns are empty.
    std::size_t EvaluatedBytes() const;

    /// Fills the columns from the tracks as they stand. Allocates only where vertices came or went since the last call,
    /// or the first normal or frame. Normals and frames are there if any vertex has a track for them, and zero for
    /// others.
    void Evaluate();
};

/// What a morph target does to the vertices that it moves: offsets at a weight of 1.
struct TEV2_TARGET_VERTICES
{
    std::vector<std::uint32_t> vertices;  ///< indices of the vertices in the mesh, ascending
    std::vector<TEV2_VECTOR_3> positions; ///< metres
    std::vector<TEV2_VECTOR_3> normals;   ///< may be empty
    std::vector<TEV2_VECTOR_3> tangents;  ///< may be empty; the binormal is formed anew

    template <typename Self, typename Archive>
    static void Fields(Self& offsets, Archive& archive)
    {
        constexpr std::size_t kLeast = sizeof offsets.vertices[0] + sizeof offsets.positions[0];
        auto count = static_cast<std::uint32_t>(offsets.vertices.size());
        archive.VertexCount("count", count, kLeast);
        archive.Column("vertices", offsets.vertices, count);
        archive.Column("positions", offsets.positions, count);
        archive.OptionalColumn("normals", offsets.normals, count);
        archive.OptionalColumn("tangents", offsets.tangents, count);
    }

    std::size_t Count() const { return vertices.size(); }

    /// An offset below Count().
    TEV2_TARGET_VERT Offset(std::size_t index) const;

    /// The offset of a vertex of the mesh; its `vertex` is kNone where there is none.
    TEV2_TARGET_VERT OffsetOf(std::uint32_t vertex) const;

    /// Replaces the offset of its vertex, or inserts it at its place.
    void SetOffset(const TEV2_TARGET_VERT& offset);

    /// Leaves a vertex of the mesh alone.
    void Remove(std::uint32_t vertex);
};

/// How the vertices of a mesh follow bones. Each vertex has `influences` entries, an index in `bones` and a weight:
/// those of vertex v begin at v * influences. Entries that are not used are 0 and 0.
struct TEV2_SKIN
{
    std::uint32_t influences = 0; ///< at most kMostColumns; engines take 4 or 8
    std::vector<std::uint32_t> boneIndices;
    std::vector<float> weights; ///< used as they are; those of a vertex have the sum 1

    /// Index in the hierarchy of the node of each bone. May lie beyond its nodes.
    std::vector<std::uint32_t> bones;

    /// From bind space to each bone. Empty: the inverse world matrices of the nodes at the start of the scene.
    std::vector<TEV2_MATRIX_3X4> bindMatrices;

    /// From bind space to the world for each bone, at the present time. Not saved.
    std::vector<TEV2_MATRIX_3X4> palette;

    template <typename Self, typename Archive>
    static void Fields(Self& skin, Archive& archive, std::size_t vertexCount)
    {
        archive.ColumnCount("influences", skin.influences);
        const std::size_t entries = EntryCount(vertexCount, skin.influences);
        archive.Column("boneIndices", skin.boneIndices, entries);
        archive.Column("weights", skin.weights, entries);
        archive.Values("bones", skin.bones);
        archive.Values("bindMatrices", skin.bindMatrices);
    }

    /// The entries of a vertex.
    std::vector<TEV2_BONE_WEIGHT_DATA> Weights(std::size_t vertex) const;

    /// Replaces the entries of one of `vertexCount` vertices. Where they are more than `influences`, all vertices get
    /// room for as many.
    void SetWeights(std::size_t vertex, std::size_t vertexCount,
                    std::span<const TEV2_BONE_WEIGHT_DATA> entries);

private:
    void Widen(std::uint32_t wider, std::size_t vertexCount);

    /// The product, or as much as fits: no image holds that. 0 for more influences than can be read back.
    static std::size_t EntryCount(std::size_t vertices, std::size_t influences);
};

} // namespace TEV2_LOADER
