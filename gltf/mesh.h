#pragma once

/// Meshes: primitives, their vertex attributes and triangles.

#include "gltf/accessor.h"
#include "gltf/document.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace gltf
{

enum class PrimitiveMode : std::uint8_t // the numbers of the document
{
    Points,
    Lines,
    LineLoop,
    LineStrip,
    Triangles,
    TriangleStrip,
    TriangleFan
};

struct Attribute
{
    std::string_view name; // "POSITION"
    std::size_t accessor = 0;

    bool operator==(const Attribute&) const = default;
};

using Attributes = std::vector<Attribute>; // in the order of the document

struct Primitive
{
    PrimitiveMode mode = PrimitiveMode::Triangles;
    Attributes attributes;
    std::vector<Attributes> targets;
    std::optional<std::size_t> indices, material;
    std::size_t vertex_count = 0; // of every attribute
    JsonValue json;
};

struct Mesh
{
    std::string_view name;
    std::size_t index = 0;
    std::vector<Primitive> primitives; // at least one
    std::vector<double> weights;       // of the morph targets; none, or one each
    JsonValue json;

    /// Of every primitive.
    std::size_t TargetCount() const { return primitives.front().targets.size(); }

    /// As programs agree to name targets, in the mesh's extras. May be empty.
    std::string_view TargetName(std::size_t target) const;
};

/// Every index, every number of elements and every type of an attribute that glTF itself defines is checked.
Mesh MeshAt(const Document& document, std::size_t index);

Place PlaceOf(const Mesh& mesh);

const Attribute* Find(const Attributes& attributes, std::string_view name);

/// n of "TEXCOORD_n" for the prefix "TEXCOORD_"; nothing for other names.
std::optional<std::size_t> SetOf(std::string_view name, std::string_view prefix);

using Triangle = std::array<std::uint32_t, 3>;

/// Most triangles that a primitive has: of strips and fans one for each corner from the third on.
std::size_t MostTriangles(const Document& document, const Primitive& primitive);

/// The triangles of a list, strip or fan, with corners below vertex_count; nothing of points and lines. Corners that
/// are left over are ignored.
std::vector<Triangle> TrianglesOf(AccessorReader& accessors, const Document& document,
                                  const Primitive& primitive);

/// The weights of a node's morph targets, which come before those of its mesh; none where it states none.
std::vector<double> NodeWeights(const Document& document, std::size_t node, const Mesh& mesh);

} // namespace gltf
