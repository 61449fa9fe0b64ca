#pragma once

#include "tev2_playback/camera.h"
#include "tev2_playback/clip.h"
#include "tev2_playback/events.h"
#include "tev2_playback/playhead.h"
#include "tev2_playback/property.h"
#include "tev2_playback/transform.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>

namespace TEV2_PLAYBACK
{

struct Channel;
struct Place;

/// Plays a clip: one instance of a character at a time of its own.
///
///     const TEV2_PLAYBACK::Clip clip(scene);
///     const int hips = clip.FindNode("Hips");
///     TEV2_PLAYBACK::Player player(clip);
///     player.SetRepeat(TEV2_PLAYBACK::Repeat::Loop);
///     for (int frame = 0; hips >= 0 && frame < 120; ++frame)
///     {
///         player.Advance(1.0 / 60.0);
///         const TEV2_LOADER::TEV2_MATRIX_3X4& world = player.World()[static_cast<std::size_t>(hips)];
///         std::printf("%g m up at %g s\n", static_cast<double>(world.m[1][3]), static_cast<double>(player.Time()));
///     }
///
/// What it gives depends on the clip and the time alone, not on the times before: the numbers of a scene just loaded,
/// its cursors at their first keys, after one SetTime. At a key's own time that is the end of the segment before the
/// key. (A scene that plays backward gives the next segment's beginning there, which may differ in the last bit.)
///
/// The clip must outlive it; the Clip object may be moved meanwhile. Players of one clip may be used on any threads,
/// each by one thread at a time. Takes one piece of memory when it is made or copied, and none afterwards.
class Player
{
public:
    /// At the start of the clip's time range, at speed 1, Repeat::Once. `memory` as in ClipOptions.
    explicit Player(const Clip& clip, std::pmr::memory_resource* memory = nullptr);
    explicit Player(const Clip&& clip, std::pmr::memory_resource* memory = nullptr) = delete;

    /// A copy is at the same time and goes on alone. Its memory is from `memory`, or from the same resource as the
    /// other's. Assignment keeps the resource, and the memory if both play the same clip.
    Player(const Player& other) : Player(other, nullptr) {}
    Player(const Player& other, std::pmr::memory_resource* memory);
    Player& operator=(const Player& other);

    /// Takes the memory along, with its resource. The other may then be assigned to or destroyed, nothing else.
    Player(Player&& other) noexcept = default;
    Player& operator=(Player&& other) noexcept = default;

    // The clock, described in playhead.h.

    void SetRepeat(Repeat repeat) { playhead_.SetRepeat(repeat); }
    void SetSpeed(double speed) { playhead_.SetSpeed(speed); }

    /// Plays on by `seconds` times the speed, within the clip's time range; Events and CameraCuts say what happened.
    void Advance(double seconds);

    /// Goes to any time in seconds, inside the clip's range or not. A jump: there are no events.
    void SetTime(float seconds);

    float Time() const { return playhead_.Time(); }
    const Playhead& GetPlayhead() const { return playhead_; }

    // Poses.

    /// The transform of each node from its own axes to the world, at the present time. Valid until the time changes.
    std::span<const TEV2_LOADER::TEV2_MATRIX_3X4> World();

    /// Writes the transform of each node relative to its parent at the present time, or nothing where there is not room
    /// for all of them.
    void Sample(std::span<Transform> pose);

    // Cameras and properties.

    /// A camera of the clip at the present time. Where there is no such camera: one without a lens, at the origin.
    CameraView Camera(std::size_t camera);

    /// The camera that the clip's switcher shows, or -1: there is no switcher, or it shows none of the clip's cameras.
    int ActiveCamera() const;

    /// A property at the present time, as the scene's own track gives it. Zero where there is no such property, or it
    /// has no value.
    std::int32_t Value(Property<std::int32_t> property) const;
    float Value(Property<float> property) const;
    TEV2_LOADER::TEV2_VECTOR_3 Value(Property<TEV2_LOADER::TEV2_VECTOR_3> property) const;
    TEV2_LOADER::TEV2_VECTOR_4 Value(Property<TEV2_LOADER::TEV2_VECTOR_4> property) const;

    /// What a property did during the last Advance, in order. None after SetTime. See events.h.
    EventList<std::int32_t> Events(Property<std::int32_t> property) const;
    EventList<float> Events(Property<float> property) const;
    EventList<TEV2_LOADER::TEV2_VECTOR_3> Events(Property<TEV2_LOADER::TEV2_VECTOR_3> property) const;
    EventList<TEV2_LOADER::TEV2_VECTOR_4> Events(Property<TEV2_LOADER::TEV2_VECTOR_4> property) const;

    /// What the switcher did during the last Advance. Its numbers are those of the file: check that they are cameras of
    /// the clip.
    EventList<std::int32_t> CameraCuts() const;

private:
    void PlaceArrays();
    void KeepIfAt(float time);
    void Seek();
    Place PlaceOn(const Channel& channel) const;
    std::uint32_t ChannelOf(std::uint32_t property, PropertyType type) const;
    template <typename Value>
    Value ValueOf(std::uint32_t channel) const;
    template <typename Value>
    EventList<Value> EventsOf(std::uint32_t channel) const;

    const ClipData* clip_;
    Block block_;
    std::span<TEV2_LOADER::TEV2_MATRIX_3X4> worlds_;
    Place* places_ = nullptr; ///< of each clock of the nodes
    Playhead playhead_;
    bool sought_ = false;
    bool has_worlds_ = false;
};

} // namespace TEV2_PLAYBACK
