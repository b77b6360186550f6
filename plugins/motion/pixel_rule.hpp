#pragma once

// The rule of one pixel, branch-free on int16 lanes: loops over these functions become vector code. Masks are lanes of
// all ones or zero, because they vectorise where Booleans do not. Always inlined, so that each loop compiles them for
// its own instruction set.

#include <cstdint>

#include "frame_rule.hpp"

#define QEL_MOTION_INLINE __attribute__((always_inline)) inline

namespace qel::motion::pixel {

using Lane = std::int16_t;

QEL_MOTION_INLINE Lane Narrow(int value) { return static_cast<Lane>(value); }

QEL_MOTION_INLINE Lane Smaller(Lane a, Lane b) { return a < b ? a : b; }

QEL_MOTION_INLINE Lane Larger(Lane a, Lane b) { return a > b ? a : b; }

/// All ones where a < b, else zero: masks vectorise where branches and Booleans do not.
QEL_MOTION_INLINE Lane Less(Lane a, Lane b) { return a < b ? Lane{-1} : Lane{0}; }

QEL_MOTION_INLINE Lane Select(Lane mask, Lane yes, Lane no) { return Narrow((mask & yes) | (~mask & no)); }

QEL_MOTION_INLINE Lane Distance(Lane a, Lane b) {
    Lane const difference = Narrow(a - b);
    return difference < 0 ? Narrow(-difference) : difference;
}

QEL_MOTION_INLINE Lane Level(std::uint8_t value) { return Narrow(value << FrameRule::LevelBits); }

/// The upper half of a product whose factors are not negative.
QEL_MOTION_INLINE Lane Scale(Lane value, std::uint16_t factor) {
    return static_cast<Lane>((static_cast<std::uint32_t>(static_cast<std::uint16_t>(value)) * factor) >> 16);
}

QEL_MOTION_INLINE Lane Step(Lane difference, Lane rate, Lane dither) {
    Lane const dithered = Narrow(Smaller(difference, FrameRule::LargestStep) + dither);
    return Narrow((dithered * rate) >> 16);
}

/// The background and the candidate of one pixel.
struct Pixel {
    Lane mean, spread, hits, candidate, candidateHits;
};

/// How far a pixel is from its background.
struct Verdict {
    Lane distance, limit, far, foreground;
};

QEL_MOTION_INLINE Verdict Judge(Lane mean, Lane spread, Lane level, Lane chroma, FrameRule const& rule) {
    Lane const brightness = Smaller(Distance(level, mean), FrameRule::LargestLuma);
    Lane const colour = Smaller(Scale(Narrow(chroma << 2), rule.colourWeight), FrameRule::LargestLuma);
    Lane const distance = Narrow(brightness + colour);
    Lane const limit = Scale(spread, rule.threshold);
    Lane const shadow =
        Narrow(Less(level, mean) & Less(Scale(mean, rule.shadowDepth), level) & Less(chroma, rule.shadowColour));
    Lane const far = Less(limit, distance);
    return {distance, limit, far, Narrow(far & ~shadow)};
}

QEL_MOTION_INLINE Lane LearnedMean(Lane mean, Lane level, Pace const& pace) {
    return Narrow(mean + Step(Narrow(level - mean), pace.rate, pace.dither));
}

QEL_MOTION_INLINE Lane LearnedSpread(Lane spread, Lane distance, Pace const& pace, FrameRule const& rule) {
    constexpr int Shift = FrameRule::SpreadBits - FrameRule::LevelBits;
    Lane const seen = Narrow(Smaller(distance, FrameRule::LargestSpread >> Shift) << Shift);
    return Larger(Narrow(spread + Step(Narrow(seen - spread), pace.rate, pace.dither)), rule.smallestSpread);
}

QEL_MOTION_INLINE Lane AgedHits(Lane hits, FrameRule const& rule) {
    return Larger(Narrow(hits - rule.candidateDecay), 0);
}

/// Means seen seldom move quickly.
QEL_MOTION_INLINE Pace PaceOf(Lane hits, FrameRule const& rule) {
    Lane const few = Less(hits, FrameRule::FewHits);
    Lane const some = Less(hits, FrameRule::SomeHits);
    Lane const many = Less(hits, FrameRule::ManyHits);
    return {Select(few, rule.few.rate, Select(some, rule.some.rate, Select(many, rule.many.rate, rule.settled.rate))),
            Select(few, rule.few.dither,
                   Select(some, rule.some.dither, Select(many, rule.many.dither, rule.settled.dither)))};
}

/// The pixel after a frame in which its background was seen.
QEL_MOTION_INLINE Pixel Learn(Pixel const& pixel, Lane level, Lane distance, FrameRule const& rule) {
    Pace const pace = PaceOf(pixel.hits, rule);
    return {LearnedMean(pixel.mean, level, pace), LearnedSpread(pixel.spread, distance, pace, rule),
            Smaller(Narrow(pixel.hits + 1), rule.mostHits), pixel.candidate, AgedHits(pixel.candidateHits, rule)};
}

/// The pixel after a frame in which its background was not seen, and whether its candidate, seen now, has been seen
/// for longer. Frames for and against the candidate are counted; one that has lost all its hits makes room.
struct Doubted {
    Pixel pixel;
    Lane replaced;
};

QEL_MOTION_INLINE Doubted Doubt(Pixel const& pixel, Lane level, Lane limit, FrameRule const& rule) {
    Lane const differs = Less(limit, Distance(level, pixel.candidate));
    Lane const forgotten = Narrow(differs & Less(pixel.candidateHits, 2));
    Lane const followed = Narrow(pixel.candidate + (Narrow(level - pixel.candidate) >> 3));
    Lane const candidate = Select(forgotten, level, Select(differs, pixel.candidate, followed));
    Lane const counted = Select(forgotten, 1, Narrow(pixel.candidateHits + Select(differs, -1, 1)));
    Lane const candidateHits = Smaller(counted, rule.mostHits);
    Lane const hits = Smaller(pixel.hits, rule.mostHits);
    Lane const behind = Less(candidateHits, Larger(hits, FrameRule::TrustedHits));
    Lane const replaced = Narrow(~differs & ~behind);
    return {{Select(replaced, candidate, pixel.mean), Select(replaced, rule.firstSpread, pixel.spread),
             Select(replaced, candidateHits, hits), Select(replaced, pixel.mean, candidate),
             Select(replaced, hits, candidateHits)},
            replaced};
}

/// A chroma mean after a frame: it follows its background, and takes the level of now where that was replaced.
QEL_MOTION_INLINE Lane LearnedChroma(Lane level, Lane mean, bool learns, bool replaced, Pace const& pace) {
    Lane const learned = Narrow(mean + Step(Narrow(level - mean), pace.rate, pace.dither));
    Lane const kept = learns ? learned : mean;
    return replaced ? level : kept;
}

}  // namespace qel::motion::pixel
