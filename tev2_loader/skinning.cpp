#include "tev2_loader/skinning.h"

#include "tev2_loader/math/detail/float4.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TEV2_LOADER
{

namespace
{

TEV2_VECTOR_3 Cross(const TEV2_VECTOR_3& left, const TEV2_VECTOR_3& right)
{
    return {left.y * right.z - left.z * right.y, left.z * right.x - left.x * right.z,
            left.x * right.y - left.y * right.x};
}

float Dot(const TEV2_VECTOR_3& left, const TEV2_VECTOR_3& right)
{
    return left.x * right.x + left.y * right.y + left.z * right.z;
}

TEV2_VECTOR_3 Normalised(const TEV2_VECTOR_3& vector)
{
    const auto x = static_cast<double>(vector.x);
    const auto y = static_cast<double>(vector.y);
    const auto z = static_cast<double>(vector.z);
    const double square = x * x + y * y + z * z; // neither overflows nor vanishes
    if (!(square > 0.0 && square <= std::numeric_limits<double>::max()))
        return vector;
    const double factor = 1.0 / std::sqrt(square);
    return {static_cast<float>(x * factor), static_cast<float>(y * factor), static_cast<float>(z * factor)};
}

TEV2_VERTEX_FRAME Normalised(const TEV2_VERTEX_FRAME& frame)
{
    return {Normalised(frame.binormal), Normalised(frame.tangent)};
}

/// The weighted sum of some matrices of a palette.
class Blend
{
public:
    Blend(const PosedSkin& skin, std::size_t vertex)
    {
        static constexpr TEV2_MATRIX_3X4 kIdentity;
        Float4 rows[3] = {Float4::All(0.0f), Float4::All(0.0f), Float4::All(0.0f)};
        const std::size_t end = (vertex + 1) * skin.influences;
        for (std::size_t entry = vertex * skin.influences; entry < end; ++entry)
        {
            const std::uint32_t bone = skin.bones[entry];
            const TEV2_MATRIX_3X4& matrix = bone < skin.palette.size() ? skin.palette[bone] : kIdentity;
            const Float4 weight = Float4::All(skin.weights[entry]);
            for (int row = 0; row < 3; ++row)
                rows[row] = rows[row] + weight * Float4::Load(matrix.m[row]);
        }
        const Float4 left = Pick<0, 1, 0, 1>(rows[0], rows[1]);
        const Float4 right = Pick<2, 3, 2, 3>(rows[0], rows[1]);
        columns_[0] = Pick<0, 2, 0, 0>(left, rows[2]);
        columns_[1] = Pick<1, 3, 1, 1>(left, rows[2]);
        columns_[2] = Pick<0, 2, 2, 2>(right, rows[2]);
        columns_[3] = Pick<1, 3, 3, 3>(right, rows[2]);
    }

    TEV2_VECTOR_3 Point(const TEV2_VECTOR_3& point) const { return Stored(Turned(point) + columns_[3]); }

    TEV2_VECTOR_3 Direction(const TEV2_VECTOR_3& direction) const
    {
        return Normalised(Stored(Turned(direction)));
    }

private:
    Float4 Turned(const TEV2_VECTOR_3& vector) const
    {
        return columns_[0] * Float4::All(vector.x) + columns_[1] * Float4::All(vector.y) +
               columns_[2] * Float4::All(vector.z);
    }

    static TEV2_VECTOR_3 Stored(Float4 lanes)
    {
        float stored[4];
        lanes.Store(stored);
        return {stored[0], stored[1], stored[2]};
    }

    Float4 columns_[4];
};

/// How many vertices both of two columns have.
template <typename In, typename Out>
std::size_t Shared(const In& in, const Out& out)
{
    return std::min(in.size(), out.size());
}

template <typename Value>
void CopyColumn(std::span<const Value> from, std::span<Value> to)
{
    std::copy_n(from.begin(), Shared(from, to), to.begin());
}

template <typename Value>
void NormaliseColumn(std::span<Value> column)
{
    for (Value& value : column)
        value = Normalised(value);
}

/// Adds weighted offsets to what part(vertex) refers to, of the vertices below count.
template <typename Part>
void AddOffsets(const MorphTarget& target, std::span<const TEV2_VECTOR_3> offsets, std::size_t count,
                const Part& part)
{
    const std::size_t listed = Shared(target.vertices, offsets);
    for (std::size_t i = 0; i < listed; ++i)
    {
        if (target.vertices[i] >= count)
            continue;
        TEV2_VECTOR_3& to = part(target.vertices[i]);
        const TEV2_VECTOR_3& offset = offsets[i];
        to.x += target.weight * offset.x;
        to.y += target.weight * offset.y;
        to.z += target.weight * offset.z;
    }
}

/// Of the vertices that a target lists, with normals and tangents as they are in `out`.
void FormBinormals(const VerticesIn& in, const MorphTarget& target, const VerticesOut& out)
{
    if (target.normals.empty() && target.tangents.empty())
        return;
    const std::size_t count = std::min(Shared(in.normals, out.normals), Shared(in.frames, out.frames));
    for (const std::uint32_t vertex : target.vertices)
    {
        if (vertex >= count)
            continue;
        const TEV2_VERTEX_FRAME& frame = in.frames[vertex];
        const bool away = Dot(Cross(in.normals[vertex], frame.tangent), frame.binormal) < 0.0f;
        const TEV2_VECTOR_3 binormal = Cross(out.normals[vertex], out.frames[vertex].tangent);
        out.frames[vertex].binormal = away ? -binormal : binormal;
    }
}

/// for_each calls what it is given with each target, in their order.
template <typename ForEach>
void Morph(const VerticesIn& in, const ForEach& for_each, const VerticesOut& out)
{
    CopyColumn(in.positions, out.positions);
    CopyColumn(in.normals, out.normals);
    CopyColumn(in.frames, out.frames);
    const std::size_t positions = Shared(in.positions, out.positions);
    const std::size_t normals = Shared(in.normals, out.normals);
    const std::size_t frames = Shared(in.frames, out.frames);
    for_each(
        [&](const MorphTarget& target)
        {
            if (target.weight == 0.0f)
                return;
            AddOffsets(
                target, target.positions,
                positions, [&](std::size_t i) -> auto& { return out.positions[i]; });
            AddOffsets(
                target, target.normals, normals, [&](std::size_t i) -> auto& { return out.normals[i]; });
            AddOffsets(
                target, target.tangents,
                frames, [&](std::size_t i) -> auto& { return out.frames[i].tangent; });
        });
    for_each([&](const MorphTarget& target) { FormBinormals(in, target, out); });
    NormaliseColumn(out.normals.first(normals));
    NormaliseColumn(out.frames.first(frames));
}

VerticesIn ColumnsOf(const TEV2_RIGID_VERTICES& vertices)
{
    return {vertices.positions, vertices.normals, vertices.frames};
}

/// Morphs by the targets of a mesh.
template <typename Mesh>
void MorphMesh(const Mesh& mesh, const VerticesOut& out)
{
    const auto for_each = [&mesh](const auto& use)
    {
        for (const TEV2_MORPH_TARGET& target : mesh.targets)
        {
            const TEV2_TARGET_VERTICES& offsets = target.offsets;
            use(MorphTarget{target.Weight(), offsets.vertices, offsets.positions, offsets.normals,
                            offsets.tangents});
        }
    };
    Morph(ColumnsOf(*mesh.vertices), for_each, out);
}

/// The part of a column that a mesh has vertices for.
template <typename Value>
std::span<Value> Filled(std::span<Value> out, std::size_t count)
{
    return out.first(std::min(out.size(), count));
}

} // namespace

void MorphVertices(const VerticesIn& in, std::span<const MorphTarget> targets, const VerticesOut& out)
{
    const auto for_each = [targets](const auto& use)
    {
        for (const MorphTarget& target : targets)
            use(target);
    };
    Morph(in, for_each, out);
}

void SkinVertices(const VerticesIn& in, const PosedSkin& skin, const VerticesOut& out)
{
    const std::size_t positions = Shared(in.positions, out.positions);
    const std::size_t normals = Shared(in.normals, out.normals);
    const std::size_t frames = Shared(in.frames, out.frames);
    std::size_t count = std::max({positions, normals, frames});
    if (skin.influences != 0)
        count = std::min(count, Shared(skin.bones, skin.weights) / skin.influences);
    for (std::size_t vertex = 0; vertex < count; ++vertex)
    {
        const Blend blend(skin, vertex);
        if (vertex < positions)
            out.positions[vertex] = blend.Point(in.positions[vertex]);
        if (vertex < normals)
            out.normals[vertex] = blend.Direction(in.normals[vertex]);
        if (vertex < frames)
        {
            out.frames[vertex] = {blend.Direction(in.frames[vertex].binormal),
                                  blend.Direction(in.frames[vertex].tangent)};
        }
    }
}

void MorphVertices(const TEV2_MORPH_MESH& mesh, const VerticesOut& out)
{
    MorphMesh(mesh, out);
}

void SkinVertices(const TEV2_WEIGHTED_MESH& mesh, const VerticesOut& out)
{
    const PosedSkin skin{mesh.skin->influences, mesh.skin->boneIndices, mesh.skin->weights,
                         mesh.skin->palette};
    VerticesIn in = ColumnsOf(*mesh.vertices);
    if (!mesh.targets.empty())
    {
        MorphMesh(mesh, out);
        in = {Filled(out.positions, in.positions.size()), Filled(out.normals, in.normals.size()),
              Filled(out.frames, in.frames.size())};
    }
    SkinVertices(in, skin, out);
}

} // namespace TEV2_LOADER
