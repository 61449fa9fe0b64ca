#pragma once

#include "exporter/sampling/rigid_transform.h"

#include <fbsdk/fbsdk.h>

namespace tev2_exporter
{

inline constexpr float kMetresPerCentimetre = 0.01f;

/// The evaluated global transformation of `model` in the frame of the file: metres, Z mirrored, scale
/// discarded. The order of the basis columns makes the mirrored basis a proper rotation
/// again: X, Z, Y for a model; Z, Y, X for a camera, whose roll and turn about its interest are applied on
/// top. An axis of length 0 gives NaN, which is passed on.
TEV2_MATRIX_3X4 ConvertGlobalMatrix(FBModel& model);

} // namespace tev2_exporter
