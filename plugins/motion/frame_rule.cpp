#include "frame_rule.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace qel::motion {
namespace {

constexpr std::uint32_t CandidateDecayFrames = 4;

/// value (clamped to its range, a not-a-number to the smallest) times scale, rounded.
template <typename Integer>
Integer Fixed(double value, double smallest, double largest, double scale) {
    double const clamped = value > smallest ? std::min(value, largest) : smallest;
    return static_cast<Integer>(std::lround(clamped * scale));
}

/// 0 to 255 in an order in which every stretch of frames is spread evenly: the byte's bits reversed.
std::uint32_t EvenOrder(std::uint32_t frame) {
    std::uint32_t reversed = 0;
    for (unsigned int bit = 0; bit < 8; ++bit) reversed |= ((frame >> bit) & 1U) << (7U - bit);
    return reversed;
}

/// A mean with this time constant in frames. The dither runs through the whole rounding step, so that differences
/// too small to move the mean in one frame still do so in the long run.
Pace MakePace(std::uint32_t frames, std::uint32_t frame) {
    return {static_cast<std::int16_t>(std::min<std::uint32_t>(65536U / frames, 32767U)),
            static_cast<std::int16_t>((EvenOrder(frame) * frames) >> 8)};
}

/// The settled time constant: shorter the further the light has drifted away, so that the means catch up in time.
std::uint32_t FramesToFollow(std::uint32_t frames, int drift) {
    int const levels = std::abs(drift) >> FrameRule::LevelBits;
    std::uint32_t const most = levels >= 4   ? FrameRule::FewHits
                               : levels >= 2 ? FrameRule::SomeHits
                               : levels >= 1 ? FrameRule::ManyHits
                                             : frames;
    return std::min(frames, most);
}

}  // namespace

FrameRule MakeFrameRule(Parameters const& parameters, FrameClock const& clock) {
    auto const frames = static_cast<std::uint32_t>(std::clamp(parameters.learningFrames, 1, 8192));
    FrameRule rule;
    rule.threshold = Fixed<std::uint16_t>(parameters.threshold, 2.0, 15.0, 4096.0);
    rule.smallestSpread = Fixed<std::int16_t>(parameters.noise, 0.5, 8.0, 2047.0);
    rule.firstSpread = static_cast<std::int16_t>(std::min(2 * rule.smallestSpread, int{FrameRule::LargestSpread}));
    rule.colourWeight = Fixed<std::uint16_t>(parameters.colourWeight, 0.0, 3.9, 16384.0);
    double const depth = clock.coloured ? parameters.shadowDepth : (1.0 + parameters.shadowDepth) / 2.0;
    rule.shadowDepth = Fixed<std::uint16_t>(depth, 0.0, 1.0, 65535.0);
    rule.shadowColour = Fixed<std::int16_t>(parameters.shadowColour, 0.0, 31.0, 128.0);
    int const absorbFrames = std::clamp(parameters.absorbFrames, int{FrameRule::ManyHits}, 32000);
    rule.mostHits = clock.globalChange ? FrameRule::TrustedHits : static_cast<std::int16_t>(absorbFrames);
    rule.candidateDecay = clock.frame % CandidateDecayFrames == 0 ? 1 : 0;
    rule.few = MakePace(std::min<std::uint32_t>(FrameRule::FewHits, frames), clock.frame);
    rule.some = MakePace(std::min<std::uint32_t>(FrameRule::SomeHits, frames), clock.frame);
    rule.many = MakePace(std::min<std::uint32_t>(FrameRule::ManyHits, frames), clock.frame);
    rule.settled = MakePace(FramesToFollow(frames, clock.drift), clock.frame);
    rule.chroma = clock.frame < FrameRule::SomeHits   ? rule.few
                  : clock.frame < FrameRule::ManyHits ? rule.some
                                                      : rule.settled;
    return rule;
}

}  // namespace qel::motion
