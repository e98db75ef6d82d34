// The SHA-1 block function on the x86 SHA extensions. The file is compiled for the baseline
// processor; only the functions below carry the target attributes, and ZqSHA1 calls them after
// ZqSha1CpuHasShaExtensions() said yes.

#include "zqbase/detail/zqsha1_blocks.h"

#if defined(__x86_64__) || defined(__i386__)

#include <cpuid.h>
#include <immintrin.h>
#include <utility>

#define ZQ_SHA_TARGET __attribute__((target("sha,sse4.1,ssse3")))

namespace
{
// One group of four rounds. Group g uses message quadruple g % 4 and the round function g / 5; the
// schedule runs three groups ahead: msg1 for the next quadruple but two, the xor for the one after,
// msg2 finishes the next one.
template <int g>
ZQ_SHA_TARGET __attribute__((always_inline)) inline void fourRounds(__m128i& abcd, __m128i (&e)[2],
                                                                    __m128i (&msg)[4])
{
    constexpr int current = g % 4;
    if constexpr (g == 0)
        e[0] = _mm_add_epi32(e[0], msg[0]);
    else
        e[g % 2] = _mm_sha1nexte_epu32(e[g % 2], msg[current]);
    e[(g + 1) % 2] = abcd;
    if constexpr (g >= 3 && g <= 18)
        msg[(g + 1) % 4] = _mm_sha1msg2_epu32(msg[(g + 1) % 4], msg[current]);
    abcd = _mm_sha1rnds4_epu32(abcd, e[g % 2], g / 5);
    if constexpr (g >= 1 && g <= 16)
        msg[(g + 3) % 4] = _mm_sha1msg1_epu32(msg[(g + 3) % 4], msg[current]);
    if constexpr (g >= 2 && g <= 17)
        msg[(g + 2) % 4] = _mm_xor_si128(msg[(g + 2) % 4], msg[current]);
}

template <int... g>
ZQ_SHA_TARGET __attribute__((always_inline)) inline void
allRounds(__m128i& abcd, __m128i (&e)[2], __m128i (&msg)[4], std::integer_sequence<int, g...>)
{
    (fourRounds<g>(abcd, e, msg), ...);
}
} // namespace

ZQ_SHA_TARGET void ZqSha1BlocksShaExtensions(std::uint32_t state[5], const unsigned char* data,
                                             std::size_t blocks)
{
    // The message words are big-endian; the state is kept with A in the highest lane.
    const __m128i byteSwap = _mm_set_epi64x(0x0001020304050607LL, 0x08090a0b0c0d0e0fLL);
    __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1B);
    __m128i e0 = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);

    for (; blocks; --blocks, data += 64)
    {
        const __m128i abcdSaved = abcd;
        const __m128i eSaved = e0;
        __m128i msg[4];
        for (int i = 0; i < 4; ++i)
            msg[i] =
                _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 16 * i)), byteSwap);
        __m128i e[2] = {e0, _mm_setzero_si128()};
        allRounds(abcd, e, msg, std::make_integer_sequence<int, 20>());
        e0 = _mm_sha1nexte_epu32(e[0], eSaved);
        abcd = _mm_add_epi32(abcd, abcdSaved);
    }

    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1B));
    state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e0, 3));
}

bool ZqSha1CpuHasShaExtensions()
{
    static const bool supported = []
    {
        unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
        if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx))
            return false;
        const bool ssse3 = (ecx & bit_SSSE3) != 0;
        const bool sse41 = (ecx & bit_SSE4_1) != 0;
        if (!__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx))
            return false;
        const bool sha = (ebx & (1u << 29)) != 0;
        return ssse3 && sse41 && sha;
    }();
    return supported;
}

#else

void ZqSha1BlocksShaExtensions(std::uint32_t state[5], const unsigned char* data, std::size_t blocks)
{
    ZqSha1BlocksPortable(state, data, blocks);
}

bool ZqSha1CpuHasShaExtensions()
{
    return false;
}

#endif
