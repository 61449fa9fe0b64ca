#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_playback/detail/seek.h"
#include "tev2_playback/detail/skeleton_data.h"

// The pose of a skeleton at the places of its clocks, which are those of all nodes.

namespace TEV2_PLAYBACK
{

/// Forms the world matrices of all nodes that move. The others are there already, and those after them: the matrices
/// that some nodes have for a parent.
void EvaluateWorlds(const SkeletonData& skeleton, const Place* places, TEV2_LOADER::TEV2_MATRIX_3X4* worlds);

/// Writes the transforms of all nodes.
void EvaluateTransforms(const SkeletonData& skeleton, const Place* places, Transform* transforms);

} // namespace TEV2_PLAYBACK
