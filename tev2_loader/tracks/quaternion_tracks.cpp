#include "tev2_loader/tracks/quaternion_tracks.h"

#include "tev2_loader/math/detail/fast_math.h"

namespace TEV2_LOADER
{

TEV2_QUATERNION TEV2_ANIMATABLE_QUATERNION_LERP::Interpolate(const TEV2_QUATERNION& opening,
                                                             const TEV2_QUATERNION& closing, float fraction)
{
    return FastLerp(opening, closing, fraction);
}

TEV2_QUATERNION TEV2_ANIMATABLE_QUATERNION_SLERP::Interpolate(const TEV2_QUATERNION& opening,
                                                              const TEV2_QUATERNION& closing, float fraction)
{
    return FastSlerp()(opening, closing, fraction);
}

template class KeyedTrack<TEV2_ANIMATABLE_QUATERNION_LERP, TEV2_ANIMATABLE_QUATERNION, kLerpTrack>;
template class KeyedTrack<TEV2_ANIMATABLE_QUATERNION_SLERP, TEV2_ANIMATABLE_QUATERNION, kSlerpTrack>;

} // namespace TEV2_LOADER
