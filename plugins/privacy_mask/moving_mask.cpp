#include "moving_mask.hpp"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <stdexcept>

#include "common/clear_padding.hpp"
#include "qel/algorithm/bit_mask/dilate.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

namespace qel::privacy_mask {
namespace {

using algorithm::BitMask;
using Box = geometry::Rectangle<unsigned int>;

void AddBox(BitMask& mask, Box const& box, std::uint32_t margin) {
    auto const [width, height] = mask.GetSize();
    if (box.x0 >= box.x1 || box.y0 >= box.y1) return;
    std::uint64_t const right = std::uint64_t{box.x1} + margin, bottom = std::uint64_t{box.y1} + margin;
    unsigned int const x0 = box.x0 - std::min(box.x0, margin), y0 = box.y0 - std::min(box.y0, margin);
    auto const x1 = static_cast<unsigned int>(std::min<std::uint64_t>(right, width));
    auto const y1 = static_cast<unsigned int>(std::min<std::uint64_t>(bottom, height));
    if (x0 >= x1) return;
    for (unsigned int y = y0; y < y1; ++y) {
        algorithm::bit_mask::FillScanLine(mask.GetData().data() + y * mask.GetStride(), x0, x1 - 1, 1);
    }
}

}  // namespace

void MovingMask::AddTo(BitMask& mask, algorithm::video::Result const& result, MovingPart part, std::uint32_t margin) {
    if (part == MovingPart::Shapes) AddShapes(mask, result.foreground, margin);
    if (part != MovingPart::Boxes) return;
    for (algorithm::video::Object const& object : result.objects) AddBox(mask, object.box, margin);
}

void MovingMask::AddShapes(BitMask& mask, BitMask const& foreground, std::uint32_t margin) {
    if (foreground.GetSize() != mask.GetSize()) {
        std::ostringstream text;
        text << "Cannot mask what moves: nothing before the mask found out which pixels do (foreground "
             << foreground.GetSize() << ", frame " << mask.GetSize()
             << "); run an algorithm such as motion before it, or set mask_motion to boxes or off";
        throw std::invalid_argument(text.str());
    }
    auto const& words = foreground.GetData();
    auto const isSet = [](std::uint32_t word) { return word != 0; };
    auto const firstWord = std::find_if(words.begin(), words.end(), isSet);
    if (firstWord == words.end()) return;
    auto const lastWord = std::find_if(words.rbegin(), words.rend(), isSet);
    grown_ = foreground;
    plugin::ClearPadding(grown_);
    scratch_.Resize(mask.GetSize());
    // Only the rows that can be reached.
    std::size_t const stride = mask.GetStride();
    std::size_t const first = static_cast<std::size_t>(firstWord - words.begin()) / stride;
    std::size_t const last = static_cast<std::size_t>(words.rend() - lastWord - 1) / stride;
    std::size_t const from = first - std::min<std::size_t>(first, margin);
    std::size_t const rows = std::min<std::size_t>(last + margin + 1, mask.GetSize().height) - from;
    // What spreads into the padding comes back no further than it would have got inside.
    for (std::uint32_t i = 0; i < margin; ++i) {
        algorithm::bit_mask::Dilate8Way(grown_.GetData().data() + from * stride,
                                        scratch_.GetData().data() + from * stride, rows, stride);
        grown_.GetData().swap(scratch_.GetData());
    }
    plugin::ClearPadding(grown_);
    mask.Union(grown_);
}

}  // namespace qel::privacy_mask
