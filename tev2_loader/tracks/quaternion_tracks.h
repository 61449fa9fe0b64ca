#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/tracks/keyed_track.h"

namespace TEV2_LOADER
{

template <typename Concrete, std::uint32_t kKind>
class QuaternionTrack : public KeyedTrack<Concrete, TEV2_ANIMATABLE_QUATERNION, kKind>
{
public:
    TEV2_ANIMATABLE_QUATERNION& Multiply(const TEV2_QUATERNION& rotation) override
    {
        for (TEV2_QUATERNION& key : this->m_values)
            key = Product(key, rotation);
        return *this;
    }

    TEV2_ANIMATABLE_QUATERNION& MakeContinuous() override
    {
        for (std::size_t index = 1; index < this->m_values.size(); ++index)
        {
            TEV2_QUATERNION& key = this->m_values[index];
            if (Dot(this->m_values[index - 1], key) < 0.0f)
                key = -key;
        }
        return *this;
    }
};

/// Interpolates the four components independently; the result is not normalised.
class TEV2_ANIMATABLE_QUATERNION_LERP final
    : public QuaternionTrack<TEV2_ANIMATABLE_QUATERNION_LERP, kLerpTrack>
{
public:
    static TEV2_QUATERNION Interpolate(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing,
                                       float fraction);
};

/// Interpolates along the arc between two keys; linearly, without normalising, where their dot product is
/// above 0.99. A negative dot product goes the long way round: MakeContinuous prevents that.
class TEV2_ANIMATABLE_QUATERNION_SLERP final
    : public QuaternionTrack<TEV2_ANIMATABLE_QUATERNION_SLERP, kSlerpTrack>
{
public:
    static TEV2_QUATERNION Interpolate(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing,
                                       float fraction);
};

// Compiled into the library, where interpolation can be inlined.
extern template class KeyedTrack<TEV2_ANIMATABLE_QUATERNION_LERP, TEV2_ANIMATABLE_QUATERNION, kLerpTrack>;
extern template class KeyedTrack<TEV2_ANIMATABLE_QUATERNION_SLERP, TEV2_ANIMATABLE_QUATERNION, kSlerpTrack>;

} // namespace TEV2_LOADER
