// A row is compared with the one run that it shall have, and filled with it, words at a time: nothing is searched for.
// The wide loop holds what it compares and fills with in registers.
#include "bit_mask/straight_run_kernels.hpp"

#include <array>

#include "bit_mask/word_masks.hpp"

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

std::size_t FillPlain(std::uint32_t const* src, std::uint32_t* dst, std::ptrdiff_t step, std::size_t rows,
                      unsigned int first, unsigned int last) {
    std::size_t const begin = (first - 1) / 32, end = (last + 1) / 32 + 1;
    std::array<std::uint32_t, MaxStraightWords> run, seen;
    for (std::size_t i = begin; i < end; ++i) {
        std::uint32_t const head = i == first / 32 ? HeadMask(first) : i < first / 32 ? 0 : ~0U;
        std::uint32_t const tail = i == last / 32 ? TailMask(last) : i > last / 32 ? 0 : ~0U;
        run[i - begin] = head & tail;
        seen[i - begin] = (i == begin ? HeadMask(first - 1) : ~0U) & (i + 1 == end ? TailMask(last + 1) : ~0U);
    }
    for (std::size_t row = 0; row < rows; ++row, src += step, dst += step) {
        std::uint32_t differs = 0;
        for (std::size_t i = begin; i < end; ++i) differs |= ((src[i] & ~dst[i]) ^ run[i - begin]) & seen[i - begin];
        if (differs != 0) return row;
        for (std::size_t i = begin; i < end; ++i) dst[i] |= run[i - begin];
    }
    return rows;
}

constexpr StraightRunKernel Plain{"plain", FillPlain};

#if defined(__x86_64__)

#define QEL_TARGET_AVX512 gnu::target("avx512f")

/// Columns first to last of the words from the given column on.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i Columns(unsigned int column, unsigned int first,
                                                                 unsigned int last) {
    __m512i const ones = _mm512_set1_epi32(-1);
    __m512i const starts =
        _mm512_add_epi32(_mm512_set1_epi32(static_cast<int>(column)),
                         _mm512_setr_epi32(0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 480));
    auto const from = [&](unsigned int x) __attribute__((always_inline, target("avx512f"))) {
        // Shifts by 32 and more leave nothing.
        __m512i const ahead = _mm512_sub_epi32(_mm512_set1_epi32(static_cast<int>(x)), starts);
        return _mm512_srlv_epi32(ones, _mm512_max_epi32(ahead, _mm512_setzero_si512()));
    };
    return _mm512_andnot_si512(from(last + 1), from(first));
}

[[QEL_TARGET_AVX512]] std::size_t FillAvx512(std::uint32_t const* src, std::uint32_t* dst, std::ptrdiff_t step,
                                             std::size_t rows, unsigned int first, unsigned int last) {
    std::size_t const begin = (first - 1) / 32, end = (last + 1) / 32 + 1;
    auto const words = static_cast<__mmask16>((2U << (end - begin - 1)) - 1U);
    __m512i const run = Columns(static_cast<unsigned int>(32 * begin), first, last);
    __m512i const seen = Columns(static_cast<unsigned int>(32 * begin), first - 1, last + 1);
    src += begin;
    dst += begin;
    for (std::size_t row = 0; row < rows; ++row, src += step, dst += step) {
        __m512i const filled = _mm512_maskz_loadu_epi32(words, dst);
        __m512i const free = _mm512_andnot_si512(filled, _mm512_maskz_loadu_epi32(words, src));
        if (_mm512_test_epi32_mask(_mm512_xor_si512(free, run), seen) != 0) return row;
        _mm512_mask_storeu_epi32(dst, words, _mm512_or_si512(filled, run));
    }
    return rows;
}

constexpr std::array Kernels{Plain, StraightRunKernel{"avx512", FillAvx512}};

std::size_t CountSupported() { return __builtin_cpu_supports("avx512f") ? 2 : 1; }

#else

constexpr std::array Kernels{Plain};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<StraightRunKernel const> GetSupportedStraightRunKernels() {
    static std::size_t const Count = CountSupported();
    return {Kernels.data(), Count};
}

StraightRunKernel const& GetStraightRunKernel() { return GetSupportedStraightRunKernels().back(); }

}  // namespace qel::algorithm::bit_mask
