#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/tracks/keyed_track.h"

namespace TEV2_LOADER
{

/// The Hamilton product left * right: the rotation that applies right first.
TEV2_QUATERNION Product(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right);

/// The dot product of two rotations as four-component vectors.
inline float Dot(const TEV2_QUATERNION& left, const TEV2_QUATERNION& right)
{
    const Float4 products = Float4::Load(left) * Float4::Load(right);
    return products.First() + Pick<3, 3, 3, 3>(products).First() + Pick<1, 1, 1, 1>(products).First() +
           Pick<2, 2, 2, 2>(products).First();
}

/// Between two rotations, each component on its own.
inline TEV2_QUATERNION Lerp(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing, float fraction)
{
    const Float4 from = Float4::Load(opening);
    const Float4 way = Float4::Load(closing) - from;
    TEV2_QUATERNION rotation;
    (from + way * Float4::All(fraction)).Store(rotation);
    return rotation;
}

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

/// Interpolates the four components on their own; the result is not normalised.
class TEV2_ANIMATABLE_QUATERNION_LERP final
    : public QuaternionTrack<TEV2_ANIMATABLE_QUATERNION_LERP, kLerpTrack>
{
public:
    static TEV2_QUATERNION Interpolate(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing,
                                       float fraction)
    {
        return Lerp(opening, closing, fraction);
    }
};

/// Interpolates along the arc between two keys; linearly, without normalising, where their dot product is
/// above 0.99. A negative dot product goes the long way round: MakeContinuous prevents that.
class TEV2_ANIMATABLE_QUATERNION_SLERP final
    : public QuaternionTrack<TEV2_ANIMATABLE_QUATERNION_SLERP, kSlerpTrack>
{
public:
    static TEV2_QUATERNION Interpolate(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing,
                                       float fraction)
    {
        const float dot = Dot(opening, closing);
        return dot > kNearlyParallel ? Lerp(opening, closing, fraction)
                                     : AlongArc(opening, closing, dot, fraction);
    }

private:
    static constexpr float kNearlyParallel = 0.99f;

    static TEV2_QUATERNION AlongArc(const TEV2_QUATERNION& opening, const TEV2_QUATERNION& closing, float dot,
                                    float fraction);
};

} // namespace TEV2_LOADER
