#include "motion.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>

#include "qel/hash/murmur_three_32.hpp"
#include "qel/media/colour_format.hpp"

namespace qel::motion {
namespace {

using algorithm::BitMask;
using algorithm::ConnectedComponents;
using media::ColourFormat;

/// The number of pixels of a box that are set in both masks. The box is inclusive, the masks are of one size.
std::size_t CountCommon(BitMask const& a, BitMask const& b, ConnectedComponents::Blob const& box) {
    std::size_t const first = box.minX / 32, last = box.maxX / 32;
    std::uint32_t const head = ~0U >> box.minX % 32, tail = ~0U << (31 - box.maxX % 32);
    std::size_t count = 0;
    for (std::size_t y = box.minY; y <= box.maxY; ++y) {
        std::size_t const row = y * a.GetStride();
        for (std::size_t i = first; i <= last; ++i) {
            std::uint32_t word = a.GetData()[row + i] & b.GetData()[row + i];
            if (i == first) word &= head;
            if (i == last) word &= tail;
            count += static_cast<std::size_t>(std::popcount(word));
        }
    }
    return count;
}

/// Puts the foreground into the result, beside what an earlier algorithm of the run found there.
void AddForeground(BitMask const& foreground, BitMask& all) {
    if (all.GetSize() == foreground.GetSize()) {
        all.Union(foreground);
    } else {
        all = foreground;
    }
}

}  // namespace

// Nv12 first: it is what decoders give, and nothing has to be converted.
Motion::Motion()
    : Algorithm(hash::MurmurThree32(TypeName), {ColourFormat::Nv12, ColourFormat::Grey8, ColourFormat::Yuv24,
                                                ColourFormat::Rgb24, ColourFormat::Bgr24}) {}

void Motion::Reset() { model_.Reset(); }

void Motion::Process(media::video::FrameBase<void const> const& frame, algorithm::video::Result& result) {
    Settings const settings = GetSettings();
    Picture const picture = reader_.Read(frame);
    foreground_.Resize(frame.GetSize());
    strong_.Resize(frame.GetSize());
    model_.Apply(picture, settings.model, foreground_.GetData().data(), strong_.GetData().data());
    cleaner_.Clean(foreground_, settings.opening, settings.closing);
    labeller_.Connect8Way(foreground_, settings.minimumArea, blobs_);
    for (ConnectedComponents::Blob const& blob : blobs_) {
        result.objects.push_back(
            {{blob.minX, blob.minY, blob.maxX + 1, blob.maxY + 1}, blob.area, Label, Confidence(blob), {}});
    }
    AddForeground(foreground_, result.foreground);
}

float Motion::Confidence(ConnectedComponents::Blob const& blob) const {
    // Counted over the box; a neighbour that reaches into it must not lift the share over one.
    auto const share = static_cast<float>(CountCommon(foreground_, strong_, blob)) / static_cast<float>(blob.area);
    return std::min(share, 1.0F);
}

}  // namespace qel::motion
