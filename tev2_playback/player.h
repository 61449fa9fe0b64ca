#pragma once

#include "tev2_playback/clip.h"
#include "tev2_playback/transform.h"

#include <span>

namespace TEV2_PLAYBACK
{

struct Place;

/// Plays a clip: one instance of a character at a time of its own. The clip must outlive it. Players of one clip may be
/// used on any threads, each by one thread at a time. Allocates when it is made or copied, never afterwards.
///
///     TEV2_PLAYBACK::Player player(clip);
///     player.SetTime(0.5f);
///     player.World()[hips]; // metres
class Player
{
public:
    /// At the start of the clip's time range. `memory` as in ClipOptions.
    explicit Player(const Clip& clip, std::pmr::memory_resource* memory = nullptr);

    /// Goes to a time in seconds.
    void SetTime(float seconds);
    float Time() const { return time_; }

    /// The transform of each node from its own axes to the world, at the present time. Valid until the time changes.
    std::span<const TEV2_LOADER::TEV2_MATRIX_3X4> World();

    /// Writes the transform of each node relative to its parent at the present time, as many as there is room for... one each.
    void Sample(std::span<Transform> pose);

private:
    void Seek();

    const ClipData* clip_;
    Block block_;
    std::span<TEV2_LOADER::TEV2_MATRIX_3X4> worlds_;
    Place* places_ = nullptr; ///< of each clock
    float time_ = 0.0f;
    bool sought_ = false;
    bool has_worlds_ = false;
};

} // namespace TEV2_PLAYBACK
