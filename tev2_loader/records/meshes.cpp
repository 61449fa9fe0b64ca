#include "tev2_loader/records/meshes.h"

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_loader/records/archives.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_GEOM_OBJECT>;
template struct TEV2_RECORD_CODE<TEV2_TRI_OBJECT>;
template struct TEV2_RECORD_CODE<TEV2_MORPH_TARGET>;
template struct TEV2_RECORD_CODE<TEV2_RIGID>;
template struct TEV2_RECORD_CODE<TEV2_ANIM_MESH>;
template struct TEV2_RECORD_CODE<TEV2_MORPH_MESH>;
template struct TEV2_RECORD_CODE<TEV2_WEIGHTED_MESH>;

namespace
{

void Refuse(TEV2_MEMORY_CURSOR& cursor, const std::string& expected, std::size_t found)
{
    cursor.Fail(TEV2_LOAD_CODE::BodyKept, expected, std::to_string(found));
}

std::uint32_t Largest(std::uint32_t index)
{
    return index;
}

std::uint32_t Largest(const TEV2_TRIANGLE& triangle)
{
    return std::max({triangle[0], triangle[1], triangle[2]});
}

// These go on after what they look for, so that the compiler can take several elements at a time.

bool AllBelow(const std::vector<std::uint32_t>& indices, std::size_t count)
{
    std::uint32_t outside = 0;
    for (const std::uint32_t index : indices)
        outside |= std::uint32_t{index >= count};
    return outside == 0;
}

bool AllBelow(const std::vector<TEV2_TRIANGLE>& triangles, std::size_t count)
{
    TEV2_TRIANGLE largest{};
    for (const TEV2_TRIANGLE& triangle : triangles)
        for (std::size_t corner = 0; corner < largest.size(); ++corner)
            largest[corner] = std::max(largest[corner], triangle[corner]);
    return triangles.empty() || Largest(largest) < count;
}

bool Ascends(const std::vector<std::uint32_t>& indices)
{
    std::uint32_t falls = 0;
    for (std::size_t index = 1; index < indices.size(); ++index)
        falls |= std::uint32_t{indices[index - 1] >= indices[index]};
    return falls == 0;
}

/// Fails the cursor at the first index, or triangle, that is not below a count.
template <typename Element>
void ExamineIndices(TEV2_MEMORY_CURSOR& cursor, const char* label, const std::vector<Element>& elements,
                    std::size_t count)
{
    if (AllBelow(elements, count))
        return;
    const auto wrong = std::find_if(elements.begin(), elements.end(),
                                    [count](const Element& element) { return Largest(element) >= count; });
    const RecordScope scope(cursor, label, static_cast<std::size_t>(wrong - elements.begin()));
    Refuse(cursor, "below " + std::to_string(count), Largest(*wrong));
}

/// Fails the cursor where vertices of a target do not ascend or are not below the number of vertices.
void ExamineTargets(TEV2_MEMORY_CURSOR& cursor, const std::vector<TEV2_MORPH_TARGET>& targets,
                    std::size_t vertexCount)
{
    for (std::size_t target = 0; target < targets.size() && !cursor.Failed(); ++target)
    {
        const RecordScope scope(cursor, "targets", target);
        const RecordScope columns(cursor, "offsets");
        const std::vector<std::uint32_t>& vertices = targets[target].offsets.vertices;
        if (!Ascends(vertices))
        {
            const auto before = std::adjacent_find(vertices.begin(), vertices.end(), std::greater_equal<>());
            const RecordScope place(cursor, "vertices",
                                    static_cast<std::size_t>(before - vertices.begin()) + 1);
            Refuse(cursor, "above " + std::to_string(*before), before[1]);
        }
        else if (!vertices.empty() && vertices.back() >= vertexCount)
        {
            ExamineIndices(cursor, "vertices", vertices, vertexCount);
        }
    }
}

void ExamineSkin(TEV2_MEMORY_CURSOR& cursor, const TEV2_SKIN& skin)
{
    const RecordScope scope(cursor, "skin");
    const std::size_t bones = skin.bones.size();
    ExamineIndices(cursor, "boneIndices", skin.boneIndices, bones);
    if (cursor.Failed() || skin.bindMatrices.empty() || skin.bindMatrices.size() == bones)
        return;
    const RecordScope place(cursor, "bindMatrices");
    Refuse(cursor, "none or " + std::to_string(bones), skin.bindMatrices.size());
}

} // namespace

std::size_t TEV2_TRI_OBJECT::TriangleCount() const
{
    std::size_t count = 0;
    for (const TEV2_TRI_SUB_OBJECT& object : subObjects)
        count += object.triangles.size();
    return count;
}

TEV2_CARD32_TRIPLE TEV2_TRI_OBJECT::Triangle(std::size_t index) const
{
    auto object = subObjects.begin();
    for (; index >= object->triangles.size(); ++object)
        index -= object->triangles.size();
    return object->Triangle(index);
}

void TEV2_TRI_OBJECT::ExamineCorners(TEV2_MEMORY_CURSOR& cursor, std::size_t vertexCount) const
{
    for (std::size_t index = 0; index < subObjects.size() && !cursor.Failed(); ++index)
    {
        const RecordScope scope(cursor, "subObjects", index);
        ExamineIndices(cursor, "triangles", subObjects[index].triangles, vertexCount);
    }
}

void TEV2_RIGID::Examine(TEV2_MEMORY_CURSOR& cursor) const
{
    ExamineCorners(cursor, vertices->Count());
}

void TEV2_ANIM_MESH::Examine(TEV2_MEMORY_CURSOR& cursor) const
{
    ExamineCorners(cursor, vertices->Count());
}

void TEV2_ANIM_MESH::MakeRoom(TEV2_MEMORY_CURSOR& cursor)
{
    if (cursor.TakeMemory(vertices->EvaluatedBytes()))
        vertices->Evaluate();
}

void TEV2_ANIM_MESH::SetVertex(std::size_t index, TEV2_ANIM_MESH_VERT vertex)
{
    vertices->SetVertex(index, std::move(vertex));
}

void TEV2_ANIM_MESH::Append(TEV2_ANIM_MESH_VERT vertex)
{
    vertices->Append(std::move(vertex));
}

void TEV2_ANIM_MESH::Update(float delta_time)
{
    TEV2_MOVING_RECORD_OF::Update(delta_time);
    Evaluate();
}

void TEV2_ANIM_MESH::SetTime(float time)
{
    TEV2_MOVING_RECORD_OF::SetTime(time);
    Evaluate();
}

void TEV2_ANIM_MESH::Evaluate()
{
    if (IsTyped() && !vertices.Empty())
        vertices->Evaluate();
}

TEV2_MORPH_MESH_VERT TEV2_MORPH_MESH::Vertex(std::size_t index) const
{
    TEV2_MORPH_MESH_VERT vertex;
    vertices->Get(index, vertex);
    for (const TEV2_MORPH_TARGET& target : targets)
        vertex.targets.push_back(target.offsets.OffsetOf(static_cast<std::uint32_t>(index)));
    return vertex;
}

void TEV2_MORPH_MESH::SetVertex(std::size_t index, const TEV2_MORPH_MESH_VERT& vertex)
{
    vertices->SetVertex(index, vertex);
    for (std::size_t target = 0; target < targets.size(); ++target)
    {
        TEV2_TARGET_VERT offset;
        if (target < vertex.targets.size())
            offset = vertex.targets[target];
        const bool moved = offset.vertex != kNone;
        offset.vertex = static_cast<std::uint32_t>(index);
        if (moved)
            targets[target].offsets.SetOffset(offset);
        else
            targets[target].offsets.Remove(offset.vertex);
    }
}

void TEV2_MORPH_MESH::Append(const TEV2_MORPH_MESH_VERT& vertex)
{
    vertices->Append(vertex);
    SetVertex(vertices->Count() - 1, vertex);
}

void TEV2_MORPH_MESH::Examine(TEV2_MEMORY_CURSOR& cursor) const
{
    ExamineCorners(cursor, vertices->Count());
    if (!cursor.Failed())
        ExamineTargets(cursor, targets, vertices->Count());
}

TEV2_WEIGHTED_MESH_VERT TEV2_WEIGHTED_MESH::Vertex(std::size_t index) const
{
    TEV2_WEIGHTED_MESH_VERT vertex;
    vertices->Get(index, vertex);
    vertex.weights = skin->Weights(index);
    return vertex;
}

void TEV2_WEIGHTED_MESH::SetVertex(std::size_t index, const TEV2_WEIGHTED_MESH_VERT& vertex)
{
    vertices->SetVertex(index, vertex);
    skin->SetWeights(index, vertices->Count(), vertex.weights);
}

void TEV2_WEIGHTED_MESH::Append(const TEV2_WEIGHTED_MESH_VERT& vertex)
{
    vertices->Append(vertex);
    skin->SetWeights(vertices->Count() - 1, vertices->Count(), vertex.weights);
}

void TEV2_WEIGHTED_MESH::Examine(TEV2_MEMORY_CURSOR& cursor) const
{
    ExamineCorners(cursor, vertices->Count());
    if (!cursor.Failed())
        ExamineSkin(cursor, *skin);
    if (!cursor.Failed())
        ExamineTargets(cursor, targets, vertices->Count());
}

void TEV2_WEIGHTED_MESH::MakeRoom(TEV2_MEMORY_CURSOR& cursor)
{
    if (cursor.TakeMemory(skin->bones.size() * sizeof(TEV2_MATRIX_3X4)))
        skin->palette.resize(skin->bones.size());
}

void TEV2_WEIGHTED_MESH::Bind(const TEV2_MATRIX_HIERARCHY& skeleton,
                              const std::vector<TEV2_MATRIX_3X4>& inverse_bind_matrices)
{
    hierarchy = &skeleton;
    inverseBindMatrices = &inverse_bind_matrices;
    if (!IsTyped() || skin.Empty())
        return;
    static constexpr TEV2_MATRIX_3X4 kIdentity;
    const std::vector<TEV2_MATRIX_NODE>& nodes = skeleton.nodes;
    const std::vector<std::uint32_t>& bones = skin->bones;
    const bool own = skin->bindMatrices.size() == bones.size();
    const std::vector<TEV2_MATRIX_3X4>& bind_matrices = own ? skin->bindMatrices : inverse_bind_matrices;
    std::vector<TEV2_MATRIX_3X4>& palette = skin->palette;
    palette.resize(bones.size());
    for (std::size_t bone = 0; bone < bones.size(); ++bone)
    {
        const std::size_t node = bones[bone];
        const std::size_t place = own ? bone : node;
        if (node >= nodes.size())
            palette[bone] = kIdentity;
        else if (place >= bind_matrices.size())
            palette[bone] = nodes[node].worldMatrix;
        else
            palette[bone] = FastProduct(nodes[node].worldMatrix, bind_matrices[place]);
    }
}

} // namespace TEV2_LOADER
