#pragma once

/// A glTF 2.0 document: .gltf or .glb bytes, read and checked, without a host and without a meaning for any program.
///
///     gltf::FolderFiles files(folder);
///     const gltf::Document document(bytes, files);
///     for (const gltf::ShownNode& shown : document.ShownNodes(kDeepest))
///         Use(document.NodeAt(shown.index));
///
/// What is small compared with its JSON is made on demand, so that a document takes little more memory
/// than its bytes. Everything throws Error, with the place, for what the document may not hold: indices out of range,
/// members of another type, numbers that are not finite. Meshes, skins, materials, images and lights have headers of
/// their own. What no function returns is in the JSON, unchecked.

#include "gltf/container.h"
#include "gltf/folder_files.h"
#include "gltf/json_tree.h"
#include "gltf/place.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace gltf
{

struct Trs
{
    std::array<double, 3> translation{0.0, 0.0, 0.0};   // metres
    std::array<double, 4> rotation{0.0, 0.0, 0.0, 1.0}; // x, y, z, w
    std::array<double, 3> scale{1.0, 1.0, 1.0};
};

using ColumnMatrix = std::array<double, 16>;

struct Node
{
    std::string_view name;
    std::variant<Trs, ColumnMatrix> local;
    std::optional<std::size_t> mesh, camera, skin; // mesh and skin are not checked against what there is
    JsonValue json;
};

/// A node that the document's scene shows.
struct ShownNode
{
    std::uint32_t index;                 // of the node
    std::optional<std::uint32_t> parent; // in the list of shown nodes, where it comes earlier
};

/// Angles in radians, lengths in metres; 0 where the document states none.
struct Camera
{
    std::string_view name;
    bool orthographic = false;
    double yfov = 0.0;
    double aspect = 0.0; // width / height, of either kind
    double near_plane = 0.0;
    double far_plane = 0.0;
    JsonValue json;
};

enum class Interpolation
{
    Step,
    Linear,
    CubicSpline
};

/// What a channel moves.
enum class Target
{
    Translation,
    Rotation,
    Scale,
    Weights,
    Other
};

struct Sampler
{
    std::size_t input = 0; // accessors
    std::size_t output = 0;
    Interpolation interpolation = Interpolation::Linear;
};

struct Channel
{
    std::size_t sampler = 0;
    std::optional<std::size_t> node;
    Target target = Target::Other;
};

struct Animation
{
    std::string_view name;
    std::size_t index = 0;
    JsonValue channels;
    JsonValue samplers;
};

class Document
{
public:
    /// `bytes` and `files` must outlive it.
    Document(std::string_view bytes, SideFiles& files);

    JsonValue Root() const { return tree_.Root(); }
    std::size_t Count(const char* list) const { return Root()[list].Size(); }
    Place PlaceOf(const char* list, std::size_t index) const;

    bool Requires(std::string_view extension) const;
    std::vector<std::string_view> RequiredExtensions() const;

    /// The scene that the document shows: the one it names, else the first. Nothing when it holds no scenes.
    JsonValue Scene() const;

    /// Depth first, children in the document's order; without scenes, from all nodes without a parent on. Throws for
    /// nodes that are reached twice or nested deeper than `deepest`.
    std::vector<ShownNode> ShownNodes(std::size_t deepest) const;

    Node NodeAt(std::size_t index) const;
    Camera CameraAt(std::size_t index) const;

    Animation AnimationAt(std::size_t index) const;
    Channel ChannelAt(const Animation& animation, std::size_t index) const;
    Sampler SamplerAt(const Animation& animation, std::size_t index) const;
    Place PlaceOf(const Animation& animation) const
    {
        return {"animations", animation.index, animation.name};
    }

    /// The bytes of a buffer view; they stay as long as the document. Files beside it are read when they are needed.
    std::string_view ViewBytes(std::size_t index);

    /// Of the document and of the files beside it that were read.
    std::size_t BytesRead() const { return size_ + side_bytes_; }

    /// Of all files beside the document that it names, relative to its folder; whether there are such files or not.
    std::vector<std::string> SideFilePaths() const;

private:
    std::vector<std::size_t> Tops() const;
    void CheckVersion() const;
    void CheckBuffers() const;
    std::string_view BufferBytes(std::size_t index);
    const std::string& SideFile(const std::string& path, std::size_t bytes);

    std::size_t size_;
    Container container_;
    JsonTree tree_;
    SideFiles& files_;
    std::map<std::size_t, std::string> data_;                         // of data URIs, by buffer
    std::map<std::pair<std::string, std::size_t>, std::string> side_; // of files, by path and length
    std::size_t side_bytes_ = 0;
};

/// Members of `object`, which is at `place`.
std::size_t IndexIn(JsonValue object, const char* member, std::size_t count, const Place& place);
std::optional<std::size_t> OptionalIndexIn(JsonValue object, const char* member, std::size_t count,
                                           const Place& place);

/// A whole number of at least `least`, `otherwise` where it is absent.
std::size_t SizeIn(JsonValue object, const char* member, std::size_t least,
                   std::optional<std::size_t> otherwise, const Place& place);

/// Nothing where it is absent.
std::optional<double> NumberIn(JsonValue object, const char* member, const Place& place);

/// An array of as many numbers as there is room for. False, and nothing changed, where it is absent.
bool ReadNumbersIn(JsonValue object, const char* member, std::span<double> numbers, const Place& place);

/// False where it is absent.
bool TruthIn(JsonValue object, const char* member, const Place& place);

} // namespace gltf
