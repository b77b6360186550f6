// Finds where the runs of a row begin and end: where a pixel differs from its left neighbour.
//
// Both scans work on 64 pixels at a time. The wide one sees 512 pixels at once, skips them when nothing changes and
// turns the bits that mark changes into column numbers with compress instructions; the plain one counts zeros.
#include "concom/row_edges.hpp"

#include <array>
#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>
#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 warns of registers that its own header leaves undefined on purpose.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#endif

namespace qel::algorithm::concom {
namespace {

template <bool CountEnds>
[[gnu::always_inline]] inline std::uint32_t* ScanEdges(std::uint32_t const* words, unsigned int width,
                                                       RowEdges const& row) {
    std::size_t const count = CountLanes(width);
    std::uint32_t* edges = row.edges;
    [[maybe_unused]] std::uint32_t rank = 0;
    Lane carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Lane const pixels = LoadLane(words, width, i);
        Lane changes = pixels ^ (pixels >> 1U | carry << 63U);
        row.ends[i] = changes & ~pixels;
        if constexpr (CountEnds) {
            row.ranks[i] = rank;
            rank += static_cast<std::uint32_t>(std::popcount(row.aboveEnds[i]));
        }
        carry = pixels & 1U;
        std::uint32_t const column = static_cast<std::uint32_t>(64 * i);
        while (changes != 0) {
            int const zeros = std::countl_zero(changes);
            *edges++ = column + static_cast<std::uint32_t>(zeros);
            changes ^= Lane{1} << 63U >> zeros;
        }
    }
    if (carry != 0) *edges++ = width;
    return edges;
}

#if defined(__x86_64__)

#define QEL_TARGET_AVX2 gnu::target("avx2,bmi,lzcnt,popcnt")
#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512bw,avx512vbmi2,avx512vpopcntdq,gfni,bmi,popcnt")

/// Lanes whose lowest bit is the first pixel.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i ReverseBits(__m512i lanes) {
    // Bytes of each lane the other way round, then bits of each byte by a matrix that has them the other way round.
    __m512i const bytes = _mm512_broadcast_i32x4(_mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8));
    __m512i const bits = _mm512_set1_epi64(static_cast<long long>(0x8040201008040201U));
    return _mm512_gf2p8affine_epi64_epi8(_mm512_shuffle_epi8(lanes, bytes), bits, 0);
}

/// Writes the columns of the bits of changes, the lowest bit being that of the given column.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline std::uint32_t* WriteColumns(std::uint64_t changes,
                                                                             std::uint32_t column, __m512i index,
                                                                             std::uint32_t* edges) {
    __m512i positions = _mm512_maskz_compress_epi8(changes, index);
    std::uint32_t* const end = edges + std::popcount(changes);
    __m512i const base = _mm512_set1_epi32(static_cast<int>(column));
    for (;;) {
        // Two at a time, needed or not: whether 16 are enough could rarely be foreseen.
        __m512i const first = _mm512_cvtepu8_epi32(_mm512_castsi512_si128(positions));
        __m512i const second = _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(positions, 1));
        _mm512_storeu_si512(edges, _mm512_add_epi32(base, first));
        _mm512_storeu_si512(edges + 16, _mm512_add_epi32(base, second));
        edges += 32;
        if (edges >= end) return end;
        positions = _mm512_shuffle_i32x4(positions, positions, 0x4E);
    }
}

/// What the vectors of a row hand on from one to the next.
struct WideScan {
    __m512i pixels;  // of the vector before
    __m512i passed;  // bits of aboveEnds so far, by lanes of vectors
    std::uint32_t* edges;
};

/// Scans 16 words, of which the first is word i of the row.
template <bool CountEnds>
[[QEL_TARGET_AVX512, gnu::always_inline]] inline void ScanVector(__m512i words, std::size_t i, RowEdges const& row,
                                                                 WideScan& scan) {
    alignas(64) static constexpr auto Index = [] {
        std::array<std::uint8_t, 64> index{};
        for (std::size_t k = 0; k < index.size(); ++k) index[k] = static_cast<std::uint8_t>(k);
        return index;
    }();
    __m512i const zero = _mm512_setzero_si512();
    __m512i const pixels = _mm512_rol_epi64(words, 32);
    __m512i const before = _mm512_alignr_epi64(pixels, scan.pixels, 7);
    __m512i const shifted = _mm512_shrdi_epi64(pixels, before, 1);
    __m512i const changes = _mm512_xor_si512(pixels, shifted);
    __m512i const passed = CountEnds ? _mm512_popcnt_epi64(_mm512_loadu_si512(row.aboveEnds + i / 2)) : zero;
    _mm512_storeu_si512(row.ends + i / 2, _mm512_andnot_si512(pixels, shifted));
    scan.pixels = pixels;
    unsigned int changed = _mm512_test_epi64_mask(changes, changes);
    if (changed != 0) {
        if constexpr (CountEnds) {
            // Sums over one, two and four lanes make the sums over all lanes before.
            __m512i sums = _mm512_alignr_epi64(passed, zero, 7);
            sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 7));
            sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 6));
            sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 4));
            sums = _mm512_add_epi64(sums, _mm512_set1_epi64(_mm512_reduce_add_epi64(scan.passed)));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(row.ranks + i / 2), _mm512_cvtepi64_epi32(sums));
        }
        alignas(64) std::uint64_t bits[8];
        _mm512_store_si512(bits, ReverseBits(changes));
        __m512i const index = _mm512_load_si512(Index.data());
        for (; changed != 0; changed &= changed - 1) {
            auto const lane = static_cast<std::size_t>(std::countr_zero(changed));
            scan.edges = WriteColumns(bits[lane], static_cast<std::uint32_t>(32 * i + 64 * lane), index, scan.edges);
        }
    }
    if constexpr (CountEnds) scan.passed = _mm512_add_epi64(scan.passed, passed);
}

template <bool CountEnds>
[[QEL_TARGET_AVX512, gnu::always_inline]] inline std::uint32_t* ScanWide(std::uint32_t const* words, unsigned int width,
                                                                         RowEdges const& row) {
    std::size_t const count = width / 32U + (width % 32U != 0 ? 1 : 0);
    WideScan scan{_mm512_setzero_si512(), _mm512_setzero_si512(), row.edges};
    std::size_t i = 0;
    for (; i + 16 < count; i += 16) ScanVector<CountEnds>(_mm512_loadu_si512(words + i), i, row, scan);
    if (count != 0) {
        unsigned int const left = static_cast<unsigned int>(count - i);
        __mmask16 const last = static_cast<__mmask16>(1U << (left - 1));
        __m512i const loaded = _mm512_maskz_loadu_epi32(static_cast<__mmask16>((2U << (left - 1)) - 1U), words + i);
        __m512i const padding = _mm512_set1_epi32(static_cast<int>(PaddingMask(width)));
        ScanVector<CountEnds>(_mm512_mask_andnot_epi32(loaded, last, padding, loaded), i, row, scan);
        // A run that reaches the last pixel ends at the width: seen above, unless the row ends with the vector.
        if (left == 16 && (words[count - 1] & ~PaddingMask(width) & 1U) != 0) *scan.edges++ = width;
    }
    return scan.edges;
}

#endif

}  // namespace

std::uint32_t* ScanEdgesPlain(std::uint32_t const* words, unsigned int width, RowEdges const& row) {
    return ScanEdges<false>(words, width, row);
}

std::uint32_t* ScanEdgesAndCountPlain(std::uint32_t const* words, unsigned int width, RowEdges const& row) {
    return ScanEdges<true>(words, width, row);
}

#if defined(__x86_64__)

[[QEL_TARGET_AVX2]] std::uint32_t* ScanEdgesAvx2(std::uint32_t const* words, unsigned int width, RowEdges const& row) {
    return ScanEdges<false>(words, width, row);
}

[[QEL_TARGET_AVX2]] std::uint32_t* ScanEdgesAndCountAvx2(std::uint32_t const* words, unsigned int width,
                                                         RowEdges const& row) {
    return ScanEdges<true>(words, width, row);
}

[[QEL_TARGET_AVX512]] std::uint32_t* ScanEdgesAvx512(std::uint32_t const* words, unsigned int width,
                                                     RowEdges const& row) {
    return ScanWide<false>(words, width, row);
}

[[QEL_TARGET_AVX512]] std::uint32_t* ScanEdgesAndCountAvx512(std::uint32_t const* words, unsigned int width,
                                                             RowEdges const& row) {
    return ScanWide<true>(words, width, row);
}

#endif

}  // namespace qel::algorithm::concom
