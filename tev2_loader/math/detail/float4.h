#pragma once

#include <cmath>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#define TEV2_HAS_SSE
#include <emmintrin.h>
#endif

namespace TEV2_LOADER
{

// Float4: arithmetic on four floats at once, each result bit-identical to the scalar one if the compiler does not
// contract multiplications and additions (-ffp-contract=off).

/// A quaternion, a row of a matrix: anything that consists of four floats.
template <typename Four>
concept FourFloats = sizeof(Four) == 4 * sizeof(float) && alignof(Four) == alignof(float);

/// Portable.
struct PlainFloat4
{
    float lanes[4];

    static PlainFloat4 Of(float a, float b, float c, float d) { return {{a, b, c, d}}; }
    static PlainFloat4 All(float a) { return {{a, a, a, a}}; }

    template <FourFloats Four>
    static PlainFloat4 Load(const Four& floats)
    {
        PlainFloat4 loaded;
        std::memcpy(loaded.lanes, &floats, sizeof loaded.lanes);
        return loaded;
    }

    template <FourFloats Four>
    void Store(Four& floats) const
    {
        std::memcpy(static_cast<void*>(&floats), lanes, sizeof lanes);
    }

    float First() const { return lanes[0]; }

    friend PlainFloat4 operator+(const PlainFloat4& left, const PlainFloat4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {{a + e, b + f, c + g, d + h}};
    }
    friend PlainFloat4 operator-(const PlainFloat4& left, const PlainFloat4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {{a - e, b - f, c - g, d - h}};
    }
    friend PlainFloat4 operator*(const PlainFloat4& left, const PlainFloat4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {{a * e, b * f, c * g, d * h}};
    }
    friend PlainFloat4 operator/(const PlainFloat4& left, const PlainFloat4& right)
    {
        const auto& [a, b, c, d] = left.lanes;
        const auto& [e, f, g, h] = right.lanes;
        return {{a / e, b / f, c / g, d / h}};
    }

    static PlainFloat4 Root(const PlainFloat4& of)
    {
        const auto& [a, b, c, d] = of.lanes;
        return {{std::sqrt(a), std::sqrt(b), std::sqrt(c), std::sqrt(d)}};
    }

    /// A bit for each lane in which left is above right.
    static unsigned Above(const PlainFloat4& left, const PlainFloat4& right)
    {
        unsigned above = 0;
        for (unsigned lane = 0; lane < 4; ++lane)
            above |= left.lanes[lane] > right.lanes[lane] ? 1u << lane : 0u;
        return above;
    }

    /// Lanes of `then` where left is above right, of `otherwise` elsewhere.
    static PlainFloat4 IfAbove(const PlainFloat4& left, const PlainFloat4& right, const PlainFloat4& then,
                               const PlainFloat4& otherwise)
    {
        PlainFloat4 chosen;
        for (int lane = 0; lane < 4; ++lane)
            chosen.lanes[lane] =
                left.lanes[lane] > right.lanes[lane] ? then.lanes[lane] : otherwise.lanes[lane];
        return chosen;
    }

    /// The same where they are equal.
    static PlainFloat4 IfEqual(const PlainFloat4& left, const PlainFloat4& right, const PlainFloat4& then,
                               const PlainFloat4& otherwise)
    {
        PlainFloat4 chosen;
        for (int lane = 0; lane < 4; ++lane)
            chosen.lanes[lane] =
                left.lanes[lane] == right.lanes[lane] ? then.lanes[lane] : otherwise.lanes[lane];
        return chosen;
    }

    /// Floats a and b of left, c and d of right.
    template <int a, int b, int c, int d>
    static PlainFloat4 Picked(const PlainFloat4& left, const PlainFloat4& right)
    {
        return {{left.lanes[a], left.lanes[b], right.lanes[c], right.lanes[d]}};
    }

    /// The last float, with -0 before it: adding -0 leaves every number unchanged, sign included.
    PlainFloat4 LastAlone() const { return {{-0.0f, -0.0f, -0.0f, lanes[3]}}; }
};

#if defined(TEV2_HAS_SSE)

/// SSE2.
struct SseFloat4
{
    __m128 lanes;

    static SseFloat4 Of(float a, float b, float c, float d) { return {_mm_set_ps(d, c, b, a)}; }
    static SseFloat4 All(float a) { return {_mm_set1_ps(a)}; }

    template <FourFloats Four>
    static SseFloat4 Load(const Four& floats)
    {
        SseFloat4 loaded;
        std::memcpy(&loaded.lanes, &floats, sizeof loaded.lanes);
        return loaded;
    }

    template <FourFloats Four>
    void Store(Four& floats) const
    {
        std::memcpy(static_cast<void*>(&floats), &lanes, sizeof lanes);
    }

    float First() const { return _mm_cvtss_f32(lanes); }

    friend SseFloat4 operator+(SseFloat4 left, SseFloat4 right)
    {
        return {_mm_add_ps(left.lanes, right.lanes)};
    }
    friend SseFloat4 operator-(SseFloat4 left, SseFloat4 right)
    {
        return {_mm_sub_ps(left.lanes, right.lanes)};
    }
    friend SseFloat4 operator*(SseFloat4 left, SseFloat4 right)
    {
        return {_mm_mul_ps(left.lanes, right.lanes)};
    }
    friend SseFloat4 operator/(SseFloat4 left, SseFloat4 right)
    {
        return {_mm_div_ps(left.lanes, right.lanes)};
    }

    static SseFloat4 Root(SseFloat4 of) { return {_mm_sqrt_ps(of.lanes)}; }

    static unsigned Above(SseFloat4 left, SseFloat4 right)
    {
        return static_cast<unsigned>(_mm_movemask_ps(_mm_cmpgt_ps(left.lanes, right.lanes)));
    }

    static SseFloat4 IfAbove(SseFloat4 left, SseFloat4 right, SseFloat4 then, SseFloat4 otherwise)
    {
        return Chosen(_mm_cmpgt_ps(left.lanes, right.lanes), then, otherwise);
    }

    static SseFloat4 IfEqual(SseFloat4 left, SseFloat4 right, SseFloat4 then, SseFloat4 otherwise)
    {
        return Chosen(_mm_cmpeq_ps(left.lanes, right.lanes), then, otherwise);
    }

    template <int a, int b, int c, int d>
    static SseFloat4 Picked(SseFloat4 left, SseFloat4 right)
    {
        return {_mm_shuffle_ps(left.lanes, right.lanes, _MM_SHUFFLE(d, c, b, a))};
    }

    SseFloat4 LastAlone() const
    {
        const __m128 last = _mm_castsi128_ps(_mm_set_epi32(-1, 0, 0, 0));
        return {_mm_or_ps(_mm_and_ps(lanes, last), _mm_set_ps(0.0f, -0.0f, -0.0f, -0.0f))};
    }

private:
    static SseFloat4 Chosen(__m128 which, SseFloat4 then, SseFloat4 otherwise)
    {
        return {_mm_or_ps(_mm_and_ps(which, then.lanes), _mm_andnot_ps(which, otherwise.lanes))};
    }
};

using Float4 = SseFloat4;

#else

using Float4 = PlainFloat4;

#endif

/// Floats a and b of left, c and d of right.
template <int a, int b, int c, int d>
Float4 Pick(Float4 left, Float4 right)
{
    return Float4::Picked<a, b, c, d>(left, right);
}

template <int a, int b, int c, int d>
Float4 Pick(Float4 from)
{
    return Float4::Picked<a, b, c, d>(from, from);
}

} // namespace TEV2_LOADER
