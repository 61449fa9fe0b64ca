#include "tev2_loader/records/vertices.h"

#include "tev2_loader/records/archives.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_VERT>;
template struct TEV2_RECORD_CODE<TEV2_RIGID_VERT>;
template struct TEV2_RECORD_CODE<TEV2_ANIM_MESH_VERT>;
template struct TEV2_RECORD_CODE<TEV2_TARGET_VERT>;
template struct TEV2_RECORD_CODE<TEV2_MORPH_MESH_VERT>;
template struct TEV2_RECORD_CODE<TEV2_BONE_WEIGHT_DATA>;
template struct TEV2_RECORD_CODE<TEV2_WEIGHTED_MESH_VERT>;
template struct TEV2_RECORD_CODE<TEV2_TRI_CLIPPER_RIGID_VERT>;

namespace
{

/// Zero where a program left the column shorter than the others.
template <typename Element>
Element At(const std::vector<Element>& column, std::size_t index)
{
    return index < column.size() ? column[index] : Element{};
}

template <typename Element>
std::optional<Element> OptionalAt(const std::vector<Element>& column, std::size_t index)
{
    return column.empty() ? std::nullopt : std::optional(At(column, index));
}

template <typename Element>
std::vector<Element> AllAt(const std::vector<std::vector<Element>>& columns, std::size_t index)
{
    std::vector<Element> values;
    values.reserve(columns.size());
    for (const auto& column : columns)
        values.push_back(At(column, index));
    return values;
}

/// Makes the column `count` long and sets one of its values.
template <typename Element>
void Put(std::vector<Element>& column, std::size_t index, std::size_t count, const Element& value)
{
    column.resize(count);
    column[index] = value;
}

template <typename Element>
void PutOptional(std::vector<Element>& column, std::size_t index, std::size_t count,
                 const std::optional<Element>& value)
{
    if (value || !column.empty())
        Put(column, index, count, value.value_or(Element{}));
}

template <typename Element>
void PutAll(std::vector<std::vector<Element>>& columns, std::size_t index, std::size_t count,
            const std::vector<Element>& values)
{
    columns.resize(std::max(columns.size(), values.size()));
    for (std::size_t column = 0; column < columns.size(); ++column)
        Put(columns[column], index, count, At(values, column));
}

/// Puts a value into a column that is there, or that this value makes.
template <typename Element>
void InsertOptional(std::vector<Element>& column, std::size_t index, std::size_t count,
                    const std::optional<Element>& value)
{
    if (!value && column.empty())
        return;
    column.resize(count - 1);
    column.insert(column.begin() + static_cast<std::ptrdiff_t>(index), value.value_or(Element{}));
}

template <typename Element>
void Erase(std::vector<Element>& column, std::size_t index)
{
    if (index < column.size())
        column.erase(column.begin() + static_cast<std::ptrdiff_t>(index));
}

void GetVert(const TEV2_VERT_COLUMNS& columns, std::size_t index, TEV2_VERT& vertex)
{
    vertex.colours = AllAt(columns.colours, index);
    vertex.uvs = AllAt(columns.uvs, index);
}

void PutVert(TEV2_VERT_COLUMNS& columns, std::size_t index, std::size_t count, const TEV2_VERT& vertex)
{
    PutAll(columns.colours, index, count, vertex.colours);
    PutAll(columns.uvs, index, count, vertex.uvs);
}

void PutRigid(TEV2_RIGID_VERTICES& columns, std::size_t index, std::size_t count,
              const TEV2_RIGID_VERT& vertex)
{
    PutVert(columns, index, count, vertex);
    Put(columns.positions, index, count, vertex.position);
    PutOptional(columns.normals, index, count, vertex.normal);
    PutOptional(columns.frames, index, count, vertex.frame);
}

void PutAnimated(TEV2_ANIM_VERTICES& columns, std::size_t index, std::size_t count,
                 TEV2_ANIM_MESH_VERT& vertex)
{
    PutVert(columns, index, count, vertex);
    columns.tracks.resize(count);
    columns.tracks[index] = std::move(vertex.tracks);
}

/// The first place whose vertex is not below one.
std::size_t PlaceOf(const std::vector<std::uint32_t>& vertices, std::uint32_t vertex)
{
    return static_cast<std::size_t>(std::lower_bound(vertices.begin(), vertices.end(), vertex) -
                                    vertices.begin());
}

template <typename Track>
bool HasAny(const std::vector<TEV2_VERTEX_TRACKS>& tracks, Track TEV2_VERTEX_TRACKS::*track)
{
    return std::any_of(tracks.begin(), tracks.end(),
                       [track](const TEV2_VERTEX_TRACKS& of) { return of.*track != nullptr; });
}

TEV2_VECTOR_3 PresentValue(const std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3>& track)
{
    return track ? track->GetValue() : TEV2_VECTOR_3{};
}

TEV2_VERTEX_FRAME PresentValue(const std::unique_ptr<TEV2_ANIMATABLE_BINORMAL_TANGENT>& track)
{
    if (!track)
        return {};
    const TEV2_BINORMAL_TANGENT frame = track->GetValue();
    return {frame.binormal, frame.tangent};
}

/// A column of the present values of one track of each vertex.
template <typename Element, typename Track>
void EvaluateColumn(std::vector<Element>& column, const std::vector<TEV2_VERTEX_TRACKS>& tracks,
                    Track TEV2_VERTEX_TRACKS::*track)
{
    column.resize(tracks.size());
    for (std::size_t index = 0; index < tracks.size(); ++index)
        column[index] = PresentValue(tracks[index].*track);
}

} // namespace

TEV2_RIGID_VERT TEV2_RIGID_VERTICES::Vertex(std::size_t index) const
{
    TEV2_RIGID_VERT vertex;
    Get(index, vertex);
    return vertex;
}

void TEV2_RIGID_VERTICES::Get(std::size_t index, TEV2_RIGID_VERT& vertex) const
{
    GetVert(*this, index, vertex);
    vertex.position = At(positions, index);
    vertex.normal = OptionalAt(normals, index);
    vertex.frame = OptionalAt(frames, index);
}

void TEV2_RIGID_VERTICES::SetVertex(std::size_t index, const TEV2_RIGID_VERT& vertex)
{
    PutRigid(*this, index, Count(), vertex);
}

void TEV2_RIGID_VERTICES::Append(const TEV2_RIGID_VERT& vertex)
{
    PutRigid(*this, Count(), Count() + 1, vertex);
}

TEV2_ANIM_MESH_VERT TEV2_ANIM_VERTICES::Vertex(std::size_t index) const
{
    TEV2_ANIM_MESH_VERT vertex;
    GetVert(*this, index, vertex);
    vertex.tracks.position = CloneTrack(tracks[index].position);
    vertex.tracks.normal = CloneTrack(tracks[index].normal);
    vertex.tracks.frame = CloneTrack(tracks[index].frame);
    return vertex;
}

void TEV2_ANIM_VERTICES::SetVertex(std::size_t index, TEV2_ANIM_MESH_VERT vertex)
{
    PutAnimated(*this, index, Count(), vertex);
}

void TEV2_ANIM_VERTICES::Append(TEV2_ANIM_MESH_VERT vertex)
{
    PutAnimated(*this, Count(), Count() + 1, vertex);
}

std::size_t TEV2_ANIM_VERTICES::EvaluatedBytes() const
{
    std::size_t bytes = sizeof positions[0];
    if (HasAny(tracks, &TEV2_VERTEX_TRACKS::normal))
        bytes += sizeof normals[0];
    if (HasAny(tracks, &TEV2_VERTEX_TRACKS::frame))
        bytes += sizeof frames[0];
    return bytes * tracks.size();
}

void TEV2_ANIM_VERTICES::Evaluate()
{
    EvaluateColumn(positions, tracks, &TEV2_VERTEX_TRACKS::position);
    if (HasAny(tracks, &TEV2_VERTEX_TRACKS::normal))
        EvaluateColumn(normals, tracks, &TEV2_VERTEX_TRACKS::normal);
    else
        normals.clear();
    if (HasAny(tracks, &TEV2_VERTEX_TRACKS::frame))
        EvaluateColumn(frames, tracks, &TEV2_VERTEX_TRACKS::frame);
    else
        frames.clear();
}

TEV2_TARGET_VERT TEV2_TARGET_VERTICES::Offset(std::size_t index) const
{
    TEV2_TARGET_VERT offset;
    offset.vertex = vertices[index];
    offset.position = At(positions, index);
    offset.normal = OptionalAt(normals, index);
    offset.tangent = OptionalAt(tangents, index);
    return offset;
}

TEV2_TARGET_VERT TEV2_TARGET_VERTICES::OffsetOf(std::uint32_t vertex) const
{
    const std::size_t place = PlaceOf(vertices, vertex);
    return place < Count() && vertices[place] == vertex ? Offset(place) : TEV2_TARGET_VERT();
}

void TEV2_TARGET_VERTICES::SetOffset(const TEV2_TARGET_VERT& offset)
{
    Remove(offset.vertex);
    const std::size_t place = PlaceOf(vertices, offset.vertex);
    const std::size_t count = Count() + 1;
    InsertOptional(vertices, place, count, std::optional(offset.vertex));
    InsertOptional(positions, place, count, std::optional(offset.position));
    InsertOptional(normals, place, count, offset.normal);
    InsertOptional(tangents, place, count, offset.tangent);
}

void TEV2_TARGET_VERTICES::Remove(std::uint32_t vertex)
{
    const std::size_t place = PlaceOf(vertices, vertex);
    if (place == Count() || vertices[place] != vertex)
        return;
    Erase(vertices, place);
    Erase(positions, place);
    Erase(normals, place);
    Erase(tangents, place);
}

std::size_t TEV2_SKIN::EntryCount(std::size_t vertices, std::size_t influences)
{
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max() / kMostColumns;
    return influences > kMostColumns ? 0 : std::min(vertices, kMost) * influences;
}

std::vector<TEV2_BONE_WEIGHT_DATA> TEV2_SKIN::Weights(std::size_t vertex) const
{
    std::vector<TEV2_BONE_WEIGHT_DATA> entries;
    const std::size_t count = EntryCount(1, influences);
    entries.reserve(count);
    for (std::size_t entry = vertex * count; entry < (vertex + 1) * count; ++entry)
        entries.emplace_back(At(boneIndices, entry), At(weights, entry));
    return entries;
}

void TEV2_SKIN::SetWeights(std::size_t vertex, std::size_t vertexCount,
                           std::span<const TEV2_BONE_WEIGHT_DATA> entries)
{
    if (entries.size() > influences)
        Widen(static_cast<std::uint32_t>(entries.size()), vertexCount);
    boneIndices.resize(vertexCount * influences);
    weights.resize(vertexCount * influences);
    for (std::size_t entry = 0; entry < influences; ++entry)
    {
        const bool used = entry < entries.size();
        boneIndices[vertex * influences + entry] = used ? entries[entry].bone : 0;
        weights[vertex * influences + entry] = used ? entries[entry].weight : 0.0f;
    }
}

void TEV2_SKIN::Widen(std::uint32_t wider, std::size_t vertexCount)
{
    std::vector<std::uint32_t> wideIndices(vertexCount * wider);
    std::vector<float> wideWeights(vertexCount * wider);
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex)
    {
        for (std::size_t entry = 0; entry < influences; ++entry)
        {
            wideIndices[vertex * wider + entry] = At(boneIndices, vertex * influences + entry);
            wideWeights[vertex * wider + entry] = At(weights, vertex * influences + entry);
        }
    }
    boneIndices = std::move(wideIndices);
    weights = std::move(wideWeights);
    influences = wider;
}

} // namespace TEV2_LOADER
