#include "text/sha256_block.h"

#include <bit>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
#endif

namespace
{

alignas(16) constexpr std::array<std::uint32_t, 64> kRounds{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

#if defined(__x86_64__)

[[gnu::target("sha,sse4.1")]] void AddBlockByInstructions(Sha256State& state, const std::uint8_t* block)
{
    const auto load = [](const void* at) { return _mm_loadu_si128(static_cast<const __m128i*>(at)); };
    const __m128i big_endian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
    __m128i w[4];
    for (std::size_t i = 0; i < 4; ++i)
        w[i] = _mm_shuffle_epi8(load(block + 16 * i), big_endian);

    // The instructions want the eight words as a, b, e, f and c, d, g, h, the last one lowest.
    const __m128i cdab = _mm_shuffle_epi32(load(state.data()), 0xB1);
    const __m128i efgh = _mm_shuffle_epi32(load(state.data() + 4), 0x1B);
    const __m128i abef_before = _mm_alignr_epi8(cdab, efgh, 8);
    const __m128i cdgh_before = _mm_blend_epi16(efgh, cdab, 0xF0);
    __m128i abef = abef_before;
    __m128i cdgh = cdgh_before;
    for (std::size_t i = 0; i < 16; ++i)
    {
        __m128i& now = w[i % 4];
        const __m128i last = w[(i + 3) % 4];
        const __m128i sums = _mm_add_epi32(now, load(kRounds.data() + 4 * i));
        cdgh = _mm_sha256rnds2_epu32(cdgh, abef, sums);
        abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(sums, 0x0E));
        const __m128i seven_before = _mm_alignr_epi8(last, w[(i + 2) % 4], 4);
        now = _mm_sha256msg2_epu32(_mm_add_epi32(_mm_sha256msg1_epu32(now, w[(i + 1) % 4]), seven_before),
                                   last);
    }
    const __m128i feba = _mm_shuffle_epi32(_mm_add_epi32(abef, abef_before), 0x1B);
    const __m128i dchg = _mm_shuffle_epi32(_mm_add_epi32(cdgh, cdgh_before), 0xB1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data()), _mm_blend_epi16(feba, dchg, 0xF0));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state.data() + 4), _mm_alignr_epi8(dchg, feba, 8));
}

bool HasInstructions()
{
    unsigned a = 0, b = 0, c = 0, d = 0;
    const bool has_sse = __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_SSE4_1) != 0;
    return has_sse && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_SHA) != 0;
}

#endif

} // namespace

void AddSha256Block(Sha256State& state, const std::uint8_t* block)
{
    std::array<std::uint32_t, 64> w{};
    for (std::size_t i = 0; i < 16; ++i)
    {
        for (std::size_t byte = 0; byte < 4; ++byte)
            w[i] = w[i] << 8U | block[i * 4 + byte];
    }
    for (std::size_t i = 16; i < w.size(); ++i)
    {
        const std::uint32_t a = w[i - 15];
        const std::uint32_t b = w[i - 2];
        w[i] = w[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3U) + w[i - 7] +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10U);
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < w.size(); ++i)
    {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + kRounds[i] + w[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> sums{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < sums.size(); ++i)
        state[i] += sums[i];
}

Sha256Step* Sha256StepOfProcessor()
{
#if defined(__x86_64__)
    static const bool has_instructions = HasInstructions();
    return has_instructions ? AddBlockByInstructions : nullptr;
#else
    return nullptr;
#endif
}
