#pragma once

// The keys of any track, without knowing its class.
//
//     #include "tev2_loader/tracks/visit_keys.h"
//
//     TEV2_LOADER::VisitKeys(track, [](std::span<const float> times, auto values) {
//         std::printf("%zu keys", times.size());
//         if constexpr (std::is_same_v<typename decltype(values)::value_type, TEV2_LOADER::TEV2_VECTOR_3>)
//             for (const TEV2_LOADER::TEV2_VECTOR_3& value : values)
//                 std::printf(" (%g, %g, %g)", value.x, value.y, value.z);
//     });

#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <span>
#include <type_traits>

namespace TEV2_LOADER
{

/// Every concrete track: the one list that Create and VisitKeys follow.
using AllTracks =
    TEV2_CLASSES<TEV2_ANIMATABLE, TEV2_ANIMATABLE_FLOAT32_LINEAR, TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR,
                 TEV2_ANIMATABLE_COLOUR_LINEAR, TEV2_ANIMATABLE_VECTOR_3_LINEAR,
                 TEV2_ANIMATABLE_VECTOR_2_LINEAR, TEV2_ANIMATABLE_QUATERNION_LERP,
                 TEV2_ANIMATABLE_QUATERNION_SLERP, TEV2_ANIMATABLE_RECTF_LINEAR, TEV2_ANIMATABLE_INT32_RLE,
                 TEV2_ANIMATABLE_VECTOR_4_LINEAR, TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR,
                 TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>;

AllTracks ClassesOf(const TEV2_ANIMATABLE&);

/// Calls visitor(times, values) with spans of the track's times in seconds and of its values: floats, 32-bit integers
/// or one of the value types of math/values.h. The visitor takes any of them (`auto values`); a track read from a file
/// may have more times than values, or fewer.
template <typename Visitor>
void VisitKeys(const TEV2_ANIMATABLE& track, Visitor&& visitor)
{
    AllTracks::VisitAs(track,
                       [&](const auto& concrete)
                       {
                           using Value = typename std::remove_cvref_t<decltype(concrete)>::Value;
                           visitor(std::span<const float>(track.m_times),
                                   std::span<const Value>(concrete.m_values));
                       });
}

} // namespace TEV2_LOADER
