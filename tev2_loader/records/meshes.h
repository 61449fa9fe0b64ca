#pragma once

#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/records/lit_object.h"
#include "tev2_loader/records/matrix_hierarchy.h"
#include "tev2_loader/records/record_of.h"
#include "tev2_loader/records/tri_sub_object.h"
#include "tev2_loader/records/vertices.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace TEV2_LOADER
{

/// An object that is drawn.
class TEV2_GEOM_OBJECT
    : public TEV2_MOVING_RECORD_OF<TEV2_GEOM_OBJECT, TEV2_POSITIONAL_OBJECT, TEV2_LIT_OBJECT>
{
public:
    /// 0 invisible to 1. Null: 1.
    std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> visibility;

    bool castsShadow = true;
    bool receivesShadow = true;

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(object, archive);
        TEV2_LIT_OBJECT::Fields(object, archive);
        archive.Layout();
        archive.Track("visibility", object.visibility);
        archive.Bool("castsShadow", object.castsShadow);
        archive.Bool("receivesShadow", object.receivesShadow);
    }
};

/// The part of a mesh that does not depend on the kind of its vertices. In a mesh that was loaded and is typed every
/// corner is below the number of vertices; a mesh with other corners is not saved.
class TEV2_TRI_OBJECT : public TEV2_MOVING_RECORD_OF<TEV2_TRI_OBJECT, TEV2_GEOM_OBJECT>
{
public:
    std::vector<TEV2_TRI_SUB_OBJECT> subObjects;

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        TEV2_GEOM_OBJECT::Fields(object, archive);
        archive.Records("subObjects", object.subObjects);
    }

    /// The triangles of all sub-objects, one after another.
    std::size_t TriangleCount() const;

    /// A triangle below TriangleCount().
    TEV2_CARD32_TRIPLE Triangle(std::size_t index) const;

protected:
    /// Fails the cursor where a corner is not below `vertexCount`.
    void ExamineCorners(TEV2_MEMORY_CURSOR& cursor, std::size_t vertexCount) const;
};

/// A shape that the mesh takes on as its weight grows from 0 to 1.
class TEV2_MORPH_TARGET final
    : public TEV2_RECORD_OF<TEV2_MORPH_TARGET, TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>>
{
public:
    /// Of the vertices that the target moves, and no others.
    TEV2_TARGET_VERTICES offsets;

    template <typename Self, typename Archive>
    static void Fields(Self& target, Archive& archive)
    {
        TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>::Fields(target, archive);
        archive.Record("offsets", target.offsets);
    }

    /// The weight at the present time of its track; 0 without.
    float Weight() const { return track ? track->GetValue() : 0.0f; }
};

/// A mesh that moves with its node.
class TEV2_RIGID final
    : public TEV2_MOVING_RECORD_OF<TEV2_RIGID, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_BOXED<TEV2_RIGID_VERTICES> vertices;

    template <typename Self, typename Archive>
    static void Fields(Self& mesh, Archive& archive)
    {
        TEV2_TRI_OBJECT::Fields(mesh, archive);
        archive.Boxed("vertices", mesh.vertices);
    }

    std::uint32_t GetChunkId() const override { return kRigidChunk; }

    TEV2_RIGID_VERT Vertex(std::size_t index) const { return vertices->Vertex(index); }
    void SetVertex(std::size_t index, const TEV2_RIGID_VERT& vertex) { vertices->SetVertex(index, vertex); }
    void Append(const TEV2_RIGID_VERT& vertex) { vertices->Append(vertex); }

    /// Called after a load: fails the cursor where fields disagree.
    void Examine(TEV2_MEMORY_CURSOR& cursor) const;
};

/// A mesh whose vertices move one by one, such as a flag. Update and SetTime fill the positions, normals and frames of
/// its vertices.
class TEV2_ANIM_MESH final
    : public TEV2_MOVING_RECORD_OF<TEV2_ANIM_MESH, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_BOXED<TEV2_ANIM_VERTICES> vertices;

    template <typename Self, typename Archive>
    static void Fields(Self& mesh, Archive& archive)
    {
        TEV2_TRI_OBJECT::Fields(mesh, archive);
        archive.Boxed("vertices", mesh.vertices);
    }

    std::uint32_t GetChunkId() const override { return kAnimMeshChunk; }

    /// With copies of its tracks.
    TEV2_ANIM_MESH_VERT Vertex(std::size_t index) const { return vertices->Vertex(index); }
    void SetVertex(std::size_t index, TEV2_ANIM_MESH_VERT vertex);
    void Append(TEV2_ANIM_MESH_VERT vertex);

    void Update(float delta_time) override;
    void SetTime(float time) override;

    /// Called after a load: fails the cursor where fields disagree.
    void Examine(TEV2_MEMORY_CURSOR& cursor) const;

    /// Called after that: allocates what evaluation fills. Fails the cursor where its limits do not allow that.
    void MakeRoom(TEV2_MEMORY_CURSOR& cursor);

private:
    void Evaluate();
};

/// A mesh whose shape is blended from targets.
class TEV2_MORPH_MESH final
    : public TEV2_MOVING_RECORD_OF<TEV2_MORPH_MESH, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_BOXED<TEV2_RIGID_VERTICES> vertices;
    std::vector<TEV2_MORPH_TARGET> targets;

    template <typename Self, typename Archive>
    static void Fields(Self& mesh, Archive& archive)
    {
        TEV2_TRI_OBJECT::Fields(mesh, archive);
        archive.Boxed("vertices", mesh.vertices);
        archive.Records("targets", mesh.targets);
    }

    std::uint32_t GetChunkId() const override { return kMorphMeshChunk; }

    /// A vertex and what the targets do to it. Setting one changes the targets, too: those for which it has no entry,
    /// or one without a vertex, leave it alone. Entries beyond the targets are ignored.
    TEV2_MORPH_MESH_VERT Vertex(std::size_t index) const;
    void SetVertex(std::size_t index, const TEV2_MORPH_MESH_VERT& vertex);
    void Append(const TEV2_MORPH_MESH_VERT& vertex);

    /// Called after a load: fails the cursor where fields disagree.
    void Examine(TEV2_MEMORY_CURSOR& cursor) const;
};

/// A mesh that follows the skeleton.
class TEV2_WEIGHTED_MESH final
    : public TEV2_MOVING_RECORD_OF<TEV2_WEIGHTED_MESH, TEV2_TRI_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_BOXED<TEV2_RIGID_VERTICES> vertices; ///< in bind space; the node of the mesh does not place them
    TEV2_BOXED<TEV2_SKIN> skin;
    std::vector<TEV2_MORPH_TARGET> targets; ///< as of a morph mesh: faces on bodies

    /// The skeleton that the mesh follows and the inverse world matrix of each of its nodes at the scene's
    /// start. Not owned; null until bound. The root binds its meshes whenever it evaluates.
    const TEV2_MATRIX_HIERARCHY* hierarchy = nullptr;
    const std::vector<TEV2_MATRIX_3X4>* inverseBindMatrices = nullptr;

    template <typename Self, typename Archive>
    static void Fields(Self& mesh, Archive& archive)
    {
        TEV2_TRI_OBJECT::Fields(mesh, archive);
        archive.Boxed("vertices", mesh.vertices);
        archive.Boxed("skin", mesh.skin, std::as_const(mesh.vertices)->Count());
        archive.Records("targets", mesh.targets);
    }

    std::uint32_t GetChunkId() const override { return kWeightedMeshChunk; }

    /// A vertex and its weights; the targets are not part of it.
    TEV2_WEIGHTED_MESH_VERT Vertex(std::size_t index) const;
    void SetVertex(std::size_t index, const TEV2_WEIGHTED_MESH_VERT& vertex);
    void Append(const TEV2_WEIGHTED_MESH_VERT& vertex);

    /// Forms the palette of the skin: of each bone, world matrix of its node * bind matrix; the identity for a bone
    /// beyond the nodes. Where the skin does not have one bind matrix for each bone, that of a bone is the entry of its
    /// node in `inverse_bind_matrices`, the identity beyond them. Allocates when the number of bones has changed since
    /// the last time or the load. A mesh that is kept or has no skin gets no palette.
    void Bind(const TEV2_MATRIX_HIERARCHY& skeleton,
              const std::vector<TEV2_MATRIX_3X4>& inverse_bind_matrices);

    /// Called after a load: fails the cursor where fields disagree.
    void Examine(TEV2_MEMORY_CURSOR& cursor) const;

    /// Called after that: allocates what evaluation fills. Fails the cursor where its limits do not allow that.
    void MakeRoom(TEV2_MEMORY_CURSOR& cursor);
};

} // namespace TEV2_LOADER
