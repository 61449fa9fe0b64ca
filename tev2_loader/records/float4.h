#pragma once

#if defined(__SSE2__) || defined(_M_X64)
#define TEV2_USES_SSE
#include <emmintrin.h>
#endif

namespace TEV2_LOADER
{

#if defined(TEV2_USES_SSE)

/// Four floats worked on at once. Every operation gives for each of them, to the last bit, what it gives for that
/// float alone.
struct Float4
{
    __m128 lanes;

    static Float4 Load(const float* floats) { return {_mm_loadu_ps(floats)}; }
    static Float4 Of(float a, float b, float c, float d) { return {_mm_set_ps(d, c, b, a)}; }
    void Store(float* floats) const { _mm_storeu_ps(floats, lanes); }
    float First() const { return _mm_cvtss_f32(lanes); }

    friend Float4 operator+(Float4 left, Float4 right) { return {_mm_add_ps(left.lanes, right.lanes)}; }
    friend Float4 operator-(Float4 left, Float4 right) { return {_mm_sub_ps(left.lanes, right.lanes)}; }
    friend Float4 operator*(Float4 left, Float4 right) { return {_mm_mul_ps(left.lanes, right.lanes)}; }

    /// Floats a and b of left, c and d of right.
    template <int a, int b, int c, int d>
    friend Float4 Pick(Float4 left, Float4 right)
    {
        return {_mm_shuffle_ps(left.lanes, right.lanes, _MM_SHUFFLE(d, c, b, a))};
    }

    /// The last one, and -0 before it: adding that leaves every number as it is, its sign included.
    friend Float4 LastAlone(Float4 from)
    {
        const __m128 last = _mm_castsi128_ps(_mm_set_epi32(-1, 0, 0, 0));
        return {_mm_or_ps(_mm_and_ps(from.lanes, last), _mm_set_ps(0.0f, -0.0f, -0.0f, -0.0f))};
    }
};

#else

struct Float4
{
    float lanes[4];

    static Float4 Load(const float* floats) { return {floats[0], floats[1], floats[2], floats[3]}; }
    static Float4 Of(float a, float b, float c, float d) { return {a, b, c, d}; }
    void Store(float* floats) const
    {
        for (int i = 0; i < 4; ++i)
            floats[i] = lanes[i];
    }
    float First() const { return lanes[0]; }

    friend Float4 operator+(const Float4& left, const Float4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {a + e, b + f, c + g, d + h};
    }
    friend Float4 operator-(const Float4& left, const Float4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {a - e, b - f, c - g, d - h};
    }
    friend Float4 operator*(const Float4& left, const Float4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {a * e, b * f, c * g, d * h};
    }
    template <int a, int b, int c, int d>
    friend Float4 Pick(const Float4& left, const Float4& right)
    {
        return {left.lanes[a], left.lanes[b], right.lanes[c], right.lanes[d]};
    }
    friend Float4 LastAlone(const Float4& from) { return {-0.0f, -0.0f, -0.0f, from.lanes[3]}; }
};

#endif

template <int a, int b, int c, int d>
Float4 Pick(Float4 from)
{
    return Pick<a, b, c, d>(from, from);
}

} // namespace TEV2_LOADER
