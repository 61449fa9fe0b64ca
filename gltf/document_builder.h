#pragma once

/// Writes glTF 2.0 documents: JSON and one binary buffer. It knows what glTF demands of accessors and buffers, and
/// nothing about what they mean.
///
///     gltf::DocumentBuilder builder;
///     const std::size_t times = builder.AddTimes(seconds);
///     const std::size_t node = builder.Append("nodes", {{"name", "Hips"}});
///     const std::string file = builder.Glb();

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace gltf
{

/// Members keep their order.
using Json = nlohmann::ordered_json;

/// The number whose shortest decimal reads back to the same float. `value` is finite.
Json FloatNumber(float value);

/// An array of these.
Json FloatNumbers(std::span<const float> values);

/// What the elements of an accessor are for. It decides on the buffer view and on the bounds.
enum class AccessorUse : std::uint8_t
{
    Animation,
    BindMatrices,
    Position, // of vertices, with bounds
    Vertex,   // any other attribute of vertices
};

class DocumentBuilder
{
public:
    /// Results of at most this many bytes unless the constructor says otherwise; no GLB can have 4 GiB.
    static constexpr std::size_t kMostBytes = std::size_t{1} << 30;

    explicit DocumentBuilder(std::size_t most_bytes = kMostBytes);

    /// The JSON, where "asset" is there from the start. Lists come into being with their first element: glTF allows no
    /// empty ones.
    Json& Root() { return root_; }

    /// Appends to a list of the root; the index of the element.
    std::size_t Append(const char* list, Json element);

    /// Names an extension in extensionsUsed.
    void UseExtension(std::string_view name);

    // Accessors. Each returns its index; all values are finite and there is at least one element. They throw Error when
    // the result becomes larger than it may be.

    /// Elements of `width` floats (1 to 4, or 16), one after another.
    std::size_t AddFloats(std::span<const float> values, std::size_t width, AccessorUse use);

    /// Ascending times of keys, in seconds; equal ones share an accessor.
    std::size_t AddTimes(std::span<const float> times);

    /// Corners of triangles, in 2 bytes each where that is possible.
    std::size_t AddIndices(std::span<const std::uint32_t> indices);

    /// Four joints for each vertex, in one byte each where that is possible.
    std::size_t AddJoints(std::span<const std::uint16_t> joints);

    /// `count` elements of three floats, all zero but `values`, whose places are `indices`, ascending and below
    /// `count`. With bounds where it is a position.
    std::size_t AddSparse(std::size_t count, std::span<const std::uint32_t> indices,
                          std::span<const float> values, AccessorUse use);

    /// Throws Error where this many more bytes would make the result larger than it may be. Call before allocating for
    /// an accessor whose size another file decides.
    void CheckRoom(std::size_t bytes) const;

    std::size_t BinaryBytes() const { return binary_.size(); }

    // The document. Each function may be called once, when it is complete.

    std::string Glb();

    /// A .gltf; its buffer refers to `binary_uri`, a file with Binary(). Without a buffer there is no such file.
    std::string Gltf(std::string_view binary_uri);
    std::span<const std::uint8_t> Binary() const { return binary_; }

private:
    std::size_t AddView(std::span<const std::uint8_t> bytes, AccessorUse use, int target);
    std::size_t AppendBytes(std::span<const std::uint8_t> bytes);
    void FinishBuffer(std::string_view uri);

    Json root_;
    std::vector<std::uint8_t> binary_;
    std::map<std::vector<float>, std::size_t> times_; // accessors
    std::size_t most_bytes_;
    std::size_t animation_view_;
};

} // namespace gltf
