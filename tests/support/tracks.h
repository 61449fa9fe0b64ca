#pragma once

#include "tests/support/bytes.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <initializer_list>
#include <memory>
#include <utility>

namespace tv2_tests
{

/// A track of a concrete class with these keys:
///     MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 1.0f}, {1.0f, 2.0f}})
template <typename Track>
std::unique_ptr<Track> MakeTrack(std::initializer_list<std::pair<float, typename Track::Value>> keys)
{
    auto track = std::make_unique<Track>();
    for (const auto& [time, value] : keys)
        track->Append(time, value);
    return track;
}

/// A track with these two values at 0.5 and 2.5 seconds.
template <typename Track>
std::unique_ptr<Track> SampleTrack(const typename Track::Value& first, const typename Track::Value& last)
{
    return MakeTrack<Track>({{0.5f, first}, {2.5f, last}});
}

/// How such a track is stored as an optional part of a record.
inline Bytes SampleTrackBytes(std::uint32_t kind, const Bytes& values)
{
    return Bytes().U32({1, kind, 0}).F32({0.0f}).U32(2).F32({0.5f, 2.5f}).U32(2).Append(values);
}

/// A FLOAT32 track of two values.
inline std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32> FloatTrack(float first, float last)
{
    return SampleTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_LINEAR>(first, last);
}

inline Bytes FloatTrackBytes(float first, float last)
{
    return SampleTrackBytes(0, Bytes().F32({first, last}));
}

/// A track of ranges: the second is the first one turned round.
inline std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE> RangeTrack(float first, float last)
{
    return SampleTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({first, last}, {last, first});
}

inline Bytes RangeTrackBytes(float first, float last)
{
    return SampleTrackBytes(1, Bytes().F32({first, last, last, first}));
}

/// A track of colours, which differ in red.
inline std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_COLOUR> ColourTrack(float first, float last)
{
    return SampleTrack<TEV2_LOADER::TEV2_ANIMATABLE_COLOUR_LINEAR>({first, 2, 3, 1}, {last, 2, 3, 1});
}

inline Bytes ColourTrackBytes(float first, float last)
{
    return SampleTrackBytes(2, Bytes().F32({first, 2, 3, 1, last, 2, 3, 1}));
}

} // namespace tv2_tests
