// The word loops of 3 x 3 dilation and erosion, one for each instruction set.
//
// The three rows are combined first (OR to dilate, AND to erode), then shifted once to either side: both operations
// commute with the shift. Beyond a row's ends stand zero words, for either operation. The wide loops keep the previous,
// current and next vector of the combined row in registers; reading a stored row again one word off would wait for the
// store.
#include "bit_mask/row_kernels.hpp"

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

template <bool Dilation>
[[gnu::always_inline]] inline std::uint32_t Combine(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    return Dilation ? a | b | c : a & b & c;
}

/// One word of a combined row between its neighbours.
template <bool Dilation>
[[gnu::always_inline]] inline std::uint32_t Spread(std::uint32_t previous, std::uint32_t current, std::uint32_t next) {
    return Combine<Dilation>(current, current >> 1 | previous << 31, current << 1 | next >> 31);
}

template <bool Dilation>
void Plain(std::uint32_t const* above, std::uint32_t const* row, std::uint32_t const* below, std::uint32_t* out,
           std::size_t rows, std::size_t words) {
    auto const combined = [&](std::size_t i) { return Combine<Dilation>(above[i], row[i], below[i]); };
    if (words == 0) return;
    for (; rows != 0; --rows, above += words, row += words, below += words, out += words) {
        std::size_t const last = words - 1;
        out[0] = Spread<Dilation>(0, combined(0), last == 0 ? 0 : combined(1));
        // Reads the neighbours again: the compiler makes vectors of that, not of words carried from turn to turn.
        for (std::size_t i = 1; i < last; ++i) {
            out[i] = Spread<Dilation>(combined(i - 1), combined(i), combined(i + 1));
        }
        if (last != 0) out[last] = Spread<Dilation>(combined(last - 1), combined(last), 0);
    }
}

#if defined(__x86_64__)

#define QEL_TARGET_AVX2 gnu::target("avx2")
#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512vbmi2")

/// Lanes 0 to count - 1 (8 at most).
[[QEL_TARGET_AVX2, gnu::always_inline]] inline __m256i Lanes(std::size_t count) {
    __m256i const index = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(count < 8 ? count : 8)), index);
}

template <bool Dilation>
[[QEL_TARGET_AVX2, gnu::always_inline]] inline __m256i Combine(__m256i a, __m256i b, __m256i c) {
    if constexpr (Dilation) return _mm256_or_si256(_mm256_or_si256(a, b), c);
    return _mm256_and_si256(_mm256_and_si256(a, b), c);
}

template <bool Dilation>
[[QEL_TARGET_AVX2, gnu::always_inline]] inline __m256i Load(std::uint32_t const* above, std::uint32_t const* row,
                                                            std::uint32_t const* below, std::size_t left) {
    auto const vector = [](std::uint32_t const* words) { return reinterpret_cast<__m256i const*>(words); };
    if (left >= 8) {
        return Combine<Dilation>(_mm256_loadu_si256(vector(above)), _mm256_loadu_si256(vector(row)),
                                 _mm256_loadu_si256(vector(below)));
    }
    auto const part = [](std::uint32_t const* words) { return reinterpret_cast<int const*>(words); };
    __m256i const lanes = Lanes(left);
    return Combine<Dilation>(_mm256_maskload_epi32(part(above), lanes), _mm256_maskload_epi32(part(row), lanes),
                             _mm256_maskload_epi32(part(below), lanes));
}

template <bool Dilation>
[[QEL_TARGET_AVX2]] void Avx2(std::uint32_t const* above, std::uint32_t const* row, std::uint32_t const* below,
                              std::uint32_t* out, std::size_t rows, std::size_t words) {
    __m256i const zero = _mm256_setzero_si256();
    __m256i const up = _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6);
    __m256i const down = _mm256_setr_epi32(1, 2, 3, 4, 5, 6, 7, 0);
    if (words == 0) return;
    for (; rows != 0; --rows, above += words, row += words, below += words, out += words) {
        __m256i previous = zero;  // moved up by one lane: its last word stands in lane 0
        __m256i current = Load<Dilation>(above, row, below, words);
        for (std::size_t i = 0; i < words; i += 8) {
            __m256i const next =
                i + 8 < words ? Load<Dilation>(above + i + 8, row + i + 8, below + i + 8, words - i - 8) : zero;
            __m256i const moved = _mm256_permutevar8x32_epi32(current, up);
            __m256i const before = _mm256_blend_epi32(moved, previous, 0x01);
            __m256i const after = _mm256_permutevar8x32_epi32(_mm256_blend_epi32(current, next, 0x01), down);
            __m256i const spread = Combine<Dilation>(
                current, _mm256_or_si256(_mm256_srli_epi32(current, 1), _mm256_slli_epi32(before, 31)),
                _mm256_or_si256(_mm256_slli_epi32(current, 1), _mm256_srli_epi32(after, 31)));
            if (words - i >= 8) {
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), spread);
            } else {
                _mm256_maskstore_epi32(reinterpret_cast<int*>(out + i), Lanes(words - i), spread);
            }
            previous = moved;
            current = next;
        }
    }
}

/// Lanes first to count - 1 (16 at most).
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __mmask16 Lanes16(std::size_t first, std::size_t count) {
    return static_cast<__mmask16>((count < 16 ? (1U << count) - 1U : 0xFFFFU) & ~0U << first);
}

template <bool Dilation>
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i Combine(__m512i a, __m512i b, __m512i c) {
    // The truth table of the three operands: any of them, all of them.
    return _mm512_ternarylogic_epi32(a, b, c, Dilation ? 0xFE : 0x80);
}

/// The bands as if each were one long row: vectors run on from row to row, and lanes at the ends of rows see zeros.
template <bool Dilation>
class Bands512 {
public:
    /// Vector 0 begins skipped words before the bands do.
    [[QEL_TARGET_AVX512, gnu::always_inline]] inline Bands512(std::uint32_t const* above, std::uint32_t const* row,
                                                              std::uint32_t const* below, std::size_t words,
                                                              std::size_t skipped)
        : above_(above - skipped),
          row_(row - skipped),
          below_(below - skipped),
          words_(static_cast<std::ptrdiff_t>(words)),
          toLast_(static_cast<std::ptrdiff_t>((skipped + words - 1) % words)),
          step_(static_cast<std::ptrdiff_t>(16 % words)) {
        for (std::size_t i = 0; i < 16; i += words) everyRow_ |= 1U << i;
    }

    [[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i Load(std::size_t i, __mmask16 lanes) const {
        return Combine<Dilation>(_mm512_maskz_loadu_epi32(lanes, above_ + i), _mm512_maskz_loadu_epi32(lanes, row_ + i),
                                 _mm512_maskz_loadu_epi32(lanes, below_ + i));
    }

    [[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i Load(std::size_t i) const {
        return Combine<Dilation>(_mm512_loadu_si512(above_ + i), _mm512_loadu_si512(row_ + i),
                                 _mm512_loadu_si512(below_ + i));
    }

    [[QEL_TARGET_AVX512, gnu::always_inline]] inline void Begin(__m512i first) { current_ = first; }

    /// What becomes of the current vector; next takes its place.
    [[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i Spread(__m512i next) {
        __m512i before, after;
        if (toLast_ >= 16) {
            before = _mm512_alignr_epi32(current_, previous_, 15);
            after = _mm512_alignr_epi32(next, current_, 1);
            previous_ = current_;
            toLast_ -= 16;
        } else {
            // The lanes that hold last words of rows; those after them see nothing before.
            std::uint32_t const last = everyRow_ << toLast_;
            auto const others = static_cast<__mmask16>(~last);
            before = _mm512_maskz_alignr_epi32(static_cast<__mmask16>(~(last << 1)), current_, previous_, 15);
            after = _mm512_maskz_alignr_epi32(others, next, current_, 1);
            previous_ = _mm512_maskz_mov_epi32(others, current_);
            toLast_ -= step_;
            toLast_ = toLast_ < 0 ? toLast_ + words_ : toLast_;
        }
        __m512i const spread = Combine<Dilation>(current_, _mm512_shrdi_epi32(current_, before, 1),
                                                 _mm512_shldi_epi32(current_, after, 1));
        current_ = next;
        return spread;
    }

private:
    std::uint32_t const *above_, *row_, *below_;
    std::ptrdiff_t words_;
    std::ptrdiff_t toLast_;  ///< words from the current vector's first to the last of a row
    std::ptrdiff_t step_;
    std::uint32_t everyRow_ = 0;  ///< bits a row apart
    __m512i previous_ = _mm512_setzero_si512(), current_ = _mm512_setzero_si512();
};

/// The line 16 lines ahead.
[[gnu::always_inline]] inline void Prefetch(std::uint32_t const* words) {
    _mm_prefetch(reinterpret_cast<char const*>(words + 256), _MM_HINT_T0);
}

template <bool Dilation>
[[QEL_TARGET_AVX512]] void Avx512(std::uint32_t const* above, std::uint32_t const* row, std::uint32_t const* below,
                                  std::uint32_t* out, std::size_t rows, std::size_t words) {
    if (rows == 0 || words == 0) return;
    // The first vector begins so much earlier that vectors are stored aligned; nothing is touched there.
    std::size_t const skipped = reinterpret_cast<std::uintptr_t>(out) / 4 % 16;
    Bands512<Dilation> bands(above, row, below, words, skipped);
    out -= skipped;
    std::size_t const end = rows * words + skipped;
    __mmask16 lanes = Lanes16(skipped, end);
    bands.Begin(bands.Load(0, lanes));
    std::size_t i = 0;
    if (end >= 32) {
        _mm512_mask_store_epi32(out, lanes, bands.Spread(bands.Load(16)));
        for (i = 16; i + 32 <= end; i += 16) {
            // The upper bands were read a row or two ago. Without these, 9 to 25 % slower at 1920x1080.
            Prefetch(below + i);
            Prefetch(out + i);
            _mm512_store_si512(out + i, bands.Spread(bands.Load(i + 16)));
        }
        lanes = 0xFFFF;
    }
    for (; i < end; i += 16) {
        __mmask16 const nextLanes = i + 16 < end ? Lanes16(0, end - i - 16) : __mmask16{0};
        _mm512_mask_store_epi32(out + i, lanes, bands.Spread(bands.Load(i + 16, nextLanes)));
        lanes = nextLanes;
    }
}

constexpr std::array Kernels{RowKernels{"plain", Plain<true>, Plain<false>},
                             RowKernels{"avx2", Avx2<true>, Avx2<false>},
                             RowKernels{"avx512", Avx512<true>, Avx512<false>}};

std::size_t CountSupported() {
    if (!__builtin_cpu_supports("avx2")) return 1;
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vbmi2") ? 3 : 2;
}

#else

constexpr std::array Kernels{RowKernels{"plain", Plain<true>, Plain<false>}};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<RowKernels const> GetSupportedRowKernels() {
    static std::size_t const Count = CountSupported();
    return {Kernels.data(), Count};
}

RowKernels const& GetRowKernels() { return GetSupportedRowKernels().back(); }

}  // namespace qel::algorithm::bit_mask
