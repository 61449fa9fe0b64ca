#pragma once

/// Rotations as glTF takes them: of length 1, and between two keys along the shorter arc.

#include "gltf/convert/to_gltf_tracks.h"

namespace tev2_gltf
{

/// Whether the length is 1 within what rounding to single precision leaves.
bool IsUnit(const TEV2_LOADER::TEV2_QUATERNION& rotation);

/// The rotation itself where IsUnit, otherwise divided by its length; the identity for one without a length.
TEV2_LOADER::TEV2_QUATERNION UnitRotation(const TEV2_LOADER::TEV2_QUATERNION& rotation);

/// The keys of a rotation track in a form that spherical interpolation plays as SetTime does: divided by their lengths,
/// with keys in between where the track takes the longer arc. Reports what was not of length 1, and interpolation
/// that is not spherical.
Keys<TEV2_LOADER::TEV2_QUATERNION>
RotationKeys(const std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION>& track, double shift,
             const std::string& where, ConversionReport& report);

} // namespace tev2_gltf
