// One body for each loop, compiled for each instruction set: the compiler makes the vectors.
#include "bit_mask/lane_kernels.hpp"

#include <array>

namespace qel::algorithm::bit_mask {
namespace {

[[gnu::always_inline]] inline bool FindSeeds(Lane const* above, Lane const* below, Lane const* fillable,
                                             Lane const* region, Lane* seeds, std::size_t lanes) {
    Lane any = 0;
    --above;
    --below;
    // Reads neighbours again instead of carrying them along: only so can it be made into vectors.
    for (std::size_t i = 0; i < lanes; ++i) {
        Lane const previous = above[i] | below[i];
        Lane const current = above[i + 1] | below[i + 1];
        Lane const next = above[i + 2] | below[i + 2];
        Lane const touched = current | current >> 1U | previous << 63U | current << 1U | next >> 63U;
        seeds[i] = touched & fillable[i] & ~region[i];
        any |= seeds[i];
    }
    return any != 0;
}

[[gnu::always_inline]] inline void FillRightwards(Lane const* fillable, Lane* seeds, Lane* leading, std::size_t lanes) {
    for (std::size_t i = 0; i < lanes; ++i) {
        // Doubling the distance that seeds and the lane's first pixel reach over fillable ones: 1, 2, 4, ... 32.
        Lane passable = fillable[i];
        Lane filled = seeds[i];
        Lane first = passable & Lane{1} << 63U;
        for (unsigned int distance = 1; distance < 64; distance *= 2) {
            filled |= passable & (filled >> distance);
            first |= passable & (first >> distance);
            passable &= passable >> distance;
        }
        seeds[i] = filled;
        leading[i] = first;
    }
}

bool FindSeedsPlain(Lane const* above, Lane const* below, Lane const* fillable, Lane const* region, Lane* seeds,
                    std::size_t lanes) {
    return FindSeeds(above, below, fillable, region, seeds, lanes);
}

void FillRightwardsPlain(Lane const* fillable, Lane* seeds, Lane* leading, std::size_t lanes) {
    FillRightwards(fillable, seeds, leading, lanes);
}

#if defined(__x86_64__)

#define QEL_TARGET_AVX2 gnu::target("avx2")
#define QEL_TARGET_AVX512 gnu::target("avx512f,avx512vl")

[[QEL_TARGET_AVX2]] bool FindSeedsAvx2(Lane const* above, Lane const* below, Lane const* fillable, Lane const* region,
                                       Lane* seeds, std::size_t lanes) {
    return FindSeeds(above, below, fillable, region, seeds, lanes);
}

[[QEL_TARGET_AVX2]] void FillRightwardsAvx2(Lane const* fillable, Lane* seeds, Lane* leading, std::size_t lanes) {
    FillRightwards(fillable, seeds, leading, lanes);
}

[[QEL_TARGET_AVX512]] bool FindSeedsAvx512(Lane const* above, Lane const* below, Lane const* fillable,
                                           Lane const* region, Lane* seeds, std::size_t lanes) {
    return FindSeeds(above, below, fillable, region, seeds, lanes);
}

[[QEL_TARGET_AVX512]] void FillRightwardsAvx512(Lane const* fillable, Lane* seeds, Lane* leading, std::size_t lanes) {
    FillRightwards(fillable, seeds, leading, lanes);
}

constexpr std::array Kernels{LaneKernels{"plain", FindSeedsPlain, FillRightwardsPlain},
                             LaneKernels{"avx2", FindSeedsAvx2, FillRightwardsAvx2},
                             LaneKernels{"avx512", FindSeedsAvx512, FillRightwardsAvx512}};

std::size_t CountSupported() {
    if (!__builtin_cpu_supports("avx2")) return 1;
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") ? 3 : 2;
}

#else

constexpr std::array Kernels{LaneKernels{"plain", FindSeedsPlain, FillRightwardsPlain}};

std::size_t CountSupported() { return 1; }

#endif

}  // namespace

boost::span<LaneKernels const> GetSupportedLaneKernels() {
    static std::size_t const Count = CountSupported();
    return {Kernels.data(), Count};
}

LaneKernels const& GetLaneKernels() { return GetSupportedLaneKernels().back(); }

}  // namespace qel::algorithm::bit_mask
