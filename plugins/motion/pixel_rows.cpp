// The pixel loops of the background model: plain, branch-free loops over int16 lanes, written so that the compiler
// turns them into vector code. Each body is compiled once a target, from the same source. A row is taken in short
// stretches: first all its pixels are judged, then only stretches with something in them learn by the full rule.

#include "pixel_rows.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "pixel_rule.hpp"

/// No iteration of the loop below reads what another one writes: spares the run-time tests for overlap.
#if defined(__clang__)
#define QEL_MOTION_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define QEL_MOTION_INDEPENDENT _Pragma("GCC ivdep")
#else
#define QEL_MOTION_INDEPENDENT
#endif

namespace qel::motion {
namespace {

using namespace pixel;

constexpr std::size_t StretchPixels = 64;

QEL_MOTION_INLINE void MeasureChroma(std::uint8_t const* __restrict chroma, Lane const* __restrict mean,
                                     Lane* __restrict distance, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; x += 2) {
        Lane const u = Smaller(Distance(Level(chroma[x]), mean[x]), FrameRule::LargestChroma);
        Lane const v = Smaller(Distance(Level(chroma[x + 1]), mean[x + 1]), FrameRule::LargestChroma);
        distance[x] = Narrow(u + v);
        distance[x + 1] = Narrow(u + v);
    }
}

/// A stretch of one row and what is known about it.
struct Stretch {
    std::uint8_t const* luma;
    Lane const* chromaDistance;
    Lane* mean;
    Lane* spread;
    Lane* hits;
    Lane* candidate;
    Lane* candidateHits;
    std::uint8_t* flags;
    std::size_t pixels;
};

/// Writes which pixels are foreground, and all distances.
QEL_MOTION_INLINE void JudgeStretch(Stretch const& stretch, FrameRule const& rule, Lane* __restrict distances) {
    QEL_MOTION_INDEPENDENT
    for (std::size_t x = 0; x < stretch.pixels; ++x) {
        Verdict const verdict =
            Judge(stretch.mean[x], stretch.spread[x], Level(stretch.luma[x]), stretch.chromaDistance[x], rule);
        Lane const strong = Less(verdict.limit, Narrow(verdict.distance >> 1));
        Lane const young = Less(stretch.hits[x], FrameRule::ManyHits);
        distances[x] = verdict.distance;
        stretch.flags[x] = static_cast<std::uint8_t>((verdict.far & Far) | (verdict.foreground & Foreground) |
                                                     (verdict.foreground & strong & Strong) | (young & Young));
    }
}

/// Learns where every pixel is settled background, which is nearly everywhere.
QEL_MOTION_INLINE void LearnSettled(Stretch const& stretch, FrameRule const& rule, Lane const* __restrict distances) {
    Pace const pace = rule.settled;
    QEL_MOTION_INDEPENDENT
    for (std::size_t x = 0; x < stretch.pixels; ++x) {
        stretch.mean[x] = LearnedMean(stretch.mean[x], Level(stretch.luma[x]), pace);
        stretch.spread[x] = LearnedSpread(stretch.spread[x], distances[x], pace, rule);
        stretch.hits[x] = Smaller(Narrow(stretch.hits[x] + 1), rule.mostHits);
    }
    if (rule.candidateDecay == 0) return;
    QEL_MOTION_INDEPENDENT
    for (std::size_t x = 0; x < stretch.pixels; ++x)
        stretch.candidateHits[x] = AgedHits(stretch.candidateHits[x], rule);
}

/// Learns anywhere.
QEL_MOTION_INLINE void LearnMixed(Stretch const& stretch, FrameRule const& rule, Lane const* __restrict distances) {
    QEL_MOTION_INDEPENDENT
    for (std::size_t x = 0; x < stretch.pixels; ++x) {
        Lane const level = Level(stretch.luma[x]);
        Pixel const old{stretch.mean[x], stretch.spread[x], stretch.hits[x], stretch.candidate[x],
                        stretch.candidateHits[x]};
        Lane const far = Narrow(-(stretch.flags[x] & Far));
        Pixel const learned = Learn(old, level, distances[x], rule);
        Doubted const doubted = Doubt(old, level, Scale(old.spread, rule.threshold), rule);
        stretch.mean[x] = Select(far, doubted.pixel.mean, learned.mean);
        stretch.spread[x] = Select(far, doubted.pixel.spread, learned.spread);
        stretch.hits[x] = Select(far, doubted.pixel.hits, learned.hits);
        stretch.candidate[x] = Select(far, doubted.pixel.candidate, learned.candidate);
        stretch.candidateHits[x] = Select(far, doubted.pixel.candidateHits, learned.candidateHits);
        Lane const replaced = Narrow(far & doubted.replaced & Replaced);
        stretch.flags[x] = static_cast<std::uint8_t>(stretch.flags[x] | replaced);
    }
}

QEL_MOTION_INLINE std::uint8_t AnyOf(Stretch const& stretch) {
    std::uint8_t any = 0;
    for (std::size_t x = 0; x < stretch.pixels; ++x) any = static_cast<std::uint8_t>(any | stretch.flags[x]);
    return any;
}

QEL_MOTION_INLINE std::size_t CountFar(Stretch const& stretch) {
    unsigned int count = 0;
    for (std::size_t x = 0; x < stretch.pixels; ++x) count += stretch.flags[x] & Far;
    return count;
}

QEL_MOTION_INLINE std::size_t ApplyLuma(std::uint8_t const* luma, Lane const* chromaDistance, ModelRow const& row,
                                        FrameRule const& frameRule, std::uint8_t* flags, std::size_t pixels) {
    FrameRule const rule = frameRule;  // a copy: no store can change it
    Lane distances[StretchPixels];
    std::size_t far = 0;
    for (std::size_t x = 0; x < pixels; x += StretchPixels) {
        Stretch const stretch{luma + x,
                              chromaDistance + x,
                              row.mean + x,
                              row.spread + x,
                              row.hits + x,
                              row.candidate + x,
                              row.candidateHits + x,
                              flags + x,
                              std::min(StretchPixels, pixels - x)};
        JudgeStretch(stretch, rule, distances);
        if ((AnyOf(stretch) & (Far | Young)) == 0) {
            LearnSettled(stretch, rule, distances);
        } else {
            LearnMixed(stretch, rule, distances);
            far += CountFar(stretch);
        }
    }
    return far;
}

QEL_MOTION_INLINE void LearnChroma(std::uint8_t const* __restrict chroma, Lane* __restrict mean,
                                   std::uint8_t const* __restrict upper, std::uint8_t const* __restrict lower,
                                   FrameRule const& frameRule, std::size_t pixels) {
    Pace const pace = frameRule.chroma;
    for (std::size_t x = 0; x < pixels; x += 2) {
        int const any = upper[x] | upper[x + 1] | lower[x] | lower[x + 1];
        int const far = (upper[x] & Far) + (upper[x + 1] & Far) + (lower[x] & Far) + (lower[x + 1] & Far);
        bool const learns = far < 2;
        bool const replaced = (any & Replaced) != 0;
        mean[x] = LearnedChroma(Level(chroma[x]), mean[x], learns, replaced, pace);
        mean[x + 1] = LearnedChroma(Level(chroma[x + 1]), mean[x + 1], learns, replaced, pace);
    }
}

/// The table of one instruction set: the attribute reaches the bodies because they are always inlined.
#define QEL_MOTION_ROWS(Set, Target)                                                                              \
    struct Set {                                                                                                  \
        Target static void MeasureChromaRow(std::uint8_t const* chroma, Lane const* mean, Lane* distance,         \
                                            std::size_t pixels) {                                                 \
            MeasureChroma(chroma, mean, distance, pixels);                                                        \
        }                                                                                                         \
        Target static std::size_t ApplyLumaRow(std::uint8_t const* luma, Lane const* chromaDistance,              \
                                               ModelRow const& row, FrameRule const& rule, std::uint8_t* flags,   \
                                               std::size_t pixels) {                                              \
            return ApplyLuma(luma, chromaDistance, row, rule, flags, pixels);                                     \
        }                                                                                                         \
        Target static void LearnChromaRow(std::uint8_t const* chroma, Lane* mean, std::uint8_t const* upper,      \
                                          std::uint8_t const* lower, FrameRule const& rule, std::size_t pixels) { \
            LearnChroma(chroma, mean, upper, lower, rule, pixels);                                                \
        }                                                                                                         \
        static constexpr PixelRows Rows{MeasureChromaRow, ApplyLumaRow, LearnChromaRow};                          \
    }

QEL_MOTION_ROWS(Baseline, );
#if defined(__x86_64__)
QEL_MOTION_ROWS(Avx2, __attribute__((target("avx2"))));
#endif

/// Bit 7 - i of the result is the lowest bit of byte i.
std::uint32_t PackEight(std::uint64_t bytes) {
    constexpr std::uint64_t FirstByteLow = 0x8040201008040201U, FirstByteHigh = 0x0102040810204080U;
    constexpr std::uint64_t Gather = std::endian::native == std::endian::little ? FirstByteLow : FirstByteHigh;
    return static_cast<std::uint32_t>(((bytes & 0x0101010101010101U) * Gather) >> 56);
}

}  // namespace

std::vector<PixelRows const*> RowsOfThisProcessor() {
    std::vector<PixelRows const*> sets = {&Baseline::Rows};
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) sets.push_back(&Avx2::Rows);
#endif
    return sets;
}

PixelRows const& WidestRows() {
    static PixelRows const& rows = *RowsOfThisProcessor().back();
    return rows;
}

void PackRow(std::uint8_t const* flags, PixelFlag flag, std::uint32_t* words, std::size_t pixels) {
    int const shift = std::countr_zero(static_cast<unsigned int>(flag));
    for (std::size_t x = 0; x < pixels; x += 32) {
        std::uint8_t tail[32] = {};
        std::size_t const left = pixels - x;
        std::uint8_t const* source = flags + x;
        if (left < 32) source = static_cast<std::uint8_t const*>(std::memcpy(tail, source, left));
        std::uint64_t eights[4];
        std::memcpy(eights, source, sizeof eights);
        words[x / 32] = 0;
        if ((eights[0] | eights[1] | eights[2] | eights[3]) == 0) continue;
        words[x / 32] = PackEight(eights[0] >> shift) << 24 | PackEight(eights[1] >> shift) << 16 |
                        PackEight(eights[2] >> shift) << 8 | PackEight(eights[3] >> shift);
    }
}

}  // namespace qel::motion
