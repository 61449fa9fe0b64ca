#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/math/values.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"
#include "tev2_playback/detail/seek.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace TEV2_PLAYBACK
{

/// The values of a channel, whose memory is its words.
template <typename Value>
struct ChannelValues
{
    const std::uint32_t* words = nullptr;
    std::size_t count = 0;

    std::size_t size() const { return count; }
    Value operator[](std::size_t index) const
    {
        static_assert(std::is_trivially_copyable_v<Value> && sizeof(Value) % sizeof *words == 0);
        Value value;
        std::memcpy(static_cast<void*>(&value), words + index * (sizeof value / sizeof *words), sizeof value);
        return value;
    }
};

/// The value that a track has at a place, whatever its number of values is. `values[i]` gives value i;
/// interpolate(opening, closing, fraction) is that of the track's kind.
template <typename Value, typename Values, typename Interpolate>
Value ValueAt(const Values& values, const Place& place, const Interpolate& interpolate)
{
    const std::size_t count = values.size();
    if (count < 2)
        return count == 0 ? Value{} : values[0];
    if (place.key + std::size_t{1} >= count)
        return interpolate(values[count - 2], values[count - 1], 1.0f);
    return interpolate(values[place.key], values[place.key + std::size_t{1}], place.fraction);
}

/// As the linear tracks interpolate, component by component.
struct Linear
{
    template <typename Value>
    Value operator()(const Value& opening, const Value& closing, float fraction) const
    {
        return opening + (closing - opening) * fraction;
    }
};

struct Stepped
{
    std::int32_t operator()(std::int32_t opening, std::int32_t closing, float fraction) const
    {
        return TEV2_LOADER::TEV2_ANIMATABLE_INT32_RLE::Interpolate(opening, closing, fraction);
    }
};

/// As the rotation tracks of a kind interpolate.
struct Turning
{
    std::uint32_t kind;

    TEV2_LOADER::TEV2_QUATERNION operator()(const TEV2_LOADER::TEV2_QUATERNION& opening,
                                            const TEV2_LOADER::TEV2_QUATERNION& closing, float fraction) const
    {
        using namespace TEV2_LOADER;
        return kind == kLerpTrack ? TEV2_ANIMATABLE_QUATERNION_LERP::Interpolate(opening, closing, fraction)
                                  : TEV2_ANIMATABLE_QUATERNION_SLERP::Interpolate(opening, closing, fraction);
    }
};

} // namespace TEV2_PLAYBACK
