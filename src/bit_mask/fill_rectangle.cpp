#include "qel/algorithm/bit_mask/fill_rectangle.hpp"

#include <cstddef>

#include "bit_mask/clip.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"

namespace qel::algorithm::bit_mask {

void FillRectangle(BitMask& mask, geometry::Rectangle<int> const& rect, unsigned int value) {
    if (mask.GetData().empty()) return;
    Interval const columns = Clip(rect.x0, rect.x1, mask.GetSize().width);
    Interval const rows = Clip(rect.y0, rect.y1, mask.GetSize().height);
    if (columns.begin == columns.end) return;
    for (int y = rows.begin; y < rows.end; ++y) {
        std::uint32_t* const row = mask.GetData().data() + static_cast<unsigned int>(y) * mask.GetStride();
        FillScanLine(row, static_cast<unsigned int>(columns.begin), static_cast<unsigned int>(columns.end) - 1U, value);
    }
}

}  // namespace qel::algorithm::bit_mask
