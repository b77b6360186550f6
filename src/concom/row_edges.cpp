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

[[gnu::always_inline]] inline std::uint32_t* ScanEdges(std::uint32_t const* words, unsigned int width,
                                                       RowEdges const& row) {
    std::size_t const count = CountLanes(width);
    std::uint32_t* edges = row.edges;
    std::uint32_t rank = 0;
    Lane carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Lane const pixels = LoadLane(words, width, i);
        Lane changes = pixels ^ (pixels >> 1U | carry << 63U);
        row.ends[i] = changes & ~pixels;
        row.ranks[i] = rank;
        rank += static_cast<std::uint32_t>(std::popcount(row.aboveEnds[i]));
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

#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512bw,avx512vbmi2,avx512vpopcntdq,bmi,popcnt")

/// Lanes whose lowest bit is the first pixel.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i ReverseBits(__m512i lanes) {
    // Bytes of each lane the other way round, then bits of each byte, by halves.
    __m512i const bytes = _mm512_broadcast_i32x4(_mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8));
    __m512i const low = _mm512_broadcast_i32x4(
        _mm_setr_epi8(0, 0x08, 0x04, 0x0C, 0x02, 0x0A, 0x06, 0x0E, 0x01, 0x09, 0x05, 0x0D, 0x03, 0x0B, 0x07, 0x0F));
    __m512i const nibble = _mm512_set1_epi8(0x0F);
    __m512i const swapped = _mm512_shuffle_epi8(lanes, bytes);
    __m512i const first = _mm512_shuffle_epi8(low, _mm512_and_si512(swapped, nibble));
    __m512i const second = _mm512_shuffle_epi8(low, _mm512_and_si512(_mm512_srli_epi16(swapped, 4), nibble));
    return _mm512_or_si512(_mm512_slli_epi16(first, 4), second);
}

/// Writes the columns of the bits of changes, the lowest bit being that of the given column.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline std::uint32_t* WriteColumns(std::uint64_t changes,
                                                                             std::uint32_t column, __m512i index,
                                                                             std::uint32_t* edges) {
    __m512i positions = _mm512_maskz_compress_epi8(changes, index);
    std::uint32_t* const end = edges + std::popcount(changes);
    __m512i const base = _mm512_set1_epi32(static_cast<int>(column));
    while (true) {
        __m512i const columns = _mm512_cvtepu8_epi32(_mm512_castsi512_si128(positions));
        _mm512_storeu_si512(edges, _mm512_add_epi32(base, columns));
        if (end - edges <= 16) return end;
        edges += 16;
        positions = _mm512_shuffle_i32x4(positions, positions, 0x39);
    }
}

#endif

}  // namespace

std::uint32_t* ScanEdgesPlain(std::uint32_t const* words, unsigned int width, RowEdges const& row) {
    return ScanEdges(words, width, row);
}

#if defined(__x86_64__)

[[gnu::target("avx2,bmi,lzcnt,popcnt")]] std::uint32_t* ScanEdgesAvx2(std::uint32_t const* words, unsigned int width,
                                                                      RowEdges const& row) {
    return ScanEdges(words, width, row);
}

[[QEL_TARGET_AVX512]] std::uint32_t* ScanEdgesAvx512(std::uint32_t const* words, unsigned int width,
                                                     RowEdges const& row) {
    alignas(64) static constexpr auto Index = [] {
        std::array<std::uint8_t, 64> index{};
        for (std::size_t i = 0; i < index.size(); ++i) index[i] = static_cast<std::uint8_t>(i);
        return index;
    }();
    __m512i const index = _mm512_load_si512(Index.data());
    __m512i const zero = _mm512_setzero_si512();
    __m512i rank = zero;
    std::uint32_t* edges = row.edges;
    std::size_t const count = width / 32U + (width % 32U != 0 ? 1 : 0);
    __m512i previous = _mm512_setzero_si512();
    for (std::size_t i = 0; i < count; i += 16) {
        std::size_t const left = count - i;
        __mmask16 const lanes = static_cast<__mmask16>(left < 16 ? (1U << left) - 1U : 0xFFFFU);
        __m512i loaded = _mm512_maskz_loadu_epi32(lanes, words + i);
        if (left <= 16) {
            __mmask16 const last = static_cast<__mmask16>(1U << (left - 1));
            __m512i const padding = _mm512_set1_epi32(static_cast<int>(PaddingMask(width)));
            loaded = _mm512_mask_andnot_epi32(loaded, last, padding, loaded);
        }
        __m512i const pixels = _mm512_rol_epi64(loaded, 32);
        __m512i const before = _mm512_alignr_epi64(pixels, previous, 7);
        __m512i const shifted = _mm512_shrdi_epi64(pixels, before, 1);
        __m512i const changes = _mm512_xor_si512(pixels, shifted);
        _mm512_storeu_si512(row.ends + i / 2, _mm512_andnot_si512(pixels, shifted));
        __m512i const passed = _mm512_popcnt_epi64(_mm512_loadu_si512(row.aboveEnds + i / 2));
        previous = pixels;
        unsigned int changed = _mm512_test_epi64_mask(changes, changes);
        if (changed == 0) {
            rank = _mm512_add_epi64(rank, passed);
            continue;
        }
        // Sums over one, two and four lanes make the sums over all lanes before.
        __m512i sums = _mm512_alignr_epi64(passed, zero, 7);
        sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 7));
        sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 6));
        sums = _mm512_add_epi64(sums, _mm512_alignr_epi64(sums, zero, 4));
        sums = _mm512_add_epi64(sums, _mm512_set1_epi64(_mm512_reduce_add_epi64(rank)));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row.ranks + i / 2), _mm512_cvtepi64_epi32(sums));
        rank = _mm512_add_epi64(rank, passed);
        alignas(64) std::uint64_t bits[8];
        _mm512_store_si512(bits, ReverseBits(changes));
        do {
            unsigned int const lane = static_cast<unsigned int>(std::countr_zero(changed));
            edges = WriteColumns(bits[lane], static_cast<std::uint32_t>(32 * i) + 64 * lane, index, edges);
            changed &= changed - 1;
        } while (changed != 0);
    }
    // A run that reaches the last pixel ends at the width: seen above, unless the row ends with the last vector.
    if (count != 0 && count % 16 == 0 && (words[count - 1] & ~PaddingMask(width) & 1U) != 0) *edges++ = width;
    return edges;
}

#endif

}  // namespace qel::algorithm::concom
