// Erasing, filling, checking and combining against their references.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/bit_mask/check_rectangle.hpp"
#include "qel/algorithm/bit_mask/fill_rectangle.hpp"
#include "qel/algorithm/bit_mask/fill_scan_line.hpp"
#include "reference/erase_rect.hpp"
#include "reference/fills.hpp"

namespace {

using qel::algorithm::BitMask;
using qel::fuzz::Check;
using qel::fuzz::Input;
namespace bit_mask = qel::algorithm::bit_mask;
namespace geometry = qel::geometry;
namespace reference = qel::reference;

geometry::Rectangle<int> Rectangle(Input& input, BitMask::Size size) {
    geometry::Rectangle<int> rect{};
    rect.x0 = input.Corner(size.width);
    rect.y0 = input.Corner(size.height);
    rect.x1 = input.Corner(size.width);
    rect.y1 = input.Corner(size.height);
    return rect;
}

void Erase(Input& input, BitMask mask) {
    geometry::Rectangle<int> const rect = Rectangle(input, mask.GetSize());
    unsigned int const value = input.Byte() % 2;
    std::vector<std::uint32_t> const expected = reference::EraseRect(mask, rect, value);
    mask.EraseRect(rect, value);
    Check(mask.GetData() == expected, "EraseRect");
}

void FillRectangle(Input& input, BitMask mask) {
    geometry::Rectangle<int> const rect = Rectangle(input, mask.GetSize());
    unsigned int const value = input.Byte() % 2;
    BitMask const expected = reference::FillRectangle(mask, rect, value);
    bit_mask::FillRectangle(mask, rect, value);
    Check(mask == expected, "FillRectangle");
}

void FillScanLine(Input& input, BitMask mask) {
    if (mask.GetData().empty()) return;
    unsigned int const columns = static_cast<unsigned int>(32 * mask.GetStride());
    unsigned int const y = input.Number(0, mask.GetSize().height - 1);
    unsigned int const first = input.Number(0, columns - 1), last = input.Number(first, columns - 1);
    unsigned int const value = input.Byte() % 2;
    BitMask const expected = reference::FillScanLine(mask, y, first, last, value);
    bit_mask::FillScanLine(mask.GetData().data() + y * mask.GetStride(), first, last, value);
    Check(mask == expected, "FillScanLine");
}

void CheckRectangle(Input& input, BitMask const& mask) {
    if (mask.GetData().empty()) return;
    BitMask::Size const size = mask.GetSize();
    geometry::Rectangle<unsigned int> rect{};
    rect.x0 = input.Number(0, size.width - 1);
    rect.x1 = input.Number(rect.x0 + 1, size.width);
    rect.y0 = input.Number(0, size.height);
    rect.y1 = input.Number(0, size.height);
    Check(bit_mask::CheckRectangle(mask.GetData().data(), size, rect) == reference::CheckRectangle(mask, rect),
          "CheckRectangle");
}

void Combine(Input& input, BitMask const& mask) {
    if (mask.GetData().empty()) return;
    BitMask const other = input.Mask(mask.GetSize());
    BitMask both(mask), rest(mask), common(mask);
    both.Union(other);
    rest.Difference(other);
    common.Intersection(other);
    for (std::size_t i = 0; i < mask.GetData().size(); ++i) {
        std::uint32_t const a = mask.GetData()[i], b = other.GetData()[i];
        Check(both.GetData()[i] == (a | b), "Union");
        Check(rest.GetData()[i] == (a & ~b), "Difference");
        Check(common.GetData()[i] == (a & b), "Intersection");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input input(data, size);
    std::uint8_t const operation = input.Byte() % 5;
    BitMask const mask = input.Mask(input.Size(300, 12));
    switch (operation) {
        case 0:
            Erase(input, mask);
            break;
        case 1:
            FillRectangle(input, mask);
            break;
        case 2:
            FillScanLine(input, mask);
            break;
        case 3:
            CheckRectangle(input, mask);
            break;
        default:
            Combine(input, mask);
            break;
    }
    return 0;
}
