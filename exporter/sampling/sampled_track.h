#pragma once

#include "exporter/sampling/sampling_range.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <memory>
#include <utility>

namespace tev2_exporter
{

namespace sampled
{

/// One row for each family of tracks: the class that the exporter makes of it.
TEV2_LOADER::TEV2_ANIMATABLE_INT32_RLE ClassOf(TEV2_LOADER::TEV2_ANIMATABLE_INT32&);
TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_LINEAR ClassOf(TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32&);
TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR ClassOf(TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE&);
TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3_LINEAR ClassOf(TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3&);
TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_4_LINEAR ClassOf(TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_4&);
TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION_SLERP ClassOf(TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION&);

} // namespace sampled

template <typename Family>
using SampledTrack = decltype(sampled::ClassOf(std::declval<Family&>()));

/// Puts a new, empty track with room for the keys of `range` into `owner`, replacing the old one.
template <typename Family>
SampledTrack<Family>& MakeTrack(std::unique_ptr<Family>& owner, const SamplingRange& range)
{
    auto track = std::make_unique<SampledTrack<Family>>();
    track->Reserve(ReservedKeys(range));
    SampledTrack<Family>& made = *track;
    owner = std::move(track);
    return made;
}

/// The track that MakeTrack put into `owner`. Throws std::bad_cast for a track of another class.
template <typename Family>
SampledTrack<Family>& SampledIn(const std::unique_ptr<Family>& owner)
{
    return dynamic_cast<SampledTrack<Family>&>(*owner);
}

} // namespace tev2_exporter
