#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame_rule.hpp"
#include "pixel_rows.hpp"

namespace qel::motion {

/// One frame's picture: full luma, and optionally interleaved chroma (U V U V ...) at half size in both directions,
/// (width + 1) / 2 pairs a row and (height + 1) / 2 rows. A null chroma pointer means grey.
/// Strides are in bytes; padded and negative ones are fine.
struct Picture {
    std::uint8_t const* luma = nullptr;
    std::ptrdiff_t lumaStride = 0;
    std::uint8_t const* chroma = nullptr;
    std::ptrdiff_t chromaStride = 0;
    unsigned int width = 0;
    unsigned int height = 0;
};

/// Tells moving things from the background, pixel by pixel, in fixed point.
///
/// Every pixel keeps the background it believes in (a mean and a spread) and one candidate that may replace it; the
/// one seen for longer wins. So nothing is trained beforehand, what stood in the first frame leaves no lasting ghost,
/// and what stops is absorbed. The same frames give the same masks on every machine.
/// Allocates on the first frame and when the picture's size or kind changes, which also starts the model afresh.
/// Movable, copyable; one thread at a time.
class BackgroundModel {
public:
    /// rows: the loops to use; they must outlive the model.
    explicit BackgroundModel(PixelRows const& rows = WidestRows()) : rows_(&rows) {}

    /// Learns from a picture and writes its foreground as a one-bit mask: 32 pixels a word, the first pixel in the
    /// most significant bit, (width + 31) / 32 words a row, unused bits clear. strong, if not null, gets a second
    /// mask of the same shape: the foreground pixels at least twice as far from the background as they had to be.
    /// While most of the picture changes at once (see Parameters::globalChange) both masks are clear.
    void Apply(Picture const& picture, Parameters const& parameters, std::uint32_t* mask,
               std::uint32_t* strong = nullptr);

    /// Forgets everything: the next picture is taken for background.
    void Reset();

private:
    int MeasureDrift(Picture const& picture) const;
    void Start(Picture const& picture, FrameRule const& rule);
    std::size_t ApplyRowPair(Picture const& picture, unsigned int y, FrameRule const& rule, std::uint32_t* mask,
                             std::uint32_t* strong);

    PixelRows const* rows_;
    unsigned int width_ = 0;
    unsigned int height_ = 0;
    bool coloured_ = false;
    FrameClock clock_;
    std::vector<std::int16_t> mean_, spread_, hits_;       // a pixel
    std::vector<std::int16_t> candidate_, candidateHits_;  // a pixel
    std::vector<std::int16_t> chromaMean_;                 // a chroma byte, rows of an even width
    std::vector<std::int16_t> chromaDistance_;             // one row of pixels
    std::vector<std::uint8_t> flags_;                      // two rows of pixels
};

}  // namespace qel::motion
