#include "privacy_mask.hpp"

#include "picture.hpp"
#include "qel/hash/murmur_three_32.hpp"
#include "qel/media/colour_format.hpp"

namespace qel::privacy_mask {

using algorithm::BitMask;
using media::ColourFormat;

// Nv12 first: it is what decoders give, and half the bytes of the others.
PrivacyMask::PrivacyMask()
    : Algorithm(hash::MurmurThree32(TypeName), {ColourFormat::Nv12, ColourFormat::Grey8, ColourFormat::Yuv24,
                                                ColourFormat::Rgb24, ColourFormat::Bgr24}) {}

void PrivacyMask::Process(media::video::FrameBase<void>& frame, algorithm::video::Result& result) {
    Settings const settings = GetSettings();
    Picture const picture = ViewOf(frame);
    Hidden const& hidden = FindHidden(settings, frame.GetSize(), result);
    unsigned int const half = (settings.blockSize + 1) / 2;
    // Of a frame smaller than a block the mean could tell too much: a block of one pixel is that pixel.
    bool const fits = frame.GetWidth() >= 2 * half && frame.GetHeight() >= 2 * half;
    if (settings.mode == Mode::Blank || !fits) {
        painter_.Blank(picture.pixels, hidden.pixels);
        if (picture.hasChroma) painter_.Blank(picture.chroma, hidden.chroma);
    } else {
        painter_.Pixelate(picture.pixels, hidden.pixels, 2 * half);
        if (picture.hasChroma) painter_.Pixelate(picture.chroma, hidden.chroma, half);
    }
}

PrivacyMask::Hidden const& PrivacyMask::FindHidden(Settings const& settings, BitMask::Size size,
                                                   algorithm::video::Result const& result) {
    if (zoneMask_.Update(settings.zones, size)) FindRunsOf(zoneMask_.Get(), hiddenByZones_);
    if (settings.movingPart == MovingPart::None) return hiddenByZones_;
    mask_ = zoneMask_.Get();
    movingMask_.AddTo(mask_, result, settings.movingPart, settings.movingMargin);
    FindRunsOf(mask_, hidden_);
    return hidden_;
}

void PrivacyMask::FindRunsOf(BitMask const& mask, Hidden& hidden) {
    FindRuns(mask, hidden.pixels);
    Halve(mask, half_);
    FindRuns(half_, hidden.chroma);
}

}  // namespace qel::privacy_mask
