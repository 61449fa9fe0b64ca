#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/tracks/keyed_track.h"

namespace TEV2_LOADER
{

/// Whole numbers, each valid from its key until the cursor is exactly at the next. Equal neighbours remain separate
/// keys.
class TEV2_ANIMATABLE_INT32_RLE final
    : public KeyedTrack<TEV2_ANIMATABLE_INT32_RLE, TEV2_ANIMATABLE_INT32, kIntegerTrack>
{
public:
    static std::int32_t Interpolate(std::int32_t opening, std::int32_t closing, float fraction)
    {
        return fraction == 1.0f ? closing : opening;
    }

    TEV2_ANIMATABLE_INT32& Add(const std::int32_t&) override { return *this; }
    TEV2_ANIMATABLE_INT32& Subtract(const std::int32_t&) override { return *this; }
    TEV2_ANIMATABLE_INT32& Scale(float) override { return *this; }
    TEV2_ANIMATABLE_INT32& Divide(float) override { return *this; }
};

} // namespace TEV2_LOADER
