#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/tracks/keyed_track.h"

namespace TEV2_LOADER
{

// Tracks interpolated linearly, component by component. The family decides the arithmetic: none, offsets, or offsets
// and scaling.

template <typename Concrete, typename Family, std::uint32_t kKind>
class LinearTrack : public KeyedTrack<Concrete, Family, kKind>
{
public:
    using Value = typename Family::Value;

    static Value Interpolate(const Value& opening, const Value& closing, float fraction)
    {
        return opening + (closing - opening) * fraction;
    }
};

template <typename Concrete, typename Family, std::uint32_t kKind>
class OffsetLinearTrack : public LinearTrack<Concrete, Family, kKind>
{
public:
    using Value = typename Family::Value;

    Family& Add(const Value& offset) override
    {
        for (Value& value : this->m_values)
            value = value + offset;
        return *this;
    }

    Family& Subtract(const Value& offset) override { return Add(-offset); }
};

template <typename Concrete, typename Family, std::uint32_t kKind>
class ScalableLinearTrack : public OffsetLinearTrack<Concrete, Family, kKind>
{
public:
    using Value = typename Family::Value;

    Family& Scale(float factor) override
    {
        for (Value& value : this->m_values)
            value = value * factor;
        return *this;
    }

    Family& Divide(float divisor) override { return Scale(1.0f / divisor); }
};

class TEV2_ANIMATABLE_FLOAT32_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR, TEV2_ANIMATABLE_FLOAT32, kFloatTrack>
{
};

class TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR final
    : public OffsetLinearTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR, TEV2_ANIMATABLE_FLOAT32_RANGE,
                               kRangeTrack>
{
};

class TEV2_ANIMATABLE_COLOUR_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_COLOUR_LINEAR, TEV2_ANIMATABLE_COLOUR, kColourTrack>
{
};

class TEV2_ANIMATABLE_VECTOR_3_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR, TEV2_ANIMATABLE_VECTOR_3, kVector3Track>
{
};

class TEV2_ANIMATABLE_VECTOR_2_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR, TEV2_ANIMATABLE_VECTOR_2, kVector2Track>
{
};

class TEV2_ANIMATABLE_RECTF_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_RECTF_LINEAR, TEV2_ANIMATABLE_RECTF, kRectangleTrack>
{
};

class TEV2_ANIMATABLE_VECTOR_4_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR, TEV2_ANIMATABLE_VECTOR_4, kVector4Track>
{
};

class TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR final
    : public LinearTrack<TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR, TEV2_ANIMATABLE_BINORMAL_TANGENT,
                         kBinormalTangentTrack>
{
};

class TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR final
    : public ScalableLinearTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR, TEV2_ANIMATABLE_BOUNDING_BOX, kBoxTrack>
{
};

} // namespace TEV2_LOADER
