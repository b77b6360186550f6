// A row of a region grows in two steps. What touches the rows above and below are seeds; then each run of fillable
// pixels that has a seed is filled whole. Rightwards an addition of many lanes does that: a seed added to the run that
// it stands in carries up to the run's end. Leftwards the same addition works on reversed lanes, where reversing is
// cheap; elsewhere the distance that seeds reach is doubled six times, lane by lane.
#include "bit_mask/lane_kernels.hpp"

#include <algorithm>
#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns of registers that its own header leaves undefined on purpose.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#endif

namespace qel::algorithm::bit_mask {
namespace {

/// The bits of each byte, then the bytes, turned round.
std::uint32_t Reverse(std::uint32_t word) {
    word = (word >> 1 & 0x55555555U) | (word & 0x55555555U) << 1;
    word = (word >> 2 & 0x33333333U) | (word & 0x33333333U) << 2;
    word = (word >> 4 & 0x0F0F0F0FU) | (word & 0x0F0F0F0FU) << 4;
    return __builtin_bswap32(word);
}

void LoadPlain(std::uint32_t const* src, std::uint32_t const* dst, std::size_t words, Lane* fillable, Lane* region,
               std::size_t pitch) {
    for (std::size_t i = 0; i < pitch; ++i) fillable[i] = region[i] = 0;
    for (std::size_t i = 0; i < words / 2; ++i) {
        fillable[i] = Reverse(src[2 * i] & ~dst[2 * i]) | Lane{Reverse(src[2 * i + 1] & ~dst[2 * i + 1])} << 32U;
    }
    if (words % 2 != 0) fillable[words / 2] = Reverse(src[words - 1] & ~dst[words - 1]);
}

void StorePlain(Lane const* region, std::uint32_t* dst, std::size_t words) {
    for (std::size_t i = 0; i < words / 2; ++i) {
        dst[2 * i] |= Reverse(static_cast<std::uint32_t>(region[i]));
        dst[2 * i + 1] |= Reverse(static_cast<std::uint32_t>(region[i] >> 32U));
    }
    if (words % 2 != 0) dst[words - 1] |= Reverse(static_cast<std::uint32_t>(region[words / 2]));
}

std::size_t CountRepeatedPlain(std::uint32_t const* src, std::uint32_t const* dst, std::size_t words,
                               std::ptrdiff_t step, std::size_t rows) {
    for (std::size_t row = 0; row < rows; ++row, src += step, dst += step) {
        std::uint32_t const *const nextSrc = src + step, *const nextDst = dst + step;
        for (std::size_t i = 0; i < words; ++i) {
            if ((src[i] & ~dst[i]) != (nextSrc[i] & ~nextDst[i])) return row;
        }
    }
    return rows;
}

/// Writes to seeds the region and what touches it in the rows above and below; false when nothing does.
bool FindSeeds(Lane const* above, Lane const* below, Lane const* fillable, Lane const* region, Lane* seeds,
               std::size_t lanes) {
    Lane any = 0;
    --above;
    --below;
    // Reads neighbours again instead of carrying them along: only so can it be made into vectors.
    for (std::size_t i = 0; i < lanes; ++i) {
        Lane const previous = above[i] | below[i];
        Lane const current = above[i + 1] | below[i + 1];
        Lane const next = above[i + 2] | below[i + 2];
        Lane const touched = current | current << 1U | previous >> 63U | current >> 1U | next << 63U;
        seeds[i] = (touched & fillable[i]) | region[i];
        any |= seeds[i] ^ region[i];
    }
    return any != 0;
}

void FillRightwards(Lane const* fillable, Lane* seeds, std::size_t lanes) {
    __extension__ using TwoLanes = unsigned __int128;
    Lane carry = 0;
    for (std::size_t i = 0; i < lanes; ++i) {
        TwoLanes const sum = TwoLanes{fillable[i]} + seeds[i] + carry;
        carry = static_cast<Lane>(sum >> 64U);
        seeds[i] = fillable[i] & (~static_cast<Lane>(sum) | seeds[i]);
    }
}

/// Each lane by itself; ending receives the run that the lane ends with.
void FillLeftwards(Lane const* fillable, Lane* seeds, Lane* ending, std::size_t lanes) {
    for (std::size_t i = 0; i < lanes; ++i) {
        // Doubling the distance that seeds and the lane's last pixel reach over fillable ones: 1, 2, 4, ... 32.
        Lane passable = fillable[i];
        Lane filled = seeds[i];
        Lane last = passable & Lane{1} << 63U;
        for (unsigned int distance = 1; distance < 64; distance *= 2) {
            filled |= passable & (filled >> distance);
            last |= passable & (last >> distance);
            passable &= passable >> distance;
        }
        seeds[i] = filled;
        ending[i] = last;
    }
}

std::size_t GrowPlain(Lane const* above, Lane const* below, Lane const* fillable, Lane* region, Lane* scratch,
                      std::size_t lanes) {
    if (!FindSeeds(above, below, fillable, region, scratch, lanes)) return 0;
    Lane *const filled = scratch, *const ending = scratch + lanes;
    FillRightwards(fillable, filled, lanes);
    FillLeftwards(fillable, filled, ending, lanes);
    std::size_t changed = 0;
    Lane entering = 0;
    for (std::size_t i = lanes; i-- != 0;) {
        // What enters from the right fills the run that ends with the lane.
        Lane const row = filled[i] | (ending[i] & (0 - entering));
        changed += row != region[i] ? 1 : 0;
        region[i] = row;
        // Not taken from row: so the lanes wait for each other no longer than they have to.
        entering = (filled[i] | (ending[i] & entering)) & 1U;
    }
    return changed;
}

#if defined(__x86_64__)

#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,gfni")

/// The matrix that turns the bits of a byte round.
constexpr long long ReversingMatrix = static_cast<long long>(0x8040201008040201ULL);

/// The bits of each 32-bit word turned round.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i ReverseWords(__m512i words) {
    __m512i const turn = _mm512_set4_epi32(0x0C0D0E0F, 0x08090A0B, 0x04050607, 0x00010203);
    return _mm512_gf2p8affine_epi64_epi8(_mm512_shuffle_epi8(words, turn), _mm512_set1_epi64(ReversingMatrix), 0);
}

/// All 512 bits turned round.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i Reverse(__m512i lanes) {
    alignas(64) static constexpr std::array<std::uint8_t, 64> Turn = [] {
        std::array<std::uint8_t, 64> turn{};
        for (std::size_t i = 0; i < 64; ++i) turn[i] = static_cast<std::uint8_t>(63 - i);
        return turn;
    }();
    __m512i const turned = _mm512_permutexvar_epi8(_mm512_load_si512(Turn.data()), lanes);
    return _mm512_gf2p8affine_epi64_epi8(turned, _mm512_set1_epi64(ReversingMatrix), 0);
}

[[QEL_TARGET_AVX512, gnu::always_inline]] inline __mmask16 FirstWords(std::size_t count) {
    return static_cast<__mmask16>(count < 16 ? (1U << count) - 1U : 0xFFFFU);
}

/// The fillable pixels of 16 words.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i LoadFree(std::uint32_t const* src, std::uint32_t const* dst,
                                                                  __mmask16 used) {
    return _mm512_andnot_si512(_mm512_maskz_loadu_epi32(used, dst), _mm512_maskz_loadu_epi32(used, src));
}

[[QEL_TARGET_AVX512]] void LoadAvx512(std::uint32_t const* src, std::uint32_t const* dst, std::size_t words,
                                      Lane* fillable, Lane* region, std::size_t pitch) {
    for (std::size_t i = 0; i < pitch; i += 8) {
        __mmask16 const used = FirstWords(words - std::min(words, 2 * i));
        _mm512_storeu_si512(fillable + i, ReverseWords(LoadFree(src + 2 * i, dst + 2 * i, used)));
        _mm512_storeu_si512(region + i, _mm512_setzero_si512());
    }
}

[[QEL_TARGET_AVX512]] std::size_t CountRepeatedAvx512(std::uint32_t const* src, std::uint32_t const* dst,
                                                      std::size_t words, std::ptrdiff_t step, std::size_t rows) {
    for (std::size_t row = 0; row < rows; ++row, src += step, dst += step) {
        for (std::size_t i = 0; i < words; i += 16) {
            __mmask16 const used = FirstWords(words - i);
            __m512i const here = LoadFree(src + i, dst + i, used);
            if (_mm512_cmpneq_epi32_mask(here, LoadFree(src + step + i, dst + step + i, used)) != 0) return row;
        }
    }
    return rows;
}

[[QEL_TARGET_AVX512]] void StoreAvx512(Lane const* region, std::uint32_t* dst, std::size_t words) {
    for (std::size_t i = 0; i < words; i += 16) {
        __mmask16 const used = FirstWords(words - i);
        __m512i const set = ReverseWords(_mm512_loadu_si512(region + i / 2));
        _mm512_mask_storeu_epi32(dst + i, used, _mm512_or_si512(_mm512_maskz_loadu_epi32(used, dst + i), set));
    }
}

/// Seeds and what of their runs follows them, in 512 bits; carry comes from the lanes before and goes to those behind.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i FillUpwards(__m512i fillable, __m512i seeds,
                                                                     std::uint32_t& carry) {
    __m512i const ones = _mm512_set1_epi64(-1);
    __m512i const sum = _mm512_add_epi64(fillable, seeds);
    // Carries between the lanes, worked out by adding once more: a lane of ones passes on what it is given.
    std::uint32_t const passing = _mm512_cmpeq_epi64_mask(sum, ones);
    std::uint32_t const carries = (std::uint32_t{_mm512_cmplt_epu64_mask(sum, fillable)} << 1 | carry) + passing;
    carry = carries >> 8;
    __m512i const carried = _mm512_mask_sub_epi64(sum, static_cast<__mmask8>(carries ^ passing), sum, ones);
    // fillable and (seeds or not carried).
    return _mm512_ternarylogic_epi64(fillable, carried, seeds, 0xB0);
}

[[QEL_TARGET_AVX512]] std::size_t GrowAvx512(Lane const* above, Lane const* below, Lane const* fillable, Lane* region,
                                             Lane* scratch, std::size_t lanes) {
    __m512i previous = _mm512_setzero_si512();
    __m512i current = _mm512_or_si512(_mm512_loadu_si512(above), _mm512_loadu_si512(below));
    std::uint32_t carry = 0, any = 0;
    for (std::size_t i = 0; i < lanes; i += 8) {
        __m512i next = _mm512_setzero_si512();
        if (i + 8 < lanes) next = _mm512_or_si512(_mm512_loadu_si512(above + i + 8), _mm512_loadu_si512(below + i + 8));
        __m512i const before = _mm512_shldi_epi64(current, _mm512_alignr_epi64(current, previous, 7), 1);
        __m512i const after = _mm512_shrdi_epi64(current, _mm512_alignr_epi64(next, current, 1), 1);
        __m512i const free = _mm512_loadu_si512(fillable + i), old = _mm512_loadu_si512(region + i);
        // Any of the three; then that and free, or old.
        __m512i const touched = _mm512_ternarylogic_epi64(current, before, after, 0xFE);
        __m512i const seeds = _mm512_ternarylogic_epi64(touched, free, old, 0xEA);
        any |= _mm512_cmpneq_epi64_mask(seeds, old);
        _mm512_storeu_si512(scratch + i, FillUpwards(free, seeds, carry));
        previous = current;
        current = next;
    }
    if (any == 0) return 0;
    std::size_t changed = 0;
    carry = 0;
    for (std::size_t i = (lanes + 7) / 8 * 8; i != 0;) {
        i -= 8;
        __m512i const free = Reverse(_mm512_loadu_si512(fillable + i));
        __m512i const row = Reverse(FillUpwards(free, Reverse(_mm512_loadu_si512(scratch + i)), carry));
        std::uint32_t const differing = _mm512_cmpneq_epi64_mask(row, _mm512_loadu_si512(region + i));
        changed += static_cast<std::size_t>(__builtin_popcount(differing));
        _mm512_storeu_si512(region + i, row);
    }
    return changed;
}

constexpr std::array Kernels{LaneKernels{"plain", LoadPlain, CountRepeatedPlain, GrowPlain, StorePlain},
                             LaneKernels{"avx512", LoadAvx512, CountRepeatedAvx512, GrowAvx512, StoreAvx512}};

std::size_t CountSupported() {
    if (!__builtin_cpu_supports("avx512bw") || !__builtin_cpu_supports("avx512vbmi")) return 1;
    return __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("gfni") ? 2 : 1;
}

#else

constexpr std::array Kernels{LaneKernels{"plain", LoadPlain, CountRepeatedPlain, GrowPlain, StorePlain}};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<LaneKernels const> GetSupportedLaneKernels() {
    static std::size_t const Count = CountSupported();
    return {Kernels.data(), Count};
}

LaneKernels const& GetLaneKernels() { return GetSupportedLaneKernels().back(); }

}  // namespace qel::algorithm::bit_mask
