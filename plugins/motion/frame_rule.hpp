#pragma once

#include <cstddef>
#include <cstdint>

namespace qel::motion {

/// What a user may tune; takes effect on the next frame. Values outside their range are clamped; levels are those of
/// an 8-bit picture.
struct Parameters {
    /// How many spreads off its background a pixel may be; further off is foreground. 2 to 15.
    double threshold = 6.0;
    /// Smallest spread that is believed, in grey levels: raise it for a noisy or badly compressed picture. 0.5 to 8.
    double noise = 3.0;
    /// What a level of colour difference counts in levels of brightness difference; 0 ignores colour. 0 to 3.9.
    double colourWeight = 2.0;
    /// The darkest shadow: brightness over that of the background. Darker is foreground; 1 turns shadows off. 0 to 1.
    /// Without colour, which tells shadows from dark things, only half as deep a shadow is believed.
    double shadowDepth = 0.6;
    /// How much a shadow may change the colour, in levels (U and V together). 0 to 31.
    double shadowColour = 10.0;
    /// Frames in which the background follows slow change (time constant). 1 to 8192.
    int learningFrames = 300;
    /// Frames after which what has stopped becomes background. 64 to 32000.
    int absorbFrames = 250;
    /// Share of foreground pixels above which the whole picture is learned anew in a few frames; 1 never. 0.1 to 1.
    double globalChange = 0.6;
};

/// Where the model stands in time.
struct FrameClock {
    std::uint32_t frame = 0;    ///< frames since the start
    bool globalChange = false;  ///< the last frame was mostly unlike the background
    int drift = 0;              ///< how far the whole picture is off its background, in 1/128 levels
    bool coloured = false;
};

/// How quickly a running mean moves: a step is ((difference + dither) * rate) >> 16, all in int16.
struct Pace {
    std::int16_t rate = 0;
    std::int16_t dither = 0;
};

/// A frame's rule as the integers of the pixel loop. Distances and means have 7 fraction bits, spreads 11.
struct FrameRule {
    static constexpr int LevelBits = 7;
    static constexpr int SpreadBits = 11;
    static constexpr std::int16_t LargestLuma = 16383;    // a luma distance saturates here: about 128 levels
    static constexpr std::int16_t LargestChroma = 4095;   // one chroma byte's distance: about 32 levels
    static constexpr std::int16_t LargestSpread = 32736;  // about 16 levels
    static constexpr std::int16_t LargestStep = 16383;    // difference plus dither stays within int16
    static constexpr int LargestDrift = 2048;             // pixels further off (16 levels) say nothing about the light
    static constexpr std::int16_t TrustedHits = 8;        // a candidate seen less often never takes over
    static constexpr std::int16_t FewHits = 4, SomeHits = 16, ManyHits = 64;

    std::uint16_t threshold = 0;  // (spread * threshold) >> 16 is the smallest foreground distance less one
    std::int16_t smallestSpread = 0;
    std::int16_t firstSpread = 0;
    std::uint16_t colourWeight = 0;  // (4 * chroma distance * weight) >> 16
    std::uint16_t shadowDepth = 0;   // (mean * depth) >> 16 is the darkest shadow
    std::int16_t shadowColour = 0;
    std::int16_t mostHits = 0;
    std::int16_t candidateDecay = 0;  // 1 in the frames in which unseen candidates age
    Pace few, some, many, settled;    // paces of a mean that has been seen fewer than FewHits times, and so on
    Pace chroma;
};

/// The rule of the frame at the clock's time.
FrameRule MakeFrameRule(Parameters const& parameters, FrameClock const& clock);

}  // namespace qel::motion
