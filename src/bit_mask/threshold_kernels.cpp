// Comparing bytes yields a bit a byte with the first in the lowest bit; words have it in the highest. So the bytes of
// every 32 are turned round before they are compared.
#include "bit_mask/threshold_kernels.hpp"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qel::algorithm::bit_mask {
namespace {

void PackPlain(std::uint8_t const* pixels, std::size_t width, std::uint8_t threshold, std::uint32_t* words) {
    for (std::size_t x = 0; x < width; x += 32) {
        std::size_t const count = width - x < 32 ? width - x : 32;
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < count; ++i) word = word << 1 | (pixels[x + i] > threshold ? 1U : 0U);
        words[x / 32] = word << (32 - count);
    }
}

#if defined(__x86_64__)

#define QEL_TARGET_AVX2 gnu::target("avx2")

[[QEL_TARGET_AVX2, gnu::always_inline]] inline std::uint32_t Pack32(__m256i pixels, __m256i least) {
    __m256i const turn =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
    __m256i const turned = _mm256_shuffle_epi8(_mm256_permute4x64_epi64(pixels, 0x4E), turn);
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_max_epu8(turned, least), turned)));
}

[[QEL_TARGET_AVX2]] void PackAvx2(std::uint8_t const* pixels, std::size_t width, std::uint8_t threshold,
                                  std::uint32_t* words) {
    // Nothing is above 255; for everything else above means at least one more.
    if (threshold == 255) {
        std::memset(words, 0, (width + 31) / 32 * 4);
        return;
    }
    __m256i const least = _mm256_set1_epi8(static_cast<char>(threshold + 1));
    std::size_t x = 0;
    for (; x + 32 <= width; x += 32) {
        *words++ = Pack32(_mm256_loadu_si256(reinterpret_cast<__m256i const*>(pixels + x)), least);
    }
    if (x == width) return;
    alignas(32) std::uint8_t rest[32] = {};
    std::memcpy(rest, pixels + x, width - x);
    *words = Pack32(_mm256_load_si256(reinterpret_cast<__m256i const*>(rest)), least);
}

// Twice as wide it takes as long: images come from memory.
constexpr std::array Kernels{NamedThresholdKernel{"plain", PackPlain}, NamedThresholdKernel{"avx2", PackAvx2}};

std::size_t CountSupported() { return __builtin_cpu_supports("avx2") ? 2 : 1; }

#else

constexpr std::array Kernels{NamedThresholdKernel{"plain", PackPlain}};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<NamedThresholdKernel const> GetSupportedThresholdKernels() {
    static std::size_t const Count = CountSupported();
    return {Kernels.data(), Count};
}

ThresholdKernel GetThresholdKernel() { return GetSupportedThresholdKernels().back().pack; }

}  // namespace qel::algorithm::bit_mask
