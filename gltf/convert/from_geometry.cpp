#include "gltf/convert/from_geometry.h"

#include "gltf/convert/weights.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace tev2_gltf
{

using gltf::Attributes;
using gltf::Mesh;
using gltf::Numbers;
using gltf::Place;
using gltf::Primitive;
using namespace TEV2_LOADER;

namespace
{

constexpr std::string_view kTexCoord = "TEXCOORD_";
constexpr std::string_view kColour = "COLOR_";
constexpr std::string_view kJoints = "JOINTS_";
constexpr std::string_view kWeights = "WEIGHTS_";
constexpr std::size_t kInfluencesOfSet = 4;

bool Has(const Primitive& primitive, std::string_view name)
{
    return gltf::Find(primitive.attributes, name) != nullptr;
}

std::string Numbered(std::string_view prefix, std::size_t set)
{
    return std::string(prefix) + std::to_string(set);
}

bool IsSetBelow(std::string_view name, std::string_view prefix, std::size_t end)
{
    const std::optional<std::size_t> set = gltf::SetOf(name, prefix);
    return set && *set < end && Numbered(prefix, *set) == name; // not "TEXCOORD_00"
}

/// Whether a record has a place for an attribute of a primitive.
bool IsKept(const Primitive& primitive, std::string_view name, bool is_skinned)
{
    if (name == "POSITION" || name == "NORMAL")
        return true;
    if (name == "TANGENT")
        return Has(primitive, "NORMAL");
    if (IsSetBelow(name, kTexCoord, kMostColumns) || IsSetBelow(name, kColour, kMostColumns))
        return true;
    constexpr std::size_t kMostSets = kMostColumns / kInfluencesOfSet;
    const bool is_joints = IsSetBelow(name, kJoints, kMostSets);
    if (!is_skinned || (!is_joints && !IsSetBelow(name, kWeights, kMostSets)))
        return false;
    const std::size_t set = *gltf::SetOf(name, is_joints ? kJoints : kWeights);
    return Has(primitive, Numbered(is_joints ? kWeights : kJoints, set));
}

void ReportLostAttributes(const FromContext& context, const Mesh& mesh,
                          const std::vector<MeshLayout::Part>& parts, bool is_skinned)
{
    std::map<std::string_view, std::size_t> lost; // by name
    for (const MeshLayout::Part& part : parts)
    {
        for (const gltf::Attribute& attribute : part.primitive->attributes)
            lost[attribute.name] += IsKept(*part.primitive, attribute.name, is_skinned) ? 0 : 1;
        for (const Attributes& target : part.primitive->targets)
        {
            for (const gltf::Attribute& attribute : target)
                lost[attribute.name] +=
                    attribute.name == "POSITION" || attribute.name == "NORMAL" || attribute.name == "TANGENT"
                        ? 0
                        : 1;
        }
    }
    for (const auto& [name, count] : lost)
    {
        if (count > 0)
            context.Report(Code::AttributeLost, gltf::PlaceOf(mesh), std::string(name), count);
    }
}

using BlockKey = std::pair<std::vector<std::pair<std::string_view, std::size_t>>,
                           std::vector<std::vector<std::pair<std::string_view, std::size_t>>>>;

std::vector<std::pair<std::string_view, std::size_t>> Sorted(const Attributes& attributes)
{
    std::vector<std::pair<std::string_view, std::size_t>> sorted;
    for (const gltf::Attribute& attribute : attributes)
        sorted.emplace_back(attribute.name, attribute.accessor);
    std::ranges::sort(sorted);
    return sorted;
}

BlockKey KeyOf(const Primitive& primitive)
{
    BlockKey key{Sorted(primitive.attributes), {}};
    for (const Attributes& target : primitive.targets)
        key.second.push_back(Sorted(target));
    return key;
}

/// Calls visit(vertex, numbers of it) for each vertex of a block.
template <typename Visit>
void VisitVertices(FromContext& context, const MeshLayout::Block& block, const gltf::Attribute& attribute,
                   const Visit& visit)
{
    const Numbers numbers = context.accessors.Read(attribute.accessor);
    const std::size_t width = gltf::ShapeOf(context.document, attribute.accessor).width;
    for (std::size_t i = 0; i < block.count; ++i)
    {
        const std::size_t source = block.corners.empty() ? i : block.corners[i];
        visit(block.first + i, std::span<const double>(*numbers).subspan(source * width, width));
    }
}

float F(double number)
{
    return static_cast<float>(number); // of an accessor: it was one, or a small whole number
}

TEV2_VECTOR_3 Vector3(std::span<const double> numbers)
{
    return {F(numbers[0]), F(numbers[1]), F(numbers[2])};
}

TEV2_VECTOR_3 CrossProduct(const TEV2_VECTOR_3& a, const TEV2_VECTOR_3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

TEV2_VECTOR_3 Unit(const TEV2_VECTOR_3& v)
{
    const std::array<double, 3> d{static_cast<double>(v.x), static_cast<double>(v.y),
                                  static_cast<double>(v.z)};
    const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    if (!(length > 0.0) || !std::isfinite(length))
        return {0.0f, 1.0f, 0.0f};
    return {F(d[0] / length), F(d[1] / length), F(d[2] / length)};
}

/// The normals of flat triangles, whose corners follow one another clockwise seen from the front.
void FillFlatNormals(const MeshLayout::Block& block, TEV2_RIGID_VERTICES& vertices)
{
    for (std::size_t corner = block.first; corner + 2 < block.first + block.count; corner += 3)
    {
        const TEV2_VECTOR_3* const p = &vertices.positions[corner];
        const TEV2_VECTOR_3 normal = Unit(CrossProduct(p[1] - p[0], p[2] - p[0]));
        std::fill_n(vertices.normals.begin() + static_cast<std::ptrdiff_t>(corner), 3, normal);
    }
}

bool SomeHave(const MeshLayout& layout, std::string_view name)
{
    return std::ranges::any_of(layout.Blocks(),
                               [name](const auto& block) { return Has(*block.primitive, name); });
}

/// Whether all blocks have it; reports an attribute that only some have.
bool AllHave(const FromContext& context, const MeshLayout& layout, std::string_view name, Code code,
             const char* otherwise)
{
    const auto missing = static_cast<std::size_t>(std::ranges::count_if(
        layout.Blocks(), [name](const auto& block) { return !Has(*block.primitive, name); }));
    if (missing > 0)
        context.Report(code, gltf::PlaceOf(layout.Mesh()), std::string(name) + ": " + otherwise, missing);
    return missing == 0;
}

/// One more than the last set of texture coordinates or colours that any block has.
std::size_t SetCount(const MeshLayout& layout, std::string_view prefix, std::size_t most)
{
    std::size_t count = 0;
    for (const MeshLayout::Block& block : layout.Blocks())
    {
        for (const gltf::Attribute& attribute : block.primitive->attributes)
        {
            if (IsSetBelow(attribute.name, prefix, most))
                count = std::max(count, *gltf::SetOf(attribute.name, prefix) + 1);
        }
    }
    return count;
}

template <typename Value, typename ValueOf>
void FillColumns(FromContext& context, const MeshLayout& layout, std::string_view prefix,
                 std::vector<std::vector<Value>>& columns, const Value& otherwise, const ValueOf& value_of)
{
    columns.resize(SetCount(layout, prefix, kMostColumns));
    for (std::size_t set = 0; set < columns.size(); ++set)
    {
        context.budget.Take(layout.VertexCount(), sizeof otherwise, gltf::PlaceOf(layout.Mesh()));
        columns[set].assign(layout.VertexCount(), otherwise);
        const std::string name = Numbered(prefix, set);
        AllHave(context, layout, name, Code::AttributeFilled, "not in all primitives");
        for (const MeshLayout::Block& block : layout.Blocks())
        {
            if (const gltf::Attribute* const attribute = gltf::Find(block.primitive->attributes, name))
                VisitVertices(context, block, *attribute,
                              [&](std::size_t vertex, std::span<const double> numbers)
                              { columns[set][vertex] = value_of(numbers); });
        }
    }
}

void FillNormals(FromContext& context, const MeshLayout& layout, Exchange exchange,
                 TEV2_RIGID_VERTICES& vertices)
{
    if (!SomeHave(layout, "NORMAL"))
        return;
    const Place place = gltf::PlaceOf(layout.Mesh());
    context.budget.Take(vertices.Count(), sizeof(TEV2_VECTOR_3), place);
    vertices.normals.resize(vertices.Count());
    AllHave(context, layout, "NORMAL", Code::AttributeFilled, "flat normals in some primitives");
    for (const MeshLayout::Block& block : layout.Blocks())
    {
        if (const gltf::Attribute* const normal = gltf::Find(block.primitive->attributes, "NORMAL"))
            VisitVertices(context, block, *normal,
                          [&](std::size_t vertex, std::span<const double> numbers)
                          { vertices.normals[vertex] = Exchanged(Vector3(numbers), exchange); });
        else
            FillFlatNormals(block, vertices);
    }
    if (!SomeHave(layout, "TANGENT") ||
        !AllHave(context, layout, "TANGENT", Code::AttributeLost, "not in all primitives"))
        return;
    context.budget.Take(vertices.Count(), sizeof(TEV2_VERTEX_FRAME), place);
    vertices.frames.resize(vertices.Count());
    for (const MeshLayout::Block& block : layout.Blocks())
        VisitVertices(
            context, block, *gltf::Find(block.primitive->attributes, "TANGENT"),
            [&](std::size_t vertex, std::span<const double> numbers)
            {
                const TEV2_VECTOR_3 tangent = Vector3(numbers);
                const TEV2_VECTOR_3 normal = Exchanged(vertices.normals[vertex], exchange);
                const TEV2_VECTOR_3 side = CrossProduct(normal, tangent);
                const float sign = numbers[3] < 0.0 ? -1.0f : 1.0f;
                vertices.frames[vertex] = {Exchanged(side * sign, exchange), Exchanged(tangent, exchange)};
            });
}

/// The offsets of one target in one block, as far as it has them.
struct BlockOffsets
{
    Numbers positions, normals, tangents;
};

TEV2_VECTOR_3 OffsetAt(const Numbers& numbers, std::size_t source)
{
    return numbers ? Vector3(std::span<const double>(*numbers).subspan(3 * source, 3)) : TEV2_VECTOR_3{};
}

/// Appends the vertices that the target moves.
void AppendOffsets(const MeshLayout::Block& block, const BlockOffsets& from, Exchange exchange,
                   bool has_normals, bool has_tangents, TEV2_TARGET_VERTICES& offsets)
{
    for (std::size_t i = 0; i < block.count; ++i)
    {
        const std::size_t source = block.corners.empty() ? i : block.corners[i];
        const TEV2_VECTOR_3 position = OffsetAt(from.positions, source);
        const TEV2_VECTOR_3 normal = OffsetAt(from.normals, source);
        const TEV2_VECTOR_3 tangent = OffsetAt(from.tangents, source);
        const TEV2_VECTOR_3 none;
        if (position == none && normal == none && tangent == none)
            continue;
        offsets.vertices.push_back(static_cast<std::uint32_t>(block.first + i));
        offsets.positions.push_back(Exchanged(position, exchange));
        if (has_normals)
            offsets.normals.push_back(Exchanged(normal, exchange));
        if (has_tangents)
            offsets.tangents.push_back(Exchanged(tangent, exchange));
    }
}

Numbers ReadOffsets(FromContext& context, const Attributes& target, std::string_view name)
{
    const gltf::Attribute* const attribute = gltf::Find(target, name);
    return attribute ? context.accessors.Read(attribute->accessor) : nullptr;
}

bool TargetHas(const MeshLayout& layout, std::size_t target, std::string_view name)
{
    return std::ranges::any_of(layout.Blocks(), [&](const auto& block)
                               { return gltf::Find(block.primitive->targets[target], name) != nullptr; });
}

/// Reads set after set of the joints and weights of a block.
void FillEntries(FromContext& context, const MeshLayout::Block& block, std::size_t joint_count,
                 const Place& place, TEV2_SKIN& skin)
{
    for (std::size_t set = 0; set < skin.influences / kInfluencesOfSet; ++set)
    {
        const gltf::Attribute* const joints = gltf::Find(block.primitive->attributes, Numbered(kJoints, set));
        const gltf::Attribute* const weights =
            gltf::Find(block.primitive->attributes, Numbered(kWeights, set));
        if (!joints || !weights)
            continue;
        const auto entry = [&](std::size_t vertex)
        { return vertex * skin.influences + set * kInfluencesOfSet; };
        VisitVertices(context, block, *weights,
                      [&](std::size_t vertex, std::span<const double> numbers)
                      { std::ranges::transform(numbers, &skin.weights[entry(vertex)], F); });
        VisitVertices(context, block, *joints,
                      [&](std::size_t vertex, std::span<const double> numbers)
                      {
                          for (std::size_t i = 0; i < kInfluencesOfSet; ++i)
                          {
                              if (!(numbers[i] >= 0.0 && numbers[i] < static_cast<double>(joint_count)))
                                  place.Fail("a vertex follows joint " + std::to_string(numbers[i]) + " of " +
                                             std::to_string(joint_count));
                              skin.boneIndices[entry(vertex) + i] = static_cast<std::uint32_t>(numbers[i]);
                          }
                      });
    }
}

} // namespace

MeshLayout::MeshLayout(FromContext& context, const gltf::Mesh& mesh, bool is_skinned) : mesh_(&mesh)
{
    const Place place = gltf::PlaceOf(mesh);
    std::size_t lost = 0;
    for (const Primitive& primitive : mesh.primitives)
    {
        if (primitive.mode < gltf::PrimitiveMode::Triangles || !Has(primitive, "POSITION"))
            ++lost;
        else
            parts_.push_back({&primitive});
    }
    if (lost > 0)
        context.Report(Code::PrimitiveLost, place, "points, lines, or without positions", lost);
    ReportLostAttributes(context, mesh, parts_, is_skinned);
    const bool has_normals =
        std::ranges::any_of(parts_, [](const Part& part) { return Has(*part.primitive, "NORMAL"); });
    std::map<BlockKey, std::size_t> known;
    for (Part& part : parts_)
    {
        const bool is_flat = has_normals && !Has(*part.primitive, "NORMAL");
        const auto [found, is_new] =
            known.try_emplace(is_flat ? BlockKey{} : KeyOf(*part.primitive), blocks_.size());
        part.block = is_flat ? blocks_.size() : found->second;
        if (!is_new && !is_flat)
            continue;
        Block& block =
            blocks_.emplace_back(Block{part.primitive, vertex_count_, part.primitive->vertex_count, {}});
        if (is_flat)
        {
            has_flat_blocks_ = true;
            context.budget.Take(gltf::MostTriangles(context.document, *part.primitive),
                                2 * sizeof(gltf::Triangle), place);
            for (const gltf::Triangle& triangle :
                 gltf::TrianglesOf(context.accessors, context.document, *part.primitive))
                block.corners.insert(block.corners.end(), {triangle[0], triangle[2], triangle[1]});
            block.count = block.corners.size();
        }
        vertex_count_ += block.count;
        if (vertex_count_ >= kNone)
            place.Fail("has more vertices than a mesh can have");
    }
}

TEV2_RIGID_VERTICES MakeVertices(FromContext& context, const MeshLayout& layout, Exchange exchange)
{
    TEV2_RIGID_VERTICES vertices;
    context.budget.Take(layout.VertexCount(), sizeof(TEV2_VECTOR_3), gltf::PlaceOf(layout.Mesh()));
    vertices.positions.resize(layout.VertexCount());
    for (const MeshLayout::Block& block : layout.Blocks())
        VisitVertices(context, block, *gltf::Find(block.primitive->attributes, "POSITION"),
                      [&](std::size_t vertex, std::span<const double> numbers)
                      { vertices.positions[vertex] = Exchanged(Vector3(numbers), exchange); });
    FillNormals(context, layout, exchange, vertices);
    FillColumns(context, layout, kTexCoord, vertices.uvs, TEV2_VECTOR_2{},
                [](std::span<const double> numbers) {
                    return TEV2_VECTOR_2{F(numbers[0]), F(numbers[1])};
                });
    FillColumns(context, layout, kColour, vertices.colours, TEV2_VECTOR_4{1.0f, 1.0f, 1.0f, 1.0f},
                [](std::span<const double> numbers)
                {
                    return TEV2_VECTOR_4{F(numbers[0]), F(numbers[1]), F(numbers[2]),
                                         numbers.size() > 3 ? F(numbers[3]) : 1.0f};
                });
    return vertices;
}

std::vector<TEV2_TRI_SUB_OBJECT> MakeSubObjects(FromContext& context, const MeshLayout& layout)
{
    const Place place = gltf::PlaceOf(layout.Mesh());
    std::vector<TEV2_TRI_SUB_OBJECT> objects;
    for (const MeshLayout::Part& part : layout.Parts())
    {
        const Primitive& primitive = *part.primitive;
        const MeshLayout::Block& block = layout.Blocks()[part.block];
        context.budget.Take(sizeof(TEV2_TRI_SUB_OBJECT), place);
        TEV2_TRI_SUB_OBJECT& object = objects.emplace_back();
        if (primitive.material)
            object.material = static_cast<std::uint32_t>(*primitive.material);
        context.budget.Take(gltf::MostTriangles(context.document, primitive), 2 * sizeof(TEV2_TRIANGLE),
                            place);
        const auto first = static_cast<std::uint32_t>(block.first);
        if (!block.corners.empty())
        {
            for (std::uint32_t i = 0; i < block.count; i += 3)
                object.triangles.push_back({first + i, first + i + 1, first + i + 2});
            continue;
        }
        object.triangles = gltf::TrianglesOf(context.accessors, context.document, primitive);
        for (TEV2_TRIANGLE& triangle : object.triangles) // mirrored
            triangle = {first + triangle[0], first + triangle[2], first + triangle[1]};
    }
    return objects;
}

std::vector<TEV2_MORPH_TARGET> MakeTargets(FromContext& context, const MeshLayout& layout, Exchange exchange)
{
    const Place place = gltf::PlaceOf(layout.Mesh());
    const std::size_t count = layout.Mesh().TargetCount();
    context.budget.Take(count, sizeof(TEV2_MORPH_TARGET), place);
    std::vector<TEV2_MORPH_TARGET> targets(count);
    for (std::size_t t = 0; t < count; ++t)
    {
        targets[t].name = context.WideText(layout.Mesh().TargetName(t), place);
        const bool has_normals = TargetHas(layout, t, "NORMAL");
        const bool has_tangents = TargetHas(layout, t, "TANGENT");
        TEV2_TARGET_VERTICES& offsets = targets[t].offsets;
        for (const MeshLayout::Block& block : layout.Blocks())
        {
            const Attributes& target = block.primitive->targets[t];
            const BlockOffsets from{ReadOffsets(context, target, "POSITION"),
                                    ReadOffsets(context, target, "NORMAL"),
                                    ReadOffsets(context, target, "TANGENT")};
            const std::size_t before = offsets.Count();
            if (from.positions || from.normals || from.tangents)
                AppendOffsets(block, from, exchange, has_normals, has_tangents, offsets);
            const std::size_t columns = 1 + (has_normals ? 1u : 0u) + (has_tangents ? 1u : 0u);
            context.budget.Take(offsets.Count() - before,
                                sizeof(std::uint32_t) + columns * sizeof(TEV2_VECTOR_3), place);
        }
    }
    return targets;
}

TEV2_SKIN MakeWeights(FromContext& context, const MeshLayout& layout, std::size_t joint_count)
{
    const Place place = gltf::PlaceOf(layout.Mesh());
    for (const MeshLayout::Block& block : layout.Blocks())
    {
        if (!Has(*block.primitive, "JOINTS_0") || !Has(*block.primitive, "WEIGHTS_0"))
            place.Fail("is on a node with a skin, and has a primitive without JOINTS_0 and WEIGHTS_0");
    }
    TEV2_SKIN skin;
    const std::size_t sets = std::min(SetCount(layout, kJoints, kMostColumns / kInfluencesOfSet),
                                      SetCount(layout, kWeights, kMostColumns / kInfluencesOfSet));
    skin.influences = static_cast<std::uint32_t>(kInfluencesOfSet * sets);
    const std::size_t entries = layout.VertexCount() * skin.influences;
    context.budget.Take(entries, sizeof(std::uint32_t) + sizeof(float), place);
    skin.boneIndices.resize(entries);
    skin.weights.resize(entries);
    for (const MeshLayout::Block& block : layout.Blocks())
        FillEntries(context, block, joint_count, place, skin);
    std::size_t changed = 0;
    for (std::size_t entry = 0; entry < entries; entry += skin.influences)
        changed += NormaliseWeights(std::span(skin.weights).subspan(entry, skin.influences)) ? 1 : 0;
    for (std::size_t entry = 0; entry < entries; ++entry)
    {
        if (skin.weights[entry] == 0.0f)
            skin.boneIndices[entry] = 0;
    }
    if (changed > 0)
        context.Report(Code::WeightsNormalised, place, "vertices whose weights do not sum to 1", changed);
    return skin;
}

} // namespace tev2_gltf
