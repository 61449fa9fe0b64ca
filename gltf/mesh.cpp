#include "gltf/mesh.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace gltf
{
namespace
{

constexpr std::size_t kAnySize = 0;

/// What glTF says of an attribute; with KHR_mesh_quantization whole numbers are allowed, too.
struct Semantic
{
    std::string_view name; // ends in '_': of any number of sets
    std::size_t width;     // kAnySize: 3 or 4
    bool is_whole = false; // always
};

constexpr Semantic kSemantics[] = {{"POSITION", 3},     {"NORMAL", 3},        {"TANGENT", 4},
                                   {"TEXCOORD_", 2},    {"COLOR_", kAnySize}, {"WEIGHTS_", 4},
                                   {"JOINTS_", 4, true}};

const Semantic* SemanticOf(std::string_view name)
{
    for (const Semantic& semantic : kSemantics)
    {
        if (semantic.name.ends_with('_') ? SetOf(name, semantic.name).has_value() : name == semantic.name)
            return &semantic;
    }
    return nullptr;
}

std::string Named(std::string_view name)
{
    return "attributes." + std::string(name.substr(0, 40));
}

// `is_offset`: of a morph target, whose tangents have no fourth component.
void CheckShape(const Document& document, const Attribute& attribute, bool is_offset,
                std::size_t vertex_count, const Place& place)
{
    const AccessorShape shape = ShapeOf(document, attribute.accessor);
    const Semantic* const semantic = SemanticOf(attribute.name);
    if (semantic)
    {
        const std::size_t width = is_offset && semantic->width == 4 ? 3 : semantic->width;
        const bool has_width =
            width == kAnySize ? shape.width == 3 || shape.width == 4 : shape.width == width;
        if (!has_width)
            place.Fail(Named(attribute.name), "has " + std::to_string(shape.width) + " components");
        if (semantic->is_whole && shape.components != Components::Whole)
            place.Fail(Named(attribute.name), "is not of whole numbers");
    }
    if (shape.count != vertex_count)
        place.Fail(Named(attribute.name), "has " + std::to_string(shape.count) +
                                              " elements where others have " + std::to_string(vertex_count));
}

Attributes AttributesIn(const Document& document, JsonValue json, const Place& place)
{
    if (json && json.Kind() != JsonKind::Object)
        place.Fail("attributes", "is not a JSON object");
    Attributes attributes(json.Size());
    for (std::size_t i = 0; i < attributes.size(); ++i)
    {
        const std::string name(json.Name(i));
        attributes[i] = {json.Name(i), IndexIn(json, name.c_str(), document.Count("accessors"), place)};
    }
    return attributes;
}

PrimitiveMode ModeIn(JsonValue json, const Place& place)
{
    const std::size_t mode = SizeIn(json, "mode", 0, std::size_t{4}, place);
    if (mode > static_cast<std::size_t>(PrimitiveMode::TriangleFan))
        place.Fail("mode", "is " + std::to_string(mode) + ", which is none");
    return static_cast<PrimitiveMode>(mode);
}

void CheckIndices(const Document& document, std::size_t accessor, const Place& place)
{
    const AccessorShape shape = ShapeOf(document, accessor);
    if (shape.width != 1 || shape.components != Components::Whole)
        place.Fail("indices", "are not single whole numbers");
}

Primitive PrimitiveIn(const Document& document, JsonValue json, const Place& place)
{
    Primitive primitive;
    primitive.json = json;
    primitive.mode = ModeIn(json, place);
    primitive.attributes = AttributesIn(document, json["attributes"], place);
    primitive.indices = OptionalIndexIn(json, "indices", document.Count("accessors"), place);
    primitive.material = OptionalIndexIn(json, "material", document.Count("materials"), place);
    if (primitive.indices)
        CheckIndices(document, *primitive.indices, place);
    if (!primitive.attributes.empty())
        primitive.vertex_count = ShapeOf(document, primitive.attributes.front().accessor).count;
    for (const Attribute& attribute : primitive.attributes)
        CheckShape(document, attribute, false, primitive.vertex_count, place);
    const JsonValue targets = json["targets"];
    primitive.targets.reserve(targets.Size());
    for (std::size_t i = 0; i < targets.Size(); ++i)
    {
        const Place target{"targets", i, {}, &place};
        primitive.targets.push_back(AttributesIn(document, targets[i], target));
        for (const Attribute& attribute : primitive.targets.back())
            CheckShape(document, attribute, true, primitive.vertex_count, target);
    }
    return primitive;
}

std::vector<double> WeightsIn(JsonValue json, std::size_t target_count, const Place& place)
{
    std::vector<double> weights(json["weights"].Size());
    if (json["weights"] && weights.size() != target_count)
        place.Fail("weights", "are " + std::to_string(weights.size()) + " of " +
                                  std::to_string(target_count) + " morph targets");
    ReadNumbersIn(json, "weights", weights, place);
    return weights;
}

} // namespace

std::string_view Mesh::TargetName(std::size_t target) const
{
    return json["extras"]["targetNames"][target].Text();
}

Place PlaceOf(const Mesh& mesh)
{
    return {"meshes", mesh.index, mesh.name};
}

Mesh MeshAt(const Document& document, std::size_t index)
{
    Mesh mesh;
    mesh.json = document.Root()["meshes"][index];
    mesh.name = mesh.json["name"].Text();
    mesh.index = index;
    const Place place = PlaceOf(mesh);
    const JsonValue primitives = mesh.json["primitives"];
    if (primitives.Size() == 0)
        place.Fail("has no primitives");
    mesh.primitives.reserve(primitives.Size());
    for (std::size_t i = 0; i < primitives.Size(); ++i)
    {
        const Place part{"primitives", i, {}, &place};
        mesh.primitives.push_back(PrimitiveIn(document, primitives[i], part));
        if (mesh.primitives.back().targets.size() != mesh.TargetCount())
            part.Fail("targets", "are not as many as those of the mesh's first primitive");
    }
    mesh.weights = WeightsIn(mesh.json, mesh.TargetCount(), place);
    return mesh;
}

const Attribute* Find(const Attributes& attributes, std::string_view name)
{
    const auto found = std::ranges::find(attributes, name, &Attribute::name);
    return found == attributes.end() ? nullptr : &*found;
}

std::optional<std::size_t> SetOf(std::string_view name, std::string_view prefix)
{
    if (!name.starts_with(prefix) || name.size() == prefix.size())
        return std::nullopt;
    std::size_t set = 0;
    const char* const end = name.data() + name.size();
    const auto [last, error] = std::from_chars(name.data() + prefix.size(), end, set);
    return error == std::errc() && last == end ? std::optional(set) : std::nullopt;
}

std::size_t MostTriangles(const Document& document, const Primitive& primitive)
{
    const std::size_t corners =
        primitive.indices ? ShapeOf(document, *primitive.indices).count : primitive.vertex_count;
    if (primitive.mode < PrimitiveMode::Triangles || corners < 3)
        return 0;
    return primitive.mode == PrimitiveMode::Triangles ? corners / 3 : corners - 2;
}

std::vector<Triangle> TrianglesOf(AccessorReader& accessors, const Document& document,
                                  const Primitive& primitive)
{
    const Numbers numbers = primitive.indices ? accessors.Read(*primitive.indices) : nullptr;
    const auto corner = [&](std::size_t i)
    {
        const double number = numbers ? (*numbers)[i] : static_cast<double>(i);
        if (!(number >= 0.0 && number < static_cast<double>(primitive.vertex_count)))
            document.PlaceOf("accessors", *primitive.indices)
                .Fail("element " + std::to_string(i) + " leads to none of the " +
                      std::to_string(primitive.vertex_count) + " vertices");
        return static_cast<std::uint32_t>(number);
    };
    std::vector<Triangle> triangles(MostTriangles(document, primitive));
    for (std::size_t i = 0; i < triangles.size(); ++i)
    {
        if (primitive.mode == PrimitiveMode::Triangles)
            triangles[i] = {corner(3 * i), corner(3 * i + 1), corner(3 * i + 2)};
        else if (primitive.mode == PrimitiveMode::TriangleFan)
            triangles[i] = {corner(i + 1), corner(i + 2), corner(0)};
        else // each second triangle of a strip has its corners the other way round
            triangles[i] = {corner(i), corner(i + 1 + i % 2), corner(i + 2 - i % 2)};
    }
    return triangles;
}

std::vector<double> NodeWeights(const Document& document, std::size_t node, const Mesh& mesh)
{
    return WeightsIn(document.Root()["nodes"][node], mesh.TargetCount(), document.PlaceOf("nodes", node));
}

} // namespace gltf
