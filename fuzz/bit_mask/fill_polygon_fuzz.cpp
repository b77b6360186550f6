// The polygon-set fill against each row of each trapezoid worked out for itself.
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/bit_mask/fill_polygon.hpp"
#include "reference/fill_polygon.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel;
    fuzz::Input input(data, size);
    algorithm::BitMask mask({input.Number(1, 120), input.Number(1, 90)});
    unsigned int const value = input.Byte() % 4 != 0 ? 1 : 0;
    if (value == 0) mask.Fill(1);
    std::vector<geometry::Polygon<int>> polygons(input.Byte() % 5);
    int const grid = input.Byte() % 2 == 0 ? 1 : 16;
    for (auto& polygon : polygons) {
        for (unsigned int count = input.Byte() % 9; count > 0; --count) {
            int const x = static_cast<int>(input.Number(0, 3000)) - 600;
            polygon.push_back({x / grid * grid, (static_cast<int>(input.Number(0, 2400)) - 600) / grid * grid});
        }
    }
    algorithm::BitMask const expected = reference::FillPolygonSet(mask, polygons, value);
    algorithm::bit_mask::detail::FillPolygonSet(mask, polygons, value);
    fuzz::Check(mask == expected, "FillPolygonSet");
    return 0;
}
