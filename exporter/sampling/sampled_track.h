#pragma once

// The tracks that the exporter makes. A record owns a track by its family; the exporter always puts the same
// concrete class behind it, so it may ask for that class back.

#include "exporter/sampling/sampling_range.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <memory>

namespace tev2_exporter
{

template <typename Family>
struct SampledTrackOf;

template <>
struct SampledTrackOf<TEV2_LOADER::TEV2_ANIMATABLE_INT32>
{
    using Type = TEV2_LOADER::TEV2_ANIMATABLE_INT32_RLE;
};

template <>
struct SampledTrackOf<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32>
{
    using Type = TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_LINEAR;
};

template <>
struct SampledTrackOf<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE>
{
    using Type = TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR;
};

template <>
struct SampledTrackOf<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3>
{
    using Type = TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3_LINEAR;
};

template <>
struct SampledTrackOf<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_4>
{
    using Type = TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_4_LINEAR;
};

template <>
struct SampledTrackOf<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION>
{
    using Type = TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION_SLERP;
};

template <typename Family>
using SampledTrack = typename SampledTrackOf<Family>::Type;

// Puts a new, empty track with room for the keys of `range` into `owner`, in place of what it held.
template <typename Family>
SampledTrack<Family>& MakeTrack(std::unique_ptr<Family>& owner, const SamplingRange& range)
{
    auto track = std::make_unique<SampledTrack<Family>>();
    track->Reserve(ReservedKeys(range));
    SampledTrack<Family>& made = *track;
    owner = std::move(track);
    return made;
}

// The track that MakeTrack put into `owner`.
template <typename Family>
SampledTrack<Family>& Sampled(const std::unique_ptr<Family>& owner)
{
    return static_cast<SampledTrack<Family>&>(*owner);
}

} // namespace tev2_exporter
