#pragma once

/// Keys of glTF as tracks.

#include "gltf/convert/exchange.h"
#include "gltf/convert/from_context.h"
#include "gltf/key_track.h"
#include "tev2_loader/tracks/animatable.h"

#include <memory>
#include <string>
#include <vector>

namespace tev2_gltf
{

/// Where keys come from, for the report.
struct KeySource
{
    gltf::Place place; // of the animation
    std::string what;  // `rotation of "Hips"`
};

/// Keys between which values change evenly, element by element.
struct StraightKeys
{
    std::vector<float> times; // ascending
    std::vector<double> values;
    std::size_t width = 1;
};

/// Steps become two keys, the earlier one at the next smaller time; cubic splines as many as keep the value within
/// 0.0001 of the curve. Keys at the time of the one before are dropped.
StraightKeys MakeStraight(FromContext& context, const gltf::KeyTrack& keys, bool is_rotation,
                          const KeySource& source);

/// Of translations, with the exchange of the node's parent.
std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3>
TranslationTrack(const StraightKeys& keys, Exchange parent, const gltf::Place& place);
std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3> ScaleTrack(const StraightKeys& keys, Exchange own,
                                                                  const gltf::Place& place);

/// Continuous, without unneeded changes of the quaternions: only those that are not of length 1 are divided.
std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION> RotationTrack(const FromContext& context,
                                                                       const StraightKeys& keys,
                                                                       Exchange parent, Exchange own,
                                                                       const KeySource& source);

/// Of the weight of one morph target.
std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32>
WeightTrack(const StraightKeys& keys, std::size_t target, const gltf::Place& place);

/// A rotation x, y, z, w in single precision. One whose length is off by more than rounding is divided by it, one
/// without a length becomes none; `changed` counts both.
TEV2_QUATERNION UnitRotation(std::span<const double> rotation, std::size_t& changed);

} // namespace tev2_gltf
