#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_playback/clip.h"
#include "tev2_playback/transform.h"

#include <cstddef>
#include <span>

// Poses: one Transform for each node of a clip, in the clip's order. Any array of them will do; nothing here allocates.
//
//     std::vector<TEV2_PLAYBACK::Transform> pose(clip.NodeCount()), other(clip.NodeCount());
//     walk.Sample(pose);
//     run.Sample(other);
//     TEV2_PLAYBACK::Blend(pose, other, 0.3f);           // three parts of ten run
//     TEV2_PLAYBACK::ToWorld(clip, pose, matrices);
//
// Several poses are mixed by weights a, b, c by blending them in one after another: the second with b / (a + b), the
// third with c / (a + b + c).
//
// Functions work on as many nodes as all their arrays have; the rest of the output is not touched. Poses that are mixed
// have to come from clips of one skeleton, the same nodes in the same order; nothing checks that. Outputs may be the
// memory of inputs. A mask has a factor for each node, by which the weight is multiplied; an empty mask leaves the
// weight as it is. Weights are not limited to 0 to 1. Rotations need not be of length 1.

namespace TEV2_PLAYBACK
{

/// Moves a pose towards another: by 0 not at all, by 1 onto it, both to the last bit; otherwise
///
///     translation, scale: to + (from - to) * weight
///     rotation:           normalised(to + (from - to) * weight), with -from for from where their dot is negative
///
/// Where that rotation has no length or is not finite, that of `to` remains.
void Blend(std::span<Transform> to, std::span<const Transform> from, float weight,
           std::span<const float> mask = {});

/// Adds what Difference gave. A weight of 0 changes nothing, to the last bit; otherwise
///
///     translation: to + delta * weight
///     scale:       to * (1 + (delta - 1) * weight)
///     rotation:    normalised(identity + (delta - identity) * weight) * to, with -delta where delta.w is negative
///
/// A delta's rotation turns about the axes of the parent, in which translations are, too. Where the factor of `to` has
/// no length or is not finite, the rotation of `to` remains.
void Add(std::span<Transform> to, std::span<const Transform> delta, float weight,
         std::span<const float> mask = {});

/// What has to be added to a reference, with weight 1, to get a pose but for rounding:
///
///     translation: pose - reference
///     scale:       pose / reference; 1 where the reference's is 0
///     rotation:    normalised(pose * conjugate(reference)); the identity where that has no length or is not finite
void Difference(std::span<const Transform> pose, std::span<const Transform> reference,
                std::span<Transform> out);

/// Sets the factors of a node and of all nodes below it; others stay. A mask for an upper body:
///
///     std::vector<float> mask(clip.NodeCount(), 0.0f);
///     MaskBelow(clip, spine, 1.0f, mask);
///
/// Nodes whose parents come after them count as being at top level. A node that the clip does not have changes nothing.
void MaskBelow(const Clip& clip, std::size_t node, float factor, std::span<float> mask);

/// World matrices of a pose, in the clip's frame. Those of a pose that a player has sampled are Player::World's, to the
/// last bit. A node whose parent comes after it is placed as in Player::World.
void ToWorld(const Clip& clip, std::span<const Transform> pose,
             std::span<TEV2_LOADER::TEV2_MATRIX_3X4> world);

} // namespace TEV2_PLAYBACK
