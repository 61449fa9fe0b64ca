#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_playback/clip.h"
#include "tev2_playback/playhead.h"
#include "tev2_playback/transform.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>

namespace TEV2_PLAYBACK
{

/// How a node moves a character, so that a walk which loops goes on and on: the movement of the character from call to
/// call, and poses without it.
///
///     TEV2_PLAYBACK::RootMotion motion(clip, hips);
///     std::vector<TEV2_PLAYBACK::Transform> pose(clip.NodeCount());
///     TEV2_LOADER::TEV2_MATRIX_3X4 character; // where it begins
///     for (int frame = 0; frame < 60; ++frame)
///     {
///         player.Advance(1.0 / 60.0);
///         player.Sample(pose);
///         const TEV2_PLAYBACK::Transform step = motion.Movement(pose, player.GetPlayhead().Played());
///         character = Product(character, RigidMatrix(step.rotation, step.translation));
///         motion.Hold(pose);
///         ToWorld(clip, pose, matrices); // draw Product(character, matrices[node])
///     }
///
/// Choose the topmost node that moves. A movement is in the axes of the character, which are those of the clip's world,
/// whatever the axes of the node are: a character that walks towards +Z in the clip has movements along +Z. It leads
/// from the earlier place of the character to the later one, as rigid transforms: earlier * movement = later. Played
/// once from the start, `character * world` of the held pose is the clip's own World(). The whole movement is taken
/// out: a node that bobs and sways makes the character do so.
///
/// Scale is not part of a movement, and rotations count as made of length 1. The nodes above are taken to stay as they
/// are at the start of the time range, with one scale along all axes. A movement that is not finite is none at all.
///
/// Of one player: make one for a clip, and copies of it for other players. Small; takes memory while it is made only,
/// and gives it back. The clip is not needed afterwards.
class RootMotion
{
public:
    /// The first movement begins where the node is at the start of the clip's time range. A node that the clip does not
    /// have, or a pose that is passed later, does not move. `memory` as in ClipOptions.
    RootMotion(const Clip& clip, std::size_t node, std::pmr::memory_resource* memory = nullptr);

    /// From the last call, or Restart, to this one, at which the node is as in `pose`. Call it after every Advance:
    /// `played` is what that one has played. Across the ends of a loop the movement goes on, forward and backward, any
    /// number of lengths at once.
    Transform Movement(std::span<const Transform> pose, const PlayedSpan& played);

    /// The next movement begins where the node is in `pose`. After SetTime.
    void Restart(std::span<const Transform> pose);

    /// Puts the node where it is at the start of the clip's time range.
    void Hold(std::span<Transform> pose) const;

private:
    struct Rigid
    {
        double rotation[4] = {0.0, 0.0, 0.0, 1.0};
        double translation[3] = {};
    };

    static Rigid RigidOf(const Transform& transform);
    static Rigid Product(const Rigid& left, const Rigid& right);
    static Rigid Inverse(const Rigid& rigid);
    static Rigid Power(Rigid rigid, std::uint64_t exponent);
    Transform InWorld(const Rigid& movement) const;

    std::size_t node_;
    Transform start_;
    TEV2_LOADER::TEV2_MATRIX_3X4 parent_; ///< from the axes of the parent to the world
    Rigid lap_; ///< from the start of the range to its end, in the axes of the parent
    Rigid earlier_;
};

} // namespace TEV2_PLAYBACK
