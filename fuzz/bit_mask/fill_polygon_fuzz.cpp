// The polygon-set fill against each row of each trapezoid worked out for itself.
#include <cmath>
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/bit_mask/fill_polygon.hpp"
#include "reference/fill_polygon.hpp"

namespace {

using namespace qel;
using Polygon = geometry::Polygon<int>;

/// A few points anywhere.
Polygon Any(fuzz::Input& input, int grid) {
    Polygon polygon;
    for (unsigned int count = input.Byte() % 9; count > 0; --count) {
        int const x = static_cast<int>(input.Number(0, 3000)) - 600;
        polygon.push_back({x / grid * grid, (static_cast<int>(input.Number(0, 2400)) - 600) / grid * grid});
    }
    return polygon;
}

/// Points so close that many sides pass next to them.
Polygon Thicket(fuzz::Input& input) {
    Polygon polygon;
    unsigned int const width = input.Byte() % 16 + 2U;
    for (unsigned int count = input.Byte() % 15; count > 0; --count) {
        int const x = static_cast<int>(input.Byte() % width) - 8;
        polygon.push_back({x, static_cast<int>(input.Byte()) - 64});
    }
    return polygon;
}

/// Points round a middle, in order: most of these cross themselves nowhere.
Polygon Star(fuzz::Input& input, int grid) {
    Polygon polygon;
    unsigned int const count = input.Byte() % 30 + 3U;
    int const x = static_cast<int>(input.Number(0, 1900)), y = static_cast<int>(input.Number(0, 1400));
    for (unsigned int i = 0; i < count; ++i) {
        double const angle = 6.2831853 * i / count, reach = input.Number(0, 900);
        polygon.push_back({(x + static_cast<int>(reach * std::cos(angle))) / grid * grid,
                           (y + static_cast<int>(reach * std::sin(angle))) / grid * grid});
    }
    return polygon;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzz::Input input(data, size);
    algorithm::BitMask mask({input.Number(1, 120), input.Number(1, 90)});
    unsigned int const value = input.Byte() % 4 != 0 ? 1 : 0;
    if (value == 0) mask.Fill(1);
    unsigned int const shapes = input.Byte();
    std::vector<Polygon> polygons(shapes % 5);
    int const grid = input.Byte() % 2 == 0 ? 1 : 16;
    for (auto& polygon : polygons) {
        polygon = shapes < 100 ? Any(input, grid) : shapes < 180 ? Star(input, grid) : Thicket(input);
    }
    algorithm::BitMask const expected = reference::FillPolygonSet(mask, polygons, value);
    algorithm::bit_mask::detail::FillPolygonSet(mask, polygons, value);
    fuzz::Check(mask == expected, "FillPolygonSet");
    return 0;
}
