#pragma once

/// Scenes as glTF documents.
///
///     TEV2_LOADER::TEV2 walk;
///     ...
///     gltf::DocumentBuilder builder;
///     tev2_gltf::ConversionReport report;
///     const tev2_gltf::GltfSource sources[] = {{walk, "walk"}};
///     if (const Status converted = tev2_gltf::ToGltf(sources, {}, builder, report); converted)
///         TEV2_LOADER::WriteWholeFile("walk.glb", builder.Glb());
///
/// Node n of the scene is node n of the document; nodes that are added come after them. docs/converting.md has the
/// whole mapping. What glTF has no word for and is not lost is in extras:
///
/// - scenes[0].extras.cameraSwitcher: for each scene that was converted {"animation": its name, "times": seconds,
///   "cameras": names}, where cameras[i] is active from times[i] on, "" none. Present where one has a switcher.
/// - The camera node that follows the active camera is called "Camera Switcher", with extras {"cameraSwitcher": true}.
/// - A node that was added for a skinned mesh has extras {"skinnedMeshOf": {"node": n, "name": its name}}: the node
///   that the mesh belongs to; {} for one in the world.
/// - The extras of a node, mesh, camera or light are the user properties of the node or object.

#include "gltf/convert/report.h"
#include "gltf/document_builder.h"
#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tev2_gltf
{

/// The axes of a scene's world.
enum class World : std::uint8_t
{
    YUp,
    YUpTurned, // by half a turn about Y, as "Keep positive Z?" of the exporter does
    ZUp,
    ZUpTurned, // the same; -Z is up
};

/// "y-up", "y-up-turned", "z-up", "z-up-turned"
std::string_view NameOf(World world);

/// By these names.
std::optional<World> FindWorld(std::string_view name);

/// What UpAxis (up_axis.h) and, of exported scenes, the rotation of node 0 say; nothing where the up axis is unknown.
std::optional<World> WorldOf(const TEV2_LOADER::TEV2& scene);

/// A scene and the name of the animation that it becomes, UTF-8.
struct GltfSource
{
    const TEV2_LOADER::TEV2& scene;
    std::string animation_name;
};

struct ToGltfOptions
{
    /// The axes of all sources. Otherwise those of WorldOf, and Y up, reported, where that does not know.
    std::optional<World> world = {};

    /// Only the pose at this time, in seconds: a document without animations.
    std::optional<float> at = {};

    /// What leads from the document's folder to that of the scenes, which names of images are relative to: empty or
    /// with a / at its end.
    std::string image_folder = {};
};

inline constexpr std::string_view kSwitcherNode = "Camera Switcher";
inline constexpr std::string_view kSwitcherExtra = "cameraSwitcher";
inline constexpr std::string_view kSkinExtra = "skinnedMeshOf";

/// Makes one document of scenes with equal hierarchies, with an animation each; all but their animations come from the
/// first. Fails, with the reason, for hierarchies that differ and where the document would become larger than the
/// builder allows. Throws std::bad_alloc where memory runs out.
TEV2_LOADER::Status ToGltf(std::span<const GltfSource> sources, const ToGltfOptions& options,
                           gltf::DocumentBuilder& builder, ConversionReport& report);

} // namespace tev2_gltf
