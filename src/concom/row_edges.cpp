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

/// Columns k and after of a word, to be masked away.
constexpr std::uint32_t PaddingMask(unsigned int width) { return width % 32U == 0 ? 0U : ~0U >> width % 32U; }

std::uint32_t* ScanPlain(std::uint32_t const* words, unsigned int width, std::uint32_t* edges) {
    std::size_t const count = (width + 31U) / 32U;
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < count; i += 2) {
        std::uint64_t pixels = std::uint64_t{words[i]} << 32U;
        if (i + 1 < count) pixels |= words[i + 1];
        if (i + 2 >= count) pixels &= ~(std::uint64_t{PaddingMask(width)} << (i + 1 < count ? 0U : 32U));
        std::uint64_t changes = pixels ^ (pixels >> 1U | carry << 63U);
        carry = pixels & 1U;
        std::uint32_t const column = static_cast<std::uint32_t>(32 * i);
        while (changes != 0) {
            int const zeros = std::countl_zero(changes);
            *edges++ = column + static_cast<std::uint32_t>(zeros);
            changes ^= std::uint64_t{1} << 63U >> zeros;
        }
    }
    if (carry != 0) *edges++ = width;
    return edges;
}

#if defined(__x86_64__)

#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512bw,avx512vbmi2,bmi,popcnt")

/// Words in pairs of 64 bits whose lowest bit is the first pixel.
[[QEL_TARGET_AVX512, gnu::always_inline]] inline __m512i ReverseBits(__m512i words) {
    // Bytes of each word the other way round, then bits of each byte, by halves.
    __m512i const bytes = _mm512_broadcast_i32x4(_mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12));
    __m512i const low = _mm512_broadcast_i32x4(
        _mm_setr_epi8(0, 0x08, 0x04, 0x0C, 0x02, 0x0A, 0x06, 0x0E, 0x01, 0x09, 0x05, 0x0D, 0x03, 0x0B, 0x07, 0x0F));
    __m512i const nibble = _mm512_set1_epi8(0x0F);
    __m512i const swapped = _mm512_shuffle_epi8(words, bytes);
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

[[QEL_TARGET_AVX512]] std::uint32_t* ScanAvx512(std::uint32_t const* words, unsigned int width, std::uint32_t* edges) {
    alignas(64) static constexpr auto Index = [] {
        std::array<std::uint8_t, 64> index{};
        for (std::size_t i = 0; i < index.size(); ++i) index[i] = static_cast<std::uint8_t>(i);
        return index;
    }();
    __m512i const index = _mm512_load_si512(Index.data());
    std::size_t const count = (width + 31U) / 32U;
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
        __m512i const pixels = ReverseBits(loaded);
        __m512i const before = _mm512_alignr_epi64(pixels, previous, 7);
        __m512i const changes = _mm512_xor_si512(pixels, _mm512_shldi_epi64(pixels, before, 1));
        previous = pixels;
        unsigned int changed = _mm512_test_epi64_mask(changes, changes);
        if (changed == 0) continue;
        alignas(64) std::uint64_t bits[8];
        _mm512_store_si512(bits, changes);
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

constexpr std::array Scans{NamedEdgeScan{"plain", ScanPlain}, NamedEdgeScan{"avx512", ScanAvx512}};

std::size_t CountSupported() {
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi2") ? 2 : 1;
}

#else

constexpr std::array Scans{NamedEdgeScan{"plain", ScanPlain}};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<NamedEdgeScan const> GetSupportedEdgeScans() {
    static std::size_t const Count = CountSupported();
    return {Scans.data(), Count};
}

EdgeScan GetEdgeScan() { return GetSupportedEdgeScans().back().scan; }

}  // namespace qel::algorithm::concom
