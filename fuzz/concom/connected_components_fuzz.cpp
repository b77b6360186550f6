// Labelling by runs against labelling pixel by pixel; the labeller is kept from input to input.
#include <cstdint>
#include <vector>

#include "input.hpp"
#include "qel/algorithm/connected_components.hpp"
#include "reference/connected_components.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace qel;
    static algorithm::ConnectedComponents labeller;
    static std::vector<algorithm::ConnectedComponents::Blob> blobs;
    fuzz::Input input(data, size);
    unsigned int const min_area = input.Byte() % 32;
    algorithm::BitMask const mask = input.Mask(input.Size(260, 48));
    std::size_t count = labeller.Connect8Way(mask, min_area, blobs);
    fuzz::Check(count == blobs.size(), "number of blobs, 8-way");
    fuzz::Check(blobs == reference::PixelLabeller().Connect8Way(mask, min_area), "Connect8Way");
    count = labeller.Connect4Way(mask, min_area, blobs);
    fuzz::Check(count == blobs.size(), "number of blobs, 4-way");
    fuzz::Check(blobs == reference::PixelLabeller().Connect4Way(mask, min_area), "Connect4Way");
    return 0;
}
