#pragma once

#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"
#include "tev2_playback/axes.h"
#include "tev2_playback/block.h"
#include "tev2_playback/property.h"

#include <cstddef>
#include <memory_resource>
#include <string_view>

namespace TEV2_PLAYBACK
{

struct ClipData;
struct ClipSource;
struct LoadClipOptions;

struct ClipOptions
{
    /// Where the clip takes its memory, in one piece; not owned. Null: operator new.
    std::pmr::memory_resource* memory = nullptr;

    /// The axes of everything that players of the clip deliver. Costs nothing while playing.
    Frame frame = Frame::AsStored;
};

/// The animation of a scene, laid out for playing: what moves, and when. Never changes, so any number of players on any
/// threads may play it.
///
///     TEV2_PLAYBACK::Clip clip; // LoadClip fills it from a file: clip_file.h
///     clip = TEV2_PLAYBACK::Clip(scene, {.frame = TEV2_PLAYBACK::Frame::RightHandedYUp});
///     for (std::size_t node = 0; node < clip.NodeCount(); ++node)
///         std::printf("%s, below node %d\n", clip.NodeName(node).data(), clip.Parent(node));
///
/// Indices that are passed must be below the counts that the clip gives. Throws what the memory resource throws where
/// memory runs out. Clips are moved, not copied; one that was moved from may be assigned to or destroyed, nothing else.
class Clip
{
public:
    /// A clip without nodes.
    Clip() : Clip(TEV2_LOADER::TEV2()) {}

    /// The clip of a scene, which is not needed afterwards.
    explicit Clip(const TEV2_LOADER::TEV2& scene, const ClipOptions& options = {});

    std::size_t NodeCount() const;

    /// -1 for a node at top level.
    int Parent(std::size_t node) const;

    /// As UTF-8, with a zero after it. Valid while the clip lives.
    std::string_view NodeName(std::size_t node) const;

    /// The first node of this name, or -1. Takes the same time however many nodes there are.
    int FindNode(std::string_view utf8_name) const;

    /// The direction that is up in the world of the file. Unknown where the file is not as the exporter writes it
    /// (tev2_loader/up_axis.h).
    TEV2_LOADER::TEV2_UP_AXIS UpAxis() const;

    /// As in the options.
    Frame WorldFrame() const;

    /// Seconds: minimum and maximum, as the file has them.
    TEV2_LOADER::TEV2_FLOAT32_RANGE TimeRange() const;

    std::size_t CameraCount() const;

    /// As UTF-8, with a zero after it. Valid while the clip lives.
    std::string_view CameraName(std::size_t camera) const;

    /// The node that has the camera, or -1: the camera is placed in the world.
    int CameraNode(std::size_t camera) const;

    /// The first camera of this name, or -1.
    int FindCamera(std::string_view utf8_name) const;

    /// User properties of all nodes, then of all cameras.
    std::size_t PropertyCount() const;
    PropertyInfo PropertyAt(std::size_t index) const;

    /// The first property of an owner with this name and these values; none where there is no such property:
    ///
    ///     clip.FindProperty<float>(TEV2_PLAYBACK::OfNode(hips), "glow")
    template <typename Value>
    Property<Value> FindProperty(Owner owner, std::string_view utf8_name) const
    {
        return {FindProperty(owner, utf8_name, TypeOf(Property<Value>()))};
    }

    /// The texts of a property, as UTF-8 with a zero after each. Valid while the clip lives.
    std::size_t TextCount(Property<Texts> property) const;
    std::string_view Text(Property<Texts> property, std::size_t index) const;

    /// Bytes of memory, of the one piece that the clip has.
    std::size_t Size() const { return block_.Size(); }

private:
    friend class Player;
    friend TEV2_LOADER::Status LoadClipMemory(const void* bytes, std::size_t size, Clip& clip,
                                              const LoadClipOptions& options);
    friend const ClipData& DataOf(const Clip& clip) { return clip.Data(); }

    Clip(ClipSource source, const ClipOptions& options);

    std::uint32_t FindProperty(Owner owner, std::string_view utf8_name, PropertyType type) const;
    const ClipData& Data() const { return *reinterpret_cast<const ClipData*>(block_.Begin()); }

    Block block_;
};

} // namespace TEV2_PLAYBACK
